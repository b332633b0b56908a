#include "words.h"

namespace kptdb {

REGISTER_FATE fate_of(const STAGE_MAP& map, const STAGE_PAIR& pair, bool is_inverse) {
  switch (pair.fate) {
    case KPT_FATE_CONSTANT: {
      const bool is_turned = is_inverse && !pair.same.empty();
      return {WORD_CONSTANT, (map.reason == REASON_ONE) != is_turned ? 1U : 0U};
    }
    case KPT_FATE_MACHINE:
      return {WORD_MACHINE};
    case KPT_FATE_MAPPED:
      return {WORD_MAPPED};
    case KPT_FATE_WITHOUT_FANOUT:
      return {WORD_NO_FANOUT};
    case KPT_FATE_UNKNOWN:
      break;
  }
  return {WORD_UNKNOWN};
}

}  // namespace kptdb
