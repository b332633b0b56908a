#include "tests/union/stages.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "host/kpt_host.h"

namespace kpt_test {

LINES masked(LINES lines) {
  for (std::string& line : lines) {
    if (line.starts_with("TIME: ")) {
      static const std::regex times("( time: | at : ).+$");
      line = std::regex_replace(line, times, "$1#");
    }
  }
  return lines;
}

std::string not_in_db2(const std::string& name) {
  return "Representative of db1 transformation " + name + " is not in db2";
}

std::string line_of(const KPT_TRANSFORMATION_IMPL& map) {
  std::string line = text_of(map);
  if (map.map_has_fsm_transformation()) {
    line += " fsm";
  }
  if (map.get_elim_status() != KPT_NOT_ELIMINATED) {
    line += " status " + std::to_string(map.get_elim_status());
  }
  return line;
}

LINES maps_of(const KPT_TRANSFORMATION_SET_IMPL& set) {
  LINES lines;
  for (const KPT_TRANSFORMATION_IMPL* map : set.get_list_of_register_transformations()) {
    lines.push_back(line_of(*map));
  }
  return lines;
}

LINES maps_of(KPT_KEYPOINTS_DB_IMPL& db) { return maps_of(*db.get_transformation_set()); }

std::string names_of(const KPT_KEYPOINT_SET_IMPL* set) { return text_of(set->get_list_of_keypoints()); }

std::string saved(KPT_KEYPOINTS_DB_IMPL& db) {
  static int count = 0;
  const std::string file = "union_" + std::to_string(getpid()) + "_" + std::to_string(++count) + ".xml";
  if (!db.save(file)) {
    return "not saved";
  }
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  std::remove(file.c_str());
  return text;
}

LINES faults_after_union(KPT_KEYPOINTS_DB_IMPL& db) {
  LINES faults;
  const KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
  const auto& list = maps.get_list_of_register_transformations();
  const auto check = [&](const char* side, const KPT_KEYPOINT* keypoint, const KPT_TRANSFORMATION_IMPL* map) {
    const std::string who = std::string(side) + text_of(keypoint);
    if (map == nullptr) {
      faults.push_back(who + " has no map");
    } else if (std::find(list.begin(), list.end(), map) == list.end()) {
      faults.push_back(who + " has a map of another set");
    }
  };
  for (const KPT_KEYPOINT* keypoint : db.get_reference_set()->get_list_of_keypoints()) {
    check("r ", keypoint, maps.get_map_of_r_keypoint(keypoint));
  }
  for (const KPT_KEYPOINT* keypoint : db.get_transformed_set()->get_list_of_keypoints()) {
    check("t ", keypoint, maps.get_map_of_t_keypoint(keypoint));
  }
  return faults;
}

void set_next_ids(long r_id, long t_id) {
  KPT_KEYPOINTS_DB_IMPL::s_r_id = r_id;
  KPT_KEYPOINTS_DB_IMPL::s_t_id = t_id;
}

KPT_STATE_TABLE client_table(const STATES& states) { return KPT_STATE_TABLE(make_table(states)); }

namespace {

// One side of the text; an index without "~" has no inverting group.
NI_PAIR_VECTOR side(REGISTERS& registers, const std::string& text) {
  std::string whole;
  std::istringstream indices(text);
  for (std::string index; std::getline(indices, index, '|');) {
    whole += (whole.empty() ? "" : "|") + index + (index.find('~') == std::string::npos ? "~" : "");
  }
  return registers.side(whole);
}

NI_PAIR_VECTOR r_side(REGISTERS& registers, const std::string& map) {
  return side(registers, map.substr(0, map.find("->")));
}

NI_PAIR_VECTOR t_side(REGISTERS& registers, const std::string& map) {
  return side(registers, map.substr(map.find("->") + 2));
}

}  // namespace

KPT_TRANSFORMATION_IMPL* SET::plain(const std::string& text, KPT_ELIM_ENUM status) {
  return add_map(r_side(m_registers, text), t_side(m_registers, text), status);
}

KPT_TRANSFORMATION_IMPL* SET::fsm(const std::string& text, const STATES& states, KPT_ELIM_ENUM status) {
  return add_map(r_side(m_registers, text), t_side(m_registers, text), make_table(states), status);
}

std::string SET::r_map(const std::string& name) {
  const KPT_TRANSFORMATION_IMPL* map = get_map_of_r_keypoint(m_registers[name]);
  return map == nullptr ? "" : line_of(*map);
}

std::string SET::t_map(const std::string& name) {
  const KPT_TRANSFORMATION_IMPL* map = get_map_of_t_keypoint(m_registers[name]);
  return map == nullptr ? "" : line_of(*map);
}

}  // namespace kpt_test
