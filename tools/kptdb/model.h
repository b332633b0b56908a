// The commands' view of a database: its registers and its maps.
//
// Ownership: everything here is a handle of a DATABASE, valid as long as the database exists.
#ifndef KPTDB_MODEL_H
#define KPTDB_MODEL_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "json_line.h"

namespace kptdb {

using JSON = nlohmann::ordered_json;

/// The kind of a map. A map has exactly one kind.
enum MAP_KIND { ONE_TO_ONE, MANY_TO_MANY, STATE_MACHINE, ELIMINATED_MAP, OPEN_MAP };

/// A register and its map, which may be null.
struct REGISTER {
  KPT_SET_ENUM side;
  KPT_REGISTER_KEYPOINT keypoint;
  KPT_REGISTER_TRANSFORMATION map;
};

/// The position of a register on a side of a map.
struct PLACE {
  bool found = false;
  std::size_t index = 0;
  bool inverting = false;
};

std::string_view side_word(KPT_SET_ENUM side);
std::string_view kind_word(MAP_KIND kind);
/// Empty without an elimination.
std::string_view reason_word(const KPT_REGISTER_TRANSFORMATION& map);
/// "signal" or "instance".
std::string_view register_kind_word(const KPT_REGISTER_KEYPOINT& reg);

MAP_KIND kind_of(const KPT_REGISTER_TRANSFORMATION& map);

/// Whether the map says itself that its table is not to be read: events have left it with a column
/// of a register that is gone.
bool has_void_table(const KPT_REGISTER_TRANSFORMATION& map);

KPT_SET_ENUM other_side(KPT_SET_ENUM side);
/// The number of registers of a side, without null ones.
std::size_t member_count(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side);
/// Whether there is one.
bool has_members(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side);
/// These registers.
std::vector<KPT_REGISTER_KEYPOINT> members(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side);
/// The first register of each index of a side, of either group; null when there is none.
std::vector<KPT_REGISTER_KEYPOINT> columns(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side);
PLACE place_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg);

/// Calls visit(index, inverting, register) for every position of a side, also for null ones.
template <class VISIT>
void for_each_place(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, VISIT visit) {
  const std::size_t count = map.get_number_of_indices(side);
  for (std::size_t index = 0; index < count; ++index) {
    for (const bool inverting : {false, true}) {
      for (const KPT_REGISTER_KEYPOINT& reg : map.get_group(side, index, inverting)) {
        visit(index, inverting, reg);
      }
    }
  }
}

/// Calls visit(register) for every register of a side, without null ones.
template <class VISIT>
void for_each_member(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, VISIT visit) {
  for_each_place(map, side, [&](std::size_t, bool, const KPT_REGISTER_KEYPOINT& reg) {
    if (!reg.is_null()) {
      visit(reg);
    }
  });
}

/// The name, and for a block instance its entity and type; "(no register)" for null.
std::string label(const KPT_REGISTER_KEYPOINT& reg);

KPT_REGISTER_TRANSFORMATION map_of(const DATABASE& db, KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg);
/// Calls visit(register) for the registers of a side, or of both, in the order of a saved file.
template <class VISIT>
void for_each_register(const DATABASE& db, KPT_SET_ENUM side, VISIT visit) {
  for (const KPT_REGISTER_KEYPOINT& reg : db.registers(side)) {
    visit(REGISTER{side, reg, map_of(db, side, reg)});
  }
}
template <class VISIT>
void for_each_register(const DATABASE& db, VISIT visit) {
  for_each_register(db, KPT_REFERENCE_SET, visit);
  for_each_register(db, KPT_TRANSFORMED_SET, visit);
}

/// The number of registers of a side of the table.
unsigned width_of(const KPT_STATE_TABLE& table, KPT_SET_ENUM side);
/// A state's codes: character k is the bit of the side's column k + 1.
std::string code_of(const KPT_STATE_TABLE& table, KPT_SET_ENUM side, unsigned state);

/// The beginning of every result in JSON: the number of the format.
JSON new_result();
/// A register as an object, or null.
void put(JSON_LINE& line, const KPT_REGISTER_KEYPOINT& reg);
/// The name, and for a block instance its entity and type: for an object that is open.
void put_parts(JSON_LINE& line, const KPT_REGISTER_KEYPOINT& reg);
/// A map as an object.
void put(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map);
/// The key of the elimination and its word, or null.
void put_elimination(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map);
/// The states of a table, each with the codes of both sides.
void put_states(JSON_LINE& line, const KPT_STATE_TABLE& table);
/// The same as a tree, to which a command can add. The arguments are those of `put`.
template <class... A>
JSON json_of(const A&... what) {
  JSON_LINE line;
  put(line, what...);
  return JSON::parse(line.text());
}
/// JSON as text. Bytes that are not UTF-8 are replaced, so that any database can be printed.
std::string json_text(const JSON& json, int indent = 2);

}  // namespace kptdb

#endif
