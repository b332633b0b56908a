#include "event_lines.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_set.hpp>
#include <functional>
#include <utility>
#include <vector>

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
    write([&](JSON_LINE& line) {
      line.add("event", "end");
      line.add("events", static_cast<long>(m_events));
    });
    return m_lost;
  }

 private:
  using SIDES = std::array<KPT_SET_ENUM, 2>;
  static constexpr SIDES BOTH{KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

  using ATTRIBUTES = std::vector<std::pair<std::string, std::string>>;

  // Writes the event whose parts `put_event` adds to an open object. Only a text that
  // is written unchanged can be read back unchanged.
  template <class PUT>
  void write(PUT put_event) {
    try {
      m_line.clear();
      put_object(m_line, put_event);
    } catch (const JSON::exception&) {
      JSON_LINE shown;
      put_object(shown, put_event);
      throw FAILURE(EXIT_FOUND, "a text that is not UTF-8 cannot be written as an event: " + shown.text());
    }
    m_line.end_line();
    m_sink(m_line.text());
    ++m_events;
  }
  template <class PUT>
  static void put_object(JSON_LINE& line, PUT put_parts_of_it) {
    line.open_object();
    put_parts_of_it(line);
    line.close_object();
  }

  static void put_named(JSON_LINE& line, const KPT_REGISTER_KEYPOINT& reg) {
    if (reg.get_name().empty()) {
      throw FAILURE(EXIT_FOUND, "a register without a name cannot be written as an event");
    }
    if (reg.is_signal()) {
      line.add(std::string_view(reg.get_name()));
    } else {
      put(line, reg);
    }
  }

  static void put_group(JSON_LINE& line, std::string_view name, const KPT_REGISTER_GROUP& group) {
    bool is_open = false;
    for (const KPT_REGISTER_KEYPOINT& reg : group) {
      if (reg.is_null()) {
        continue;
      }
      if (!std::exchange(is_open, true)) {
        line.key(name);
        line.open_list();
      }
      put_named(line, reg);
    }
    if (is_open) {
      line.close_list();
    }
  }

  static void put_groups(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
    line.key(side_word(side));
    line.open_list();
    for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
      line.open_object();
      put_group(line, "same", map.get_group(side, k, false));
      put_group(line, "inverse", map.get_group(side, k, true));
      line.close_object();
    }
    line.close_list();
  }

  static void put_table(JSON_LINE& line, const KPT_REGISTER_TRANSFORMATION& map, bool is_checked) {
    const KPT_STATE_TABLE table = map.get_state_table();
    line.key("states");
    put_states(line, table);
    if (!is_checked) {
      line.key("columns");
      line.open_list();
      line.add(static_cast<long>(width_of(table, KPT_REFERENCE_SET)));
      line.add(static_cast<long>(width_of(table, KPT_TRANSFORMED_SET)));
      line.close_list();
    }
  }

  static void put_attributes(JSON_LINE& line, const ATTRIBUTES& attributes) {
    if (attributes.empty()) {
      return;
    }
    line.key("attributes");
    line.open_object();
    for (const auto& [name, value] : attributes) {
      line.add_named(name, value);
    }
    line.close_object();
  }

  static ATTRIBUTES attributes_of(const KPT_ATTRIBUTE_LIST& list) { return {list.begin(), list.end()}; }

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

  static ATTRIBUTES attributes_of(const KPT_REGISTER_TRANSFORMATION& map, bool has_lost) {
    ATTRIBUTES attributes = attributes_of(map.get_attributes());
    if (has_lost) {
      const auto partial =
          std::find_if(attributes.begin(), attributes.end(), [](const auto& a) { return a.first == "partial"; });
      (partial == attributes.end() ? attributes.emplace_back("partial", "") : *partial).second =
          map.has_fsm() ? "table" : "yes";
    }
    return attributes;
  }

  void write_map(const KPT_REGISTER_TRANSFORMATION& map) {
    const std::size_t lost = lost_places(map);
    m_lost += lost;
    const bool is_checked = is_checkable(map);
    const ATTRIBUTES attributes = attributes_of(map, lost != 0);
    if (is_checked && is_kept(map) && attributes.empty()) {
      write_association(map);
      return;
    }
    write([&](JSON_LINE& line) {
      line.add("event", "map");
      put_groups(line, map, KPT_REFERENCE_SET);
      put_groups(line, map, KPT_TRANSFORMED_SET);
      if (!is_checked) {
        line.add("as_it_is", true);
      }
      if (map.has_fsm()) {
        put_table(line, map, is_checked);
      }
      if (tells_status(map, lost != 0)) {
        line.add("status", kpt_elim_word(map.get_elimination()));
      }
      put_attributes(line, attributes);
    });
  }

  void write_association(const KPT_REGISTER_TRANSFORMATION& map) {
    write([&](JSON_LINE& line) {
      line.add("event", "associate");
      line.key("reference");
      put_named(line, map.get_reference_group(0, false)[0]);
      line.key("transformed");
      put_named(line, map.get_transformed_group(0, false)[0]);
    });
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
    const ATTRIBUTES attributes = attributes_of(reg.get_attributes());
    if (m_listed.contains(reg) && attributes.empty()) {
      return;
    }
    write([&](JSON_LINE& line) {
      line.add("event", "register");
      line.add("side", side_word(side));
      line.key("register");
      put_named(line, reg);
      put_attributes(line, attributes);
    });
  }

  const KPT_KEYPOINTS_DB& m_db;
  const LINE_SINK& m_sink;
  JSON_LINE m_line{JSON_LINE::REFUSED};
  boost::unordered_flat_set<KPT_REGISTER_KEYPOINT, std::hash<KPT_REGISTER_KEYPOINT>> m_listed;
  std::size_t m_events = 0;
  std::size_t m_lost = 0;
};

}  // namespace

std::size_t write_event_lines(const KPT_KEYPOINTS_DB& db, const LINE_SINK& sink) { return EVENTS(db, sink).write(); }

}  // namespace kptdb
