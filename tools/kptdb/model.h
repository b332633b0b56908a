// What the commands say about a database: its registers, its maps, and what became of each.
//
// Ownership: everything here points into a DATABASE and is good as long as that lives.
#ifndef KPTDB_MODEL_H
#define KPTDB_MODEL_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"

namespace kptdb {

using JSON = nlohmann::ordered_json;

/// What a map says. The kinds exclude each other.
enum MAP_KIND { ONE_TO_ONE, MANY_TO_MANY, STATE_MACHINE, ELIMINATED_MAP, OPEN_MAP };

/// What is known of a register: where it went, why it went, or nothing.
enum STATUS { MAPPED, ELIMINATED, UNANSWERED };

/// A register and its map, which may be null.
struct REGISTER {
  KPT_SET_ENUM side;
  const KPT_REGISTER_KEYPOINT_IMPL* keypoint;
  const KPT_TRANSFORMATION_IMPL* map;
};

/// Where a keypoint stands in a side of a map.
struct PLACE {
  bool found = false;
  std::size_t index = 0;
  bool inverting = false;
};

std::string_view side_word(KPT_SET_ENUM side);
std::string_view kind_word(MAP_KIND kind);
std::string_view status_word(STATUS status);
/// Empty for no elimination.
std::string_view reason_word(const KPT_TRANSFORMATION_IMPL& map);

MAP_KIND kind_of(const KPT_TRANSFORMATION_IMPL& map);
STATUS status_of(const REGISTER& reg);

const NI_PAIR_VECTOR& side_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side);
KPT_SET_ENUM other_side(KPT_SET_ENUM side);
/// The registers that a side lists, null ones left out.
std::vector<const KPT_KEYPOINT*> members(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side);
PLACE place_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint);

/// Null for a keypoint that is no register, and for null.
const KPT_REGISTER_KEYPOINT_IMPL* as_register(const KPT_KEYPOINT* keypoint);
/// The name, and of a block instance its entity and type; "(no register)" for null.
std::string label(const KPT_KEYPOINT* keypoint);

const KPT_TRANSFORMATION_IMPL* map_of(const DATABASE& db, KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint);
/// The registers of a side, or of both, in the order of a saved file.
std::vector<REGISTER> registers_of(const DATABASE& db, KPT_SET_ENUM side);
std::vector<REGISTER> registers_of(const DATABASE& db);

/// A state's codes: character k is the bit of the side's column k + 1.
std::string code_of(const KPT_STATE_TABLE_IMPL& table, KPT_SET_ENUM side, unsigned state);

JSON json_of(const KPT_KEYPOINT* keypoint);
JSON json_of(const REGISTER& reg);
JSON json_of(const KPT_STATE_TABLE_IMPL& table);
JSON json_of(const KPT_TRANSFORMATION_IMPL& map);
/// JSON as text. Bytes that are no UTF-8 are replaced, so that any database can be printed.
std::string json_text(const JSON& json, int indent = 2);

}  // namespace kptdb

#endif
