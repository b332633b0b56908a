// What loading tells the host while it builds a database: debug lines and
// internal errors. A source that does not know yet whether its file is
// well-formed keeps them until it does: of a file that is refused, nobody may
// hear what was in it.
//
// Ownership: owns what it keeps. Lines of one kind in a row are kept as one, so
// a file of many faults costs little.
#ifndef KPT_LOAD_LINES_H
#define KPT_LOAD_LINES_H

#include <cstddef>
#include <vector>

#include "db/kpt/kpt_types.h"

class KPT_LOAD_LINES {
 public:
  enum LINE : int {
    LOAD_STARTS,
    SET_IS_LOADED,    // with the ticks that it took
    MAPS_ARE_LOADED,  // likewise
    LOAD_ENDS,
    UNEXPECTED_CHILD,  // an internal error
    NO_VALUES,
    OUTSIDE_REFERENCE_TABLE,
    OUTSIDE_TRANSFORMED_TABLE
  };

  /// `kept`: until `release`; else every line is issued as it comes.
  explicit KPT_LOAD_LINES(bool kept) : m_kept(kept) {}

  void add(LINE line, int ticks = 0);
  /// Issues what is kept, in its order.
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
