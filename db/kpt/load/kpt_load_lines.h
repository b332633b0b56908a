// The debug lines and internal errors that a load issues while it builds a
// database. A source that does not know yet whether its file is well-formed
// keeps them. Of a file that is refused, no line about its content may be
// issued.
//
// Ownership: owns the lines that it keeps. Equal lines in a row are kept as one,
// so a file with many faults takes little memory.
#ifndef KPT_LOAD_LINES_H
#define KPT_LOAD_LINES_H

#include <cstddef>
#include <vector>

#include "db/kpt/kpt_types.h"

class KPT_LOAD_LINES {
 public:
  enum LINE : int {
    LOAD_STARTS,
    SET_IS_LOADED,    // with the ticks that this took
    MAPS_ARE_LOADED,  // with the ticks that this took
    LOAD_ENDS,
    UNEXPECTED_CHILD,  // an internal error
    NO_VALUES,
    OUTSIDE_REFERENCE_TABLE,
    OUTSIDE_TRANSFORMED_TABLE
  };

  /// `kept`: keeps every line until `release`. Otherwise a line is issued at once.
  explicit KPT_LOAD_LINES(bool kept) : m_kept(kept) {}

  void add(LINE line, int ticks = 0);
  /// Issues the lines that were kept, in their order.
  void release();

 private:
  struct RUN {
    LINE line;
    int ticks;
    std::size_t count;
  };
  void issue(LINE line, int ticks) const;

  bool m_kept;
  KPT_STRING m_start_time;
  std::vector<RUN, MEM_STL_ALLOCATOR<RUN>> m_runs;
};

#endif
