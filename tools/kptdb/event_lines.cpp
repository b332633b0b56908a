#include "event_lines.h"

#include <unordered_set>

#include "model.h"
#include "outcome.h"

namespace kptdb {

namespace {

class EVENTS {
 public:
  EVENTS(const KPT_KEYPOINTS_DB& db, const LINE_SINK& sink) : m_db(db), m_sink(sink) {}

  std::size_t write() {
    for (const KPT_REGISTER_TRANSFORMATION& map : m_db.get_transformation_set()) {
      write_map(map);
    }
    write_registers();
    write(JSON{{"event", "end"}, {"events", m_events}});
    return m_lost;
  }

 private:
  using SIDES = std::array<KPT_SET_ENUM, 2>;
  static constexpr SIDES BOTH{KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

  // Only a text that is written unchanged can be read back unchanged.
  void write(const JSON& event) {
    try {
      m_sink(event.dump() + "\n");
    } catch (const JSON::exception&) {
      throw FAILURE(EXIT_FOUND, "a text that is not UTF-8 cannot be written as an event: " + json_text(event, -1));
    }
    ++m_events;
  }

  static JSON text(const KPT_STRING& string) { return std::string(std::string_view(string)); }

  static JSON named(const KPT_REGISTER_KEYPOINT& reg) {
    if (reg.get_name().empty()) {
      throw FAILURE(EXIT_FOUND, "a register without a name cannot be written as an event");
    }
    return reg.is_signal() ? text(reg.get_name())
                           : JSON{{"name", text(reg.get_name())},
                                  {"entity", text(reg.get_entity_name())},
                                  {"type", text(reg.get_type())}};
  }

  static JSON groups_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
    JSON list = JSON::array();
    for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
      JSON groups = JSON::object();
      for (const bool inverted : {false, true}) {
        for (const KPT_REGISTER_KEYPOINT& reg : map.get_group(side, k, inverted)) {
          if (!reg.is_null()) {
            groups[inverted ? "inverse" : "same"].push_back(named(reg));
          }
        }
      }
      list.push_back(std::move(groups));
    }
    return list;
  }

  static void add_table(const KPT_REGISTER_TRANSFORMATION& map, JSON* event) {
    const KPT_STATE_TABLE table = map.get_state_table();
    JSON& states = (*event)["states"] = JSON::array();
    for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
      states.push_back({code_of(table, KPT_REFERENCE_SET, s), code_of(table, KPT_TRANSFORMED_SET, s)});
    }
    if (event->contains("as_it_is")) {
      (*event)["columns"] = {width_of(table, KPT_REFERENCE_SET), width_of(table, KPT_TRANSFORMED_SET)};
    }
  }

  static JSON attributes_of(const KPT_ATTRIBUTE_LIST& attributes) {
    JSON result = JSON::object();
    for (const auto& [name, value] : attributes) {
      result[std::string(std::string_view(name))] = text(value);
    }
    return result;
  }

  // One register on each side, not inverted: the shorter event says the same.
  static bool is_kept(const KPT_REGISTER_TRANSFORMATION& map) {
    const auto is_single = [&](KPT_SET_ENUM side) {
      return map.get_number_of_indices(side) == 1 && map.get_group(side, 0, false).size() == 1 &&
             map.get_group(side, 0, true).size() == 0;
    };
    return !map.has_fsm() && map.get_elimination() == KPT_NOT_ELIMINATED && is_single(KPT_REFERENCE_SET) &&
           is_single(KPT_TRANSFORMED_SET);
  }

  // Whether `associate_groups` accepts the map: new registers, and a table of the right size.
  bool is_checkable(const KPT_REGISTER_TRANSFORMATION& map) {
    std::size_t registers = 0;
    bool are_new = true;
    for (const KPT_SET_ENUM side : BOTH) {
      for_each_place(map, side, [&](std::size_t, bool, const KPT_REGISTER_KEYPOINT& reg) {
        are_new = (reg.is_null() || m_listed.insert(reg).second) && are_new;
        registers += reg.is_null() ? 0U : 1U;
      });
    }
    const bool has_shape = map.has_fsm() ? table_fits(map)
                                         : map.get_number_of_indices(KPT_REFERENCE_SET) <= 1 &&
                                               map.get_number_of_indices(KPT_TRANSFORMED_SET) <= 1;
    return registers > 0 && are_new && has_shape;
  }

  static bool table_fits(const KPT_REGISTER_TRANSFORMATION& map) {
    const KPT_STATE_TABLE table = map.get_state_table();
    bool agrees = true;
    for (unsigned s = 1; (map.is_stuck_at_zero() || map.is_stuck_at_one()) && s <= table.get_number_of_states(); ++s) {
      agrees =
          agrees && table.get_reference_entry(static_cast<unsigned short>(s), 1) == (map.is_stuck_at_one() ? 1 : 0);
    }
    return agrees && table.get_number_of_states() != 0 &&
           map.get_number_of_indices(KPT_REFERENCE_SET) == width_of(table, KPT_REFERENCE_SET) &&
           map.get_number_of_indices(KPT_TRANSFORMED_SET) == width_of(table, KPT_TRANSFORMED_SET);
  }

  // A file may list ids that no register has. Everything that depends on one is
  // left out, and the map is marked as incomplete.
  static std::size_t lost_places(const KPT_REGISTER_TRANSFORMATION& map) {
    std::size_t lost = 0;
    for (const KPT_SET_ENUM side : BOTH) {
      for_each_place(map, side,
                     [&](std::size_t, bool, const KPT_REGISTER_KEYPOINT& reg) { lost += reg.is_null() ? 1U : 0U; });
    }
    return lost;
  }

  static bool tells_status(const KPT_REGISTER_TRANSFORMATION& map, bool has_lost) {
    return map.get_elimination() != KPT_NOT_ELIMINATED && !(has_lost && map.get_elimination() != KPT_NO_FANOUT);
  }

  static JSON attributes_of(const KPT_REGISTER_TRANSFORMATION& map, bool has_lost) {
    JSON attributes = attributes_of(map.get_attributes());
    if (has_lost) {
      attributes["partial"] = map.has_fsm() ? "table" : "yes";
    }
    return attributes;
  }

  void write_map(const KPT_REGISTER_TRANSFORMATION& map) {
    const std::size_t lost = lost_places(map);
    m_lost += lost;
    const bool is_checked = is_checkable(map);
    const JSON attributes = attributes_of(map, lost != 0);
    if (is_checked && is_kept(map) && attributes.empty()) {
      write(JSON{{"event", "associate"},
                 {"reference", named(map.get_reference_group(0, false)[0])},
                 {"transformed", named(map.get_transformed_group(0, false)[0])}});
      return;
    }
    JSON event{{"event", "map"},
               {"reference", groups_of(map, KPT_REFERENCE_SET)},
               {"transformed", groups_of(map, KPT_TRANSFORMED_SET)}};
    if (!is_checked) {
      event["as_it_is"] = true;
    }
    if (map.has_fsm()) {
      add_table(map, &event);
    }
    if (tells_status(map, lost != 0)) {
      event["status"] = std::string(kpt_elim_word(map.get_elimination()));
    }
    if (!attributes.empty()) {
      event["attributes"] = attributes;
    }
    write(event);
  }

  // Writes the registers that no map lists, and those that have attributes.
  void write_registers() {
    for (const KPT_SET_ENUM side : BOTH) {
      for (const KPT_REGISTER_KEYPOINT& reg : m_db.get_set(side)) {
        write_register(side, reg);
      }
    }
  }

  void write_register(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) {
    const KPT_ATTRIBUTE_LIST attributes = reg.get_attributes();
    if (m_listed.contains(reg) && attributes.empty()) {
      return;
    }
    JSON event{{"event", "register"}, {"side", side_word(side)}, {"register", named(reg)}};
    if (!attributes.empty()) {
      event["attributes"] = attributes_of(attributes);
    }
    write(event);
  }

  const KPT_KEYPOINTS_DB& m_db;
  const LINE_SINK& m_sink;
  std::unordered_set<KPT_REGISTER_KEYPOINT> m_listed;
  std::size_t m_events = 0;
  std::size_t m_lost = 0;
};

}  // namespace

std::size_t write_event_lines(const KPT_KEYPOINTS_DB& db, const LINE_SINK& sink) { return EVENTS(db, sink).write(); }

}  // namespace kptdb
