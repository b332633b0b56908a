#include "model.h"

#include <fmt/format.h>

#include "text.h"

namespace kptdb {

std::string_view side_word(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? "reference" : "transformed"; }

std::string_view kind_word(MAP_KIND kind) {
  switch (kind) {
    case ONE_TO_ONE:
      return "1:1";
    case MANY_TO_MANY:
      return "n:m";
    case STATE_MACHINE:
      return "fsm";
    case ELIMINATED_MAP:
      return "eliminated";
    case OPEN_MAP:
      break;
  }
  return "open";
}

std::string_view status_word(STATUS status) {
  return status == MAPPED ? "mapped" : status == ELIMINATED ? "eliminated" : "unanswered";
}

std::string_view reason_word(const KPT_TRANSFORMATION_IMPL& map) {
  switch (map.get_elim_status()) {
    case KPT_STUCK_AT_ZERO:
      return "stuck_at_zero";
    case KPT_STUCK_AT_ONE:
      return "stuck_at_one";
    case KPT_NO_FANOUT:
      return "no_fanout";
    case KPT_ELIMINATED:
      return "eliminated";
    default:
      return "";
  }
}

namespace {

std::size_t member_count(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side) {
  std::size_t count = 0;
  KPT_TRANSFORMATION_IMPL::for_each_keypoint(side_of(map, side),
                                             [&](const KPT_KEYPOINT* k) { count += k == nullptr ? 0U : 1U; });
  return count;
}

}  // namespace

// A state machine that lost one of its registers is still one: the elimination is a note on it.
MAP_KIND kind_of(const KPT_TRANSFORMATION_IMPL& map) {
  const std::size_t r = member_count(map, KPT_REFERENCE_SET);
  const std::size_t t = member_count(map, KPT_TRANSFORMED_SET);
  if (map.map_has_fsm_transformation() && r > 0 && t > 0) {
    return STATE_MACHINE;
  }
  if (!reason_word(map).empty()) {
    return ELIMINATED_MAP;
  }
  if (r == 0 || t == 0) {
    return OPEN_MAP;
  }
  return r == 1 && t == 1 ? ONE_TO_ONE : MANY_TO_MANY;
}

STATUS status_of(const REGISTER& reg) {
  if (reg.map == nullptr) {
    return UNANSWERED;
  }
  const MAP_KIND kind = kind_of(*reg.map);
  return kind == ELIMINATED_MAP ? ELIMINATED : kind == OPEN_MAP ? UNANSWERED : MAPPED;
}

const NI_PAIR_VECTOR& side_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? map.r_vec() : map.t_vec();
}

KPT_SET_ENUM other_side(KPT_SET_ENUM side) {
  return side == KPT_REFERENCE_SET ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET;
}

std::vector<const KPT_KEYPOINT*> members(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side) {
  std::vector<const KPT_KEYPOINT*> result;
  KPT_TRANSFORMATION_IMPL::for_each_keypoint(side_of(map, side), [&](const KPT_KEYPOINT* k) {
    if (k != nullptr) {
      result.push_back(k);
    }
  });
  return result;
}

PLACE place_of(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint) {
  const NI_PAIR_VECTOR& pairs = side_of(map, side);
  const auto holds = [&](const KPT_KEYPOINT_LIST& group) {
    return std::find(group.begin(), group.end(), keypoint) != group.end();
  };
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    const bool inverting = !holds(pairs[k].first);
    if (!inverting || holds(pairs[k].second)) {
      return {true, k, inverting};
    }
  }
  return {};
}

const KPT_REGISTER_KEYPOINT_IMPL* as_register(const KPT_KEYPOINT* keypoint) {
  return keypoint != nullptr && keypoint->is_register() ? static_cast<const KPT_REGISTER_KEYPOINT_IMPL*>(keypoint)
                                                        : nullptr;
}

std::string label(const KPT_KEYPOINT* keypoint) {
  if (keypoint == nullptr) {
    return "(no register)";
  }
  const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(keypoint);
  if (reg == nullptr || reg->register_is_signal()) {
    return printable(keypoint->get_element_name());
  }
  return fmt::format("{} ({}, {})", printable(reg->get_element_name()), printable(reg->get_entity_name()),
                     printable(reg->get_register_type()));
}

const KPT_TRANSFORMATION_IMPL* map_of(const DATABASE& db, KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint) {
  return side == KPT_REFERENCE_SET ? db.maps().get_map_of_r_keypoint(keypoint)
                                   : db.maps().get_map_of_t_keypoint(keypoint);
}

std::vector<REGISTER> registers_of(const DATABASE& db, KPT_SET_ENUM side) {
  std::vector<REGISTER> result;
  result.reserve(db.registers(side).size());
  db.registers(side).for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    result.push_back({side, k, map_of(db, side, k)});
    return true;
  });
  return result;
}

std::vector<REGISTER> registers_of(const DATABASE& db) {
  std::vector<REGISTER> result = registers_of(db, KPT_REFERENCE_SET);
  const std::vector<REGISTER> transformed = registers_of(db, KPT_TRANSFORMED_SET);
  result.insert(result.end(), transformed.begin(), transformed.end());
  return result;
}

std::string code_of(const KPT_STATE_TABLE_IMPL& table, KPT_SET_ENUM side, unsigned state) {
  const unsigned width =
      side == KPT_REFERENCE_SET ? table.get_num_reference_registers() : table.get_num_transformed_registers();
  std::string code;
  for (unsigned column = 1; column <= width; ++column) {
    const int bit = table.get_entry(side, static_cast<unsigned short>(state + 1), static_cast<unsigned short>(column));
    code += bit == 0 ? '0' : bit == 1 ? '1' : '?';
  }
  return code;
}

JSON json_of(const KPT_KEYPOINT* keypoint) {
  if (keypoint == nullptr) {
    return nullptr;
  }
  JSON result;
  result["name"] = std::string_view(keypoint->get_element_name());
  const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(keypoint);
  if (reg != nullptr && !reg->register_is_signal()) {
    result["entity"] = std::string_view(reg->get_entity_name());
    result["type"] = std::string_view(reg->get_register_type());
  }
  return result;
}

JSON json_of(const REGISTER& reg) {
  JSON result;
  result["side"] = side_word(reg.side);
  result["id"] = reg.keypoint->get_kpid();
  result["kind"] = reg.keypoint->register_is_signal() ? "signal" : "instance";
  result.update(json_of(reg.keypoint));
  result["status"] = status_word(status_of(reg));
  return result;
}

JSON json_of(const KPT_STATE_TABLE_IMPL& table) {
  JSON states = JSON::array();
  for (unsigned s = 0; s < table.get_num_states(); ++s) {
    states.push_back({code_of(table, KPT_REFERENCE_SET, s), code_of(table, KPT_TRANSFORMED_SET, s)});
  }
  return states;
}

namespace {

JSON json_of_side(const NI_PAIR_VECTOR& side) {
  const auto group = [](const KPT_KEYPOINT_LIST& keypoints) {
    JSON list = JSON::array();
    for (const KPT_KEYPOINT* k : keypoints) {
      list.push_back(json_of(k));
    }
    return list;
  };
  JSON result = JSON::array();
  for (const NI_PAIR& pair : side) {
    JSON index;
    index["noninverting"] = group(pair.first);
    index["inverting"] = group(pair.second);
    result.push_back(std::move(index));
  }
  return result;
}

}  // namespace

JSON json_of(const KPT_TRANSFORMATION_IMPL& map) {
  JSON result;
  result["kind"] = kind_word(kind_of(map));
  const std::string_view reason = reason_word(map);
  result["elimination"] = reason.empty() ? JSON(nullptr) : JSON(reason);
  result["reference"] = json_of_side(map.r_vec());
  result["transformed"] = json_of_side(map.t_vec());
  if (map.map_has_fsm_transformation()) {
    result["states"] = json_of(map.state_table());
  }
  return result;
}

std::string json_text(const JSON& json, int indent) {
  return json.dump(indent, ' ', false, JSON::error_handler_t::replace);
}

}  // namespace kptdb
