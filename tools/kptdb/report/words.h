// One of five words for what became of a register of the source.
//
// Ownership: values only.
#ifndef KPTDB_REPORT_WORDS_H
#define KPTDB_REPORT_WORDS_H

#include <array>
#include <string_view>

#include "stage.h"

namespace kptdb {

/// In the order of the page's numbers and display.
enum REGISTER_WORD : unsigned { WORD_MAPPED, WORD_CONSTANT, WORD_NO_FANOUT, WORD_MACHINE, WORD_UNKNOWN };
inline constexpr std::array<std::string_view, 5> REGISTER_WORDS{"mapped", "constant", "without fanout", "machine",
                                                                "unknown"};

struct REGISTER_FATE {
  REGISTER_WORD word = WORD_UNKNOWN;
  unsigned value = 2;  // of a constant: 0 or 1
};

/// What a map says of the reference registers of one group of an index. A status
/// is the value of the index's representative, which is in the `same` group
/// unless that is empty. The other group is its inverse.
REGISTER_FATE fate_of(const STAGE_MAP& map, const STAGE_PAIR& pair, bool is_inverse);

}  // namespace kptdb

#endif
