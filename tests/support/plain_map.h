// A map of registers over standard containers, written from what each edit,
// union and question is to do, without a thought of speed: what the library's
// map is compared with. Lines that the library would tell the host are added
// to `lines`.
//
// Ownership: values. Registers are numbers, which mean what the caller says.
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

/// The null keypoint, no register, no map.
inline constexpr std::size_t NONE = static_cast<std::size_t>(-1);

bool holds(const GROUP& group, std::size_t k);
/// False when the group does not hold it.
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

/// What a register is called. A signal register has no entity and no type.
struct KEY {
  bool operator==(const KEY& other) const = default;

  bool signal = true;
  std::string name;
  std::string entity;
  std::string type;
};

/// Null for what is no register.
using KEY_OF = std::function<const KEY*(std::size_t)>;

/// The first register of the side that is called so; NONE without one.
std::size_t find_namesake(const PAIRS& pairs, const KEY& key, const KEY_OF& key_of);

/// The side with the namesakes of its registers; those whose namesake is NONE are left out.
PAIRS translated(const PAIRS& pairs, const std::function<std::size_t(std::size_t)>& namesake_of);

struct MAP {
  // --- questions: edits and unions look at the first index only ---

  /// Two empty groups beyond the last index.
  PAIR pair(SIDE side, std::size_t index) const;
  bool lists(SIDE side, std::size_t k) const;
  bool lists_in_n(SIDE side, std::size_t k) const;

  /// The first register of the n group, or of the i group where that is empty; nothing at an empty index.
  std::optional<std::size_t> representative(SIDE side, std::size_t index) const;
  /// The others of its group, or of the opposite one; an empty index gives a line.
  GROUP equivalents(SIDE side, std::size_t index, bool inverted, LINES& lines) const;
  /// The representative, its equivalents, its inverted equivalents.
  GROUP registers(SIDE side, std::size_t index, LINES& lines) const;

  bool is_unate(std::size_t r_index, std::size_t t_index, bool positive) const;
  /// The T side has as many indices as the other map's R side and lists no register that is not there.
  bool t_equals_r(const MAP& other, const KEY_OF& key_of) const;
  /// The same groups, table and machine; the statuses may differ.
  bool same_as(const MAP& other) const;

  // --- edits ---

  bool replicate(std::size_t existing, std::size_t replica);
  bool retime(std::size_t k, LINES& lines);
  bool eliminate(std::size_t k, KPT_ELIM_ENUM reason, LINES& lines);
  bool erase_t_index(std::size_t index);
  /// Interchanges the groups of every index; any number may be asked for.
  bool interchange(int side, LINES& lines);
  void interchange_both();
  /// Keeps the rows in which two T columns agree, without the second of them.
  bool update_table(unsigned long kept_column, unsigned long other_column, LINES& lines);

  // --- combinations: the other map may be this one ---

  void append(const MAP& other);
  bool unite_simply(const MAP& other);
  bool unite(const MAP& other, LINES& lines);
  /// Takes over the other map's T side: the registers that leave the map, and those that enter it.
  void update(const MAP& other, GROUP& entered, GROUP& left);
  /// Interchanges this map where the register that `earlier` ends in has the opposite polarity of the
  /// register that this map starts from. False when either is not listed.
  bool align_after(const MAP& earlier, std::size_t transformed, std::size_t reference);

  PAIRS sides[2];
  bool fsm = false;
  TABLE table = TABLE::of_kept_register();
  KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED;
};

}  // namespace kpt_test::plain

#endif
