// The values of one side of one state of a state table, as a file lists them.
//
// Ownership: owns the values that it collects. One object is used for all states, one after the other.
//
// A value is a column and a text, whose number says whether the entry is true.
// Values may be nested; the text of the inner one is then also text of the outer
// one. The numbers of nested values are read in one walk over the text, so the
// cost is linear in the text.
#ifndef KPT_STATE_VALUES_H
#define KPT_STATE_VALUES_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "db/kpt/kpt_types.h"

class KPT_STATE_VALUES {
 public:
  struct VALUE {
    unsigned short column;  // from 1
    bool entry;
  };
  using VALUES = std::vector<VALUE, MEM_STL_ALLOCATOR<VALUE>>;

  /// A value begins inside the values that have not ended.
  void start(unsigned short column);
  /// Text of every value that has not ended.
  void text(std::string_view piece);
  /// The value that began last ends.
  void end();

  /// All values, in the order in which they began.
  const VALUES& values() const { return m_values; }
  void clear();

 private:
  struct NESTED {
    std::size_t value;
    std::size_t text;  // where its text begins
    std::size_t end;
  };
  void read_nest();

  VALUES m_values;
  std::vector<NESTED, MEM_STL_ALLOCATOR<NESTED>> m_nest;            // since the outermost value began
  std::vector<std::size_t, MEM_STL_ALLOCATOR<std::size_t>> m_open;  // of m_nest
  KPT_STRING m_text;                                                // of the outermost value
};

#endif
