#include "replay.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace kptdb {

namespace {

// ---- The call of each event ----

bool record(const KPT_KEYPOINTS_DB& db, const ASSOCIATE& e) {
  const auto& r = e.reference;
  const auto& t = e.transformed;
  if (r.instance && t.instance) {
    return db.associate_registers_instance_to_instance(r.name, r.instance->entity, r.instance->type, t.name,
                                                       t.instance->entity, t.instance->type);
  }
  if (r.instance) {
    return db.associate_registers_instance_to_signal(r.name, r.instance->entity, r.instance->type, t.name);
  }
  if (t.instance) {
    return db.associate_registers_signal_to_instance(r.name, t.name, t.instance->entity, t.instance->type);
  }
  return db.associate_registers_signal_to_signal(r.name, t.name);
}

KPT_STRING_VECTOR names_for_library(const std::vector<std::string>& names) {
  KPT_STRING_VECTOR result;
  for (const std::string& name : names) {
    result.emplace_back(std::string_view(name));
  }
  return result;
}

KPT_STATE_TABLE table_of(const MAP::TABLE& from) {
  const auto narrow = [](std::size_t value) { return static_cast<unsigned short>(value); };
  KPT_STATE_TABLE table(narrow(from.states.size()), narrow(from.reference), narrow(from.transformed));
  for (std::size_t s = 0; s < from.states.size(); ++s) {
    const auto& [reference, transformed] = from.states[s];
    for (std::size_t k = 0; k < reference.size(); ++k) {
      table.set_reference_entry(narrow(s + 1), narrow(k + 1), reference[k] == '1');
    }
    for (std::size_t k = 0; k < transformed.size(); ++k) {
      table.set_transformed_entry(narrow(s + 1), narrow(k + 1), transformed[k] == '1');
    }
  }
  return table;
}

bool record(const KPT_KEYPOINTS_DB& db, const ASSOCIATE_FSM& e) {
  return db.associate_registers_fsm_signals(names_for_library(e.reference), names_for_library(e.transformed),
                                            table_of({e.reference.size(), e.transformed.size(), e.states}));
}

bool record(const KPT_KEYPOINTS_DB& db, const REPLICATE& e) { return db.set_replicated_registers(e.name, e.replica); }
bool record(const KPT_KEYPOINTS_DB& db, const MERGE& e) { return db.set_merged_registers(e.kept, e.merged); }
bool record(const KPT_KEYPOINTS_DB& db, const RETIME_INVERTER& e) { return db.set_inverter_retimed_register(e.name); }

KPT_REGISTER_TRANSFORMATION map_of(const KPT_KEYPOINTS_DB& db, const std::string& name) {
  return db.get_transformed_register_transformation(name);
}

// A status is about the first reference register. When this register has the
// inverse of the transformed one, its value is the inverse. Without a reference
// register, the status is about the first transformed register that stays.
KPT_ELIM_ENUM status_of(const KPT_REGISTER_TRANSFORMATION& map, const std::string& name, bool value) {
  bool is_inverted = true;
  std::size_t others = 0;
  for (const KPT_REGISTER_KEYPOINT& reg : map.get_transformed_group(0, false)) {
    const bool is_it = !reg.is_null() && reg.is_signal() && std::string_view(reg.get_name()) == name;
    is_inverted = is_inverted && !is_it;
    others += is_it ? 0 : 1;
  }
  const bool has_same = map.get_reference_group(0, false).size() != 0;
  const bool has_inverse = map.get_reference_group(0, true).size() != 0;
  const bool told_inverted = has_same || has_inverse ? !has_same : others == 0;
  return value != (is_inverted != told_inverted) ? KPT_STUCK_AT_ONE : KPT_STUCK_AT_ZERO;
}

bool record(const KPT_KEYPOINTS_DB& db, const ELIMINATE& e) {
  const KPT_REGISTER_TRANSFORMATION map = e.value ? map_of(db, e.name) : KPT_REGISTER_TRANSFORMATION();
  if (!map.is_null() && map.has_fsm()) {
    return false;
  }
  switch (map.is_null() ? e.reason : status_of(map, e.name, *e.value)) {
    case KPT_STUCK_AT_ZERO:
      return db.set_eliminated_register_stuck_at_zero(e.name);
    case KPT_STUCK_AT_ONE:
      return db.set_eliminated_register_stuck_at_one(e.name);
    case KPT_NO_FANOUT:
      return db.set_eliminated_register_no_fanout(e.name);
    default:
      return db.set_eliminated_register(e.name);
  }
}

KPT_REGISTER_NAME name_for_library(const EVENT_REGISTER& reg) {
  return reg.instance ? KPT_REGISTER_NAME(reg.name, reg.instance->entity, reg.instance->type)
                      : KPT_REGISTER_NAME(reg.name);
}

KPT_GROUPS_SIDE side_for_library(const std::vector<EVENT_GROUPS>& side) {
  KPT_GROUPS_SIDE result;
  for (const auto& [same, inverse] : side) {
    KPT_GROUPS& made = result.emplace_back();
    std::transform(same.begin(), same.end(), std::back_inserter(made.same), name_for_library);
    std::transform(inverse.begin(), inverse.end(), std::back_inserter(made.inverse), name_for_library);
  }
  return result;
}

KPT_REGISTER_TRANSFORMATION make_map(const KPT_KEYPOINTS_DB& db, const MAP& e) {
  const KPT_GROUPS_SIDE r = side_for_library(e.reference);
  const KPT_GROUPS_SIDE t = side_for_library(e.transformed);
  if (e.as_it_is && e.table) {
    const KPT_STATE_TABLE table = table_of(*e.table);
    return db.add_groups_as_they_are(r, t, &table, e.status);
  }
  if (e.as_it_is) {
    return db.add_groups_as_they_are(r, t, nullptr, e.status);
  }
  return e.table ? db.associate_groups(r, t, table_of(*e.table), e.status) : db.associate_groups(r, t, e.status);
}

KPT_REGISTER_KEYPOINT find(const KPT_KEYPOINT_SET& set, const EVENT_REGISTER& reg) {
  return reg.instance ? set.get_register(reg.name, reg.instance->entity, reg.instance->type)
                      : set.get_register(reg.name);
}

bool record(const KPT_KEYPOINTS_DB& db, const MAP& e) {
  const KPT_REGISTER_TRANSFORMATION map = make_map(db, e);
  if (map.is_null()) {
    return false;
  }
  for (const auto& [name, value] : e.attributes) {
    map.add_attribute(name, value);
  }
  return true;
}

bool record(const KPT_KEYPOINTS_DB& db, const KNOWN_REGISTER& e) {
  KPT_REGISTER_KEYPOINT reg = find(db.get_set(e.side), e.reg);
  if (reg.is_null()) {
    reg = db.add_register_without_map(e.side, name_for_library(e.reg));
  }
  for (const auto& [name, value] : e.attributes) {
    reg.add_attribute(name, value);
  }
  return true;
}

// The reader handles the end of a file.
bool record(const KPT_KEYPOINTS_DB&, const END&) { return true; }

// ---- Which map an event speaks of ----

// The maps before the event, because afterwards the register may have none.
struct MAPS_BEFORE {
  KPT_REGISTER_TRANSFORMATION map;       // the map that is changed
  KPT_REGISTER_TRANSFORMATION absorbed;  // the map that is absorbed
};
const KPT_REGISTER_TRANSFORMATION NO_MAP;

template <class OTHER>
MAPS_BEFORE maps_before(const KPT_KEYPOINTS_DB&, const OTHER&) {
  return {NO_MAP, NO_MAP};
}
MAPS_BEFORE maps_before(const KPT_KEYPOINTS_DB& db, const REPLICATE& e) { return {map_of(db, e.name), NO_MAP}; }
MAPS_BEFORE maps_before(const KPT_KEYPOINTS_DB& db, const RETIME_INVERTER& e) { return {map_of(db, e.name), NO_MAP}; }
MAPS_BEFORE maps_before(const KPT_KEYPOINTS_DB& db, const ELIMINATE& e) { return {map_of(db, e.name), NO_MAP}; }
MAPS_BEFORE maps_before(const KPT_KEYPOINTS_DB& db, const MERGE& e) {
  return {map_of(db, e.kept), map_of(db, e.merged)};
}

template <class OTHER>
KPT_REGISTER_TRANSFORMATION map_made(const KPT_KEYPOINTS_DB&, const OTHER&) {
  return NO_MAP;
}
KPT_REGISTER_TRANSFORMATION map_made(const KPT_KEYPOINTS_DB& db, const ASSOCIATE& e) {
  return db.get_register_transformation(find(db.get_transformed_set(), e.transformed));
}
KPT_REGISTER_TRANSFORMATION map_made(const KPT_KEYPOINTS_DB& db, const ASSOCIATE_FSM& e) {
  return map_of(db, e.transformed.front());
}

// ---- Where a fact comes from ----

std::string text_of(const KPT_REGISTER_TRANSFORMATION& map, const char* name) {
  return map.is_null() ? std::string() : std::string(std::string_view(map.get_attribute(name)));
}

// Adds an item to a list that does not contain it.
void add_remark(const KPT_REGISTER_TRANSFORMATION& map, const char* name, std::string_view separator,
                const std::string& remark) {
  const std::string before = text_of(map, name);
  const std::string framed = std::string(separator) + before + std::string(separator);
  if (remark.empty() || framed.find(std::string(separator) + remark + std::string(separator)) != std::string::npos) {
    return;
  }
  map.add_attribute(name, before.empty() ? remark : before + std::string(separator) + remark);
}

struct REMARKS {
  std::string pass;
  std::string note;
};

void add_remarks(const KPT_REGISTER_TRANSFORMATION& map, const REMARKS& remarks) {
  if (!map.is_null()) {
    add_remark(map, "pass", ", ", remarks.pass);
    add_remark(map, "note", "; ", remarks.note);
  }
}

// ---- Why, when the library issues no line ----
// All of this runs after the refusal. A refused association has changed nothing,
// so everything that exists was there before.

bool has_signal(const KPT_KEYPOINT_SET& set, const std::string& name) { return !set.get_register(name).is_null(); }

bool has(const KPT_KEYPOINT_SET& set, const EVENT_REGISTER& reg) {
  return reg.instance ? !set.get_register(reg.name, reg.instance->entity, reg.instance->type).is_null()
                      : has_signal(set, reg.name);
}

std::string exists_already(std::string_view side, const std::string& name) {
  return fmt::format("the {} register {} exists already", side, name);
}

std::string why(const KPT_KEYPOINTS_DB& db, const ASSOCIATE& e) {
  if (has(db.get_reference_set(), e.reference)) {
    return exists_already("reference", describe(e.reference));
  }
  if (has(db.get_transformed_set(), e.transformed)) {
    return exists_already("transformed", describe(e.transformed));
  }
  return "the library gives no reason";
}

std::string why(const KPT_KEYPOINTS_DB& db, const ASSOCIATE_FSM& e) {
  for (const std::string& name : e.reference) {
    if (has_signal(db.get_reference_set(), name)) {
      return exists_already("reference", name);
    }
  }
  for (const std::string& name : e.transformed) {
    if (has_signal(db.get_transformed_set(), name)) {
      return exists_already("transformed", name);
    }
  }
  return "the library gives no reason";
}

// The reason against an event on a transformed signal; empty when none is found.
std::string against(const KPT_KEYPOINTS_DB& db, const std::string& name) {
  if (!has_signal(db.get_transformed_set(), name)) {
    return fmt::format("there is no transformed signal register {}", name);
  }
  const KPT_REGISTER_TRANSFORMATION map = db.get_transformed_register_transformation(name);
  if (map.is_null()) {
    return fmt::format("the transformed register {} has no map", name);
  }
  if (map.has_fsm()) {
    return fmt::format("{} is a register of a state machine that the event cannot be recorded for", name);
  }
  return {};
}

std::string why(const KPT_KEYPOINTS_DB& db, const REPLICATE& e) { return against(db, e.name); }

std::string why(const KPT_KEYPOINTS_DB& db, const MERGE& e) {
  const std::string reason = against(db, e.kept);
  return reason.empty() ? against(db, e.merged) : reason;
}

std::string why(const KPT_KEYPOINTS_DB& db, const RETIME_INVERTER& e) { return against(db, e.name); }

std::string why(const KPT_KEYPOINTS_DB& db, const ELIMINATE& e) {
  const KPT_REGISTER_TRANSFORMATION map = map_of(db, e.name);
  if (e.value && !map.is_null() && map.has_fsm()) {
    return fmt::format("{} is a register of a state machine: its value is told by the table of a map", e.name);
  }
  if (e.reason == KPT_ELIMINATED && has_signal(db.get_transformed_set(), e.name)) {
    return "an elimination is recorded with its reason only";
  }
  return against(db, e.name);
}

std::string why(const KPT_KEYPOINTS_DB&, const MAP&) { return {}; }
std::string why(const KPT_KEYPOINTS_DB&, const KNOWN_REGISTER&) { return {}; }
std::string why(const KPT_KEYPOINTS_DB&, const END&) { return {}; }

// Whether the event was recorded; its map then has its pass and note. The remarks
// of an absorbed map go to the map that absorbs it.
template <class WHAT>
bool record_with_remarks(const KPT_KEYPOINTS_DB& db, const WHAT& what, const REMARKS& remarks) {
  const MAPS_BEFORE before = maps_before(db, what);
  const bool is_absorbed = !before.absorbed.is_null() && before.absorbed != before.map;
  const REMARKS absorbed =
      is_absorbed ? REMARKS{text_of(before.absorbed, "pass"), text_of(before.absorbed, "note")} : REMARKS();
  if (!record(db, what)) {
    return false;
  }
  add_remarks(before.map, absorbed);
  if (!remarks.pass.empty() || !remarks.note.empty()) {
    add_remarks(before.map.is_null() ? map_made(db, what) : before.map, remarks);
  }
  return true;
}

}  // namespace

std::string replay(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines) {
  lines.clear();
  const REMARKS remarks{event.pass, event.note};
  if (std::visit([&](const auto& what) { return record_with_remarks(db, what, remarks); }, event.what)) {
    return {};
  }
  std::string reason = lines.reason();
  if (reason.empty()) {
    reason = std::visit([&](const auto& what) { return why(db, what); }, event.what);
  }
  return reason.empty() ? "the library gives no reason" : reason;
}

}  // namespace kptdb
