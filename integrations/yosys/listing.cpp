#include "listing.h"

#include <algorithm>

namespace kpt_yosys {

namespace {

std::string name_of(const KPT_REGISTER_KEYPOINT& keypoint) {
  std::string name(keypoint.get_name());
  if (keypoint.is_block_instance()) {
    name += std::string(" (") + keypoint.get_entity_name().c_str() + "/" + keypoint.get_type().c_str() + ")";
  }
  return name;
}

// The state machine by its transformed registers and its codes.
std::string machine_text(const KPT_REGISTER_TRANSFORMATION& map) {
  std::string text = "machine of";
  for (unsigned short i = 0; i < map.get_state_transformed_size(); ++i) {
    const KPT_REGISTER_KEYPOINT keypoint = map.get_transformed(i);
    text += " " + (keypoint.is_null() ? std::string("-") : name_of(keypoint));
  }
  text += ":";
  const KPT_STATE_TABLE table = map.get_state_table();
  for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
    text += " ";
    for (unsigned short i = table.get_state_reference_size(); i > 0; --i) {
      text += table.get_reference_entry(row, i) == 1 ? '1' : '0';
    }
    text += ">";
    for (unsigned short i = table.get_state_transformed_size(); i > 0; --i) {
      text += table.get_transformed_entry(row, i) == 1 ? '1' : '0';
    }
  }
  return text;
}

std::string fate_text(const KPT_REGISTER_TRANSFORMATION& map, bool inverted) {
  if (map.has_fsm()) {
    return machine_text(map);
  }
  if (map.is_stuck_at_zero() || map.is_stuck_at_one()) {
    return map.is_stuck_at_one() != inverted ? "stuck at one" : "stuck at zero";
  }
  if (map.has_no_fanout()) {
    return "no fanout";
  }
  const KPT_REGISTER_KEYPOINT transformed = map.get_transformed(0);
  if (transformed.is_null()) {
    return "nothing recorded";
  }
  return (map.is_negative_unate(0, 0) != inverted ? "~ " : "= ") + name_of(transformed);
}

void add_lines(const KPT_REGISTER_TRANSFORMATION& map, unsigned short index, std::vector<std::string>& lines) {
  const KPT_REGISTER_KEYPOINT first = map.get_reference(index);
  if (first.is_null()) {
    return;
  }
  lines.push_back(name_of(first) + " " + fate_text(map, false));
  for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_reference_equivalents(index)) {
    lines.push_back(name_of(keypoint) + " " + fate_text(map, false));
  }
  for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_reference_inverted_equivalents(index)) {
    lines.push_back(name_of(keypoint) + " " + fate_text(map, true));
  }
}

}  // namespace

std::vector<std::string> listing(const KPT_KEYPOINTS_DB& db) {
  std::vector<std::string> lines;
  for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set().get_list_of_register_transformations()) {
    for (unsigned short index = 0; index < map.get_state_reference_size(); ++index) {
      add_lines(map, index, lines);
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::string name_unfit_for_a_file(const KPT_KEYPOINTS_DB& db) {
  for (const KPT_KEYPOINT_SET& set : {db.get_reference_set(), db.get_transformed_set()}) {
    for (const KPT_REGISTER_KEYPOINT& keypoint : set) {
      if (!kpt_file_can_hold(keypoint.get_name()) || !kpt_file_can_hold(keypoint.get_entity_name()) ||
          !kpt_file_can_hold(keypoint.get_type())) {
        return std::string(std::string_view(keypoint.get_name()));
      }
    }
  }
  return {};
}

}  // namespace kpt_yosys
