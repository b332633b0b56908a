// A map of registers over standard containers, written from the
// descriptions of the operations, without regard to speed. The library's
// map is compared with it. Lines that the library would issue are added to
// `lines`.
//
// Ownership: values. Registers are numbers, to which the caller gives a meaning.
#ifndef TESTS_SUPPORT_PLAIN_MAP_H
#define TESTS_SUPPORT_PLAIN_MAP_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "db/kpt/kpt_types.h"
#include "tests/support/plain_table.h"

namespace kpt_test::plain {

/// Registers by number.
using GROUP = std::vector<std::size_t>;

/// Means the null keypoint, no register, or no map.
inline constexpr std::size_t NONE = static_cast<std::size_t>(-1);

bool holds(const GROUP& group, std::size_t k);
/// False when the group does not list it.
bool remove_first(GROUP& group, std::size_t k);

/// The groups of one index.
struct PAIR {
  GROUP& group(bool inverted) { return inverted ? i : n; }
  const GROUP& group(bool inverted) const { return inverted ? i : n; }
  bool empty() const { return n.empty() && i.empty(); }
  bool operator==(const PAIR& other) const = default;

  GROUP n;
  GROUP i;
};

/// The indices of one side.
using PAIRS = std::vector<PAIR>;

/// All registers of a side: by index, those of the n group first.
GROUP all_of(const PAIRS& pairs);

/// The texts of a register. A signal register has no entity and no type.
struct KEY {
  bool operator==(const KEY& other) const = default;

  bool signal = true;
  std::string name;
  std::string entity;
  std::string type;
};

/// Null when the keypoint is not a register.
using KEY_OF = std::function<const KEY*(std::size_t)>;

/// The first register of the side with these texts; NONE when there is none.
std::size_t find_namesake(const PAIRS& pairs, const KEY& key, const KEY_OF& key_of);

/// The side with the namesakes of its registers. Registers without a namesake are left out.
PAIRS translated(const PAIRS& pairs, const std::function<std::size_t(std::size_t)>& namesake_of);

struct MAP {
  // --- questions: edits and unions look at the first index only ---

  /// Two empty groups beyond the last index.
  PAIR pair(SIDE side, std::size_t index) const;
  bool lists(SIDE side, std::size_t k) const;
  bool lists_in_n(SIDE side, std::size_t k) const;

  /// The first register of the n group, or of the i group when that is empty; empty at an empty index.
  std::optional<std::size_t> representative(SIDE side, std::size_t index) const;
  /// The other registers of its group, or those of the opposite group; an empty index gives a line.
  GROUP equivalents(SIDE side, std::size_t index, bool inverted, LINES& lines) const;
  /// The representative, its equivalents, its inverted equivalents.
  GROUP registers(SIDE side, std::size_t index, LINES& lines) const;

  bool is_unate(std::size_t r_index, std::size_t t_index, bool positive) const;
  /// Whether the T side has as many indices as the other map's R side, and that side has all of its registers.
  bool t_equals_r(const MAP& other, const KEY_OF& key_of) const;
  /// Whether groups, table and machine are the same; the statuses may differ.
  bool same_as(const MAP& other) const;

  // --- edits ---

  bool replicate(std::size_t existing, std::size_t replica);
  bool retime(std::size_t k, LINES& lines);
  bool eliminate(std::size_t k, KPT_ELIM_ENUM reason, LINES& lines);
  bool erase_t_index(std::size_t index);
  /// Swaps the groups of every index; `side` may be any number.
  bool interchange(int side, LINES& lines);
  void interchange_both();
  /// Keeps the rows in which two T columns agree, and removes the second column.
  bool update_table(unsigned long kept_column, unsigned long other_column, LINES& lines);

  // --- combinations: the other map may be this one ---

  void append(const MAP& other);
  bool unite_simply(const MAP& other);
  bool unite(const MAP& other, LINES& lines);
  /// Takes the other map's T side. `left` and `entered` get the registers that leave and enter the map.
  void update(const MAP& other, GROUP& entered, GROUP& left);
  /// Swaps this map when its register has the opposite polarity of the register
  /// in which `earlier` ends. False when either register is not listed.
  bool align_after(const MAP& earlier, std::size_t transformed, std::size_t reference);

  PAIRS sides[2];
  bool fsm = false;
  TABLE table = TABLE::of_kept_register();
  KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED;
};

}  // namespace kpt_test::plain

#endif
