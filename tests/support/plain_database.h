// A database over standard containers, written from the descriptions of the
// events, without regard to speed: registers, maps and the two indexes. Results
// and lines are those of the library's database.
//
// Ownership: values. Registers and maps are numbered in the order in which they
// are added. A number is never used again.
#ifndef TESTS_SUPPORT_PLAIN_DATABASE_H
#define TESTS_SUPPORT_PLAIN_DATABASE_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "tests/support/plain_map.h"

namespace kpt_test::plain {

struct REGISTER {
  KEY key;
  long id;
  std::string entered_as;  // the name under which its set finds it
  bool in_set = true;
};

class DATABASE {
 public:
  // --- registers ---

  /// The register that the set finds by that name (and type, for an instance); NONE when there is none.
  std::size_t find(SIDE side, const KEY& key) const;
  std::size_t signal(SIDE side, const std::string& name) const { return find(side, {true, name, "", ""}); }
  /// A register of that key leaves its set.
  std::size_t add(SIDE side, const KEY& key, long id);
  /// The same, with the next id of the side.
  std::size_t add(SIDE side, const KEY& key) { return add(side, key, next_id[side]++); }
  /// The registers in the set: signals, then instances, both in order.
  GROUP walk(SIDE side) const;
  /// Null for NONE.
  const KEY* key_of(std::size_t k) const { return k == NONE ? nullptr : &registers[k].key; }

  // --- maps ---

  /// The map to which a register's entry leads; NONE without an entry, or when that map is deleted.
  std::size_t map_number(SIDE side, std::size_t k) const;
  MAP* map_of(SIDE side, std::size_t k);
  const MAP* map_of(SIDE side, std::size_t k) const;
  std::size_t number_of(const MAP* map) const;

  /// Adds a map, and enters all of its registers.
  std::size_t add_map(const MAP& map);
  void enter(std::size_t map);
  void enter(SIDE side, const PAIRS& pairs, std::size_t map);
  /// Erases the entries of the map's registers, whatever map they lead to. An empty index gives its lines.
  void delete_map(std::size_t map, LINES& lines);

  // --- events ---

  bool associate(const KEY& r, const KEY& t);
  bool associate_fsm(const std::vector<std::string>& r_names, const std::vector<std::string>& t_names,
                     const TABLE& table);
  bool replicate(const std::string& name, const std::string& replica_name, LINES& lines);
  bool retime(const std::string& name, LINES& lines);
  bool eliminate(const std::string& name, KPT_ELIM_ENUM reason, LINES& lines);
  bool merge(const std::string& kept_name, const std::string& merged_name, LINES& lines);

  std::vector<REGISTER> registers;
  GROUP sets[2];  // all registers that were added to a side, in order
  std::map<std::size_t, MAP> maps;
  std::map<std::size_t, std::size_t> index[2];
  long next_id[2] = {0, 0};

  // What happened to the indexes, and the kinds of merges that occurred.
  GROUP erased[2];
  std::vector<std::size_t> entered_anew;
  std::map<std::string, int> seen;

 private:
  bool merge(std::size_t kept, std::size_t merged, LINES& lines);
  bool merge_maps(MAP& kept_map, MAP& merged_map, std::size_t merged, bool inverted, bool opposite, LINES& lines);
  bool leave(MAP& map, std::size_t k, bool inverted);

  std::size_t m_next_map = 0;
};

}  // namespace kpt_test::plain

#endif
