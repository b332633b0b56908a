// Why a database file was not loaded.
//
// Ownership: owns its text.
#ifndef KPT_LOAD_PROBLEM_H
#define KPT_LOAD_PROBLEM_H

#include "db/kpt/kpt_types.h"

/// The first problem of a load, for the caller. The host gets its messages in
/// any case.
struct KPT_LOAD_PROBLEM {
  enum KIND : int {
    NONE,
    NOT_WELL_FORMED,  // the file cannot be opened, or is not XML: line and column say where
    NO_NAME,          // the root element gives the database no name
    NAME_IS_TAKEN,    // a database of that name is registered already
    NOT_COMPLETE,     // an element follows the transformations
    OUT_OF_MEMORY
  };

  KIND kind = NONE;
  /// One sentence in English, without the file's name; empty for NONE.
  KPT_STRING message;
  /// Counted from 1; 0 when the position is not known.
  long line = 0;
  long column = 0;

  bool is_none() const { return kind == NONE; }
  /// Becomes OUT_OF_MEMORY, whatever it was before. Allocates nothing.
  void note_end_of_memory() noexcept {
    kind = OUT_OF_MEMORY;
    message.assign("out of memory");  // short enough to need no allocation
    line = column = 0;
  }
  /// Becomes the other problem, unless there is one already.
  void note(const KPT_LOAD_PROBLEM& other) {
    if (is_none()) {
      *this = other;
    }
  }
};

#endif
