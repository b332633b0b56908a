#include "replay.h"

#include <fmt/format.h>

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

bool record(const KPT_KEYPOINTS_DB& db, const ASSOCIATE_FSM& e) {
  const auto narrow = [](std::size_t value) { return static_cast<unsigned short>(value); };
  KPT_STATE_TABLE table(narrow(e.states.size()), narrow(e.reference.size()), narrow(e.transformed.size()));
  for (std::size_t s = 0; s < e.states.size(); ++s) {
    const auto& [reference, transformed] = e.states[s];
    for (std::size_t k = 0; k < reference.size(); ++k) {
      table.set_reference_entry(narrow(s + 1), narrow(k + 1), reference[k] == '1');
    }
    for (std::size_t k = 0; k < transformed.size(); ++k) {
      table.set_transformed_entry(narrow(s + 1), narrow(k + 1), transformed[k] == '1');
    }
  }
  return db.associate_registers_fsm_signals(names_for_library(e.reference), names_for_library(e.transformed), table);
}

bool record(const KPT_KEYPOINTS_DB& db, const REPLICATE& e) { return db.set_replicated_registers(e.name, e.replica); }
bool record(const KPT_KEYPOINTS_DB& db, const MERGE& e) { return db.set_merged_registers(e.kept, e.merged); }
bool record(const KPT_KEYPOINTS_DB& db, const RETIME_INVERTER& e) { return db.set_inverter_retimed_register(e.name); }

bool record(const KPT_KEYPOINTS_DB& db, const ELIMINATE& e) {
  switch (e.reason) {
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

// ---- Why, where the library is silent ----
// All of this is asked after the refusal. A refused association has changed nothing, so whatever
// exists then was there before.

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

// What stands against an event on a transformed signal; empty when nothing is seen.
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
  if (e.reason == KPT_ELIMINATED && has_signal(db.get_transformed_set(), e.name)) {
    return "an elimination is recorded with its reason only";
  }
  return against(db, e.name);
}

}  // namespace

std::string replay(const KPT_KEYPOINTS_DB& db, const EVENT& event, HOST_LINES& lines) {
  lines.clear();
  if (std::visit([&](const auto& e) { return record(db, e); }, event)) {
    return {};
  }
  std::string reason = lines.reason();
  if (reason.empty()) {
    reason = std::visit([&](const auto& e) { return why(db, e); }, event);
  }
  return reason.empty() ? "the library gives no reason" : reason;
}

}  // namespace kptdb
