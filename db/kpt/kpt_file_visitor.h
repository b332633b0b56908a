// Sees the elements of a database file while a load reads them, with the lines
// on which they stand: for programs that tell what is written in a file, also
// where the database no longer shows it. Clients derive from it.
//
// Ownership: the caller's, for the length of the load. What it is handed is good
// during the call only.
#ifndef KPT_FILE_VISITOR_H
#define KPT_FILE_VISITOR_H

#include <cstddef>
#include <string_view>

#include "db/kpt/kpt_element_attributes.h"
#include "kpt_export.h"

/// Starts and ends pair, also in files that a load refuses; in one that is not
/// well-formed the visitor sees what stands before the error. Comments and
/// instructions are left out. Lines count from 1 and are those on which a tag
/// ends. A visitor throws nothing.
class KPT_EXPORT KPT_FILE_VISITOR {
 public:
  virtual ~KPT_FILE_VISITOR() = default;
  virtual void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) = 0;
  virtual void end(std::size_t line) = 0;
  /// A piece of the text of the element that started last and has not ended,
  /// with references replaced.
  virtual void text(std::string_view piece) = 0;
  /// Around what an entity of the file stands for. A load takes texts and the
  /// values of tables from there, and no registers or maps.
  virtual void start_reference() {}
  virtual void end_reference() {}
};

#endif
