// Map, its groups, and the maps of a database.
#include <pybind11/stl.h>

#include <utility>

#include "attributes.h"
#include "bindings.h"
#include "errors.h"
#include "handles.h"
#include "keys.h"
#include "library_use.h"
#include "python_objects.h"
#include "state_table.h"
#include "text.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

struct MAPS {
  SHARED_DATABASE db;

  KPT_TRANSFORMATION_SET get() const { return db->use().get_transformation_set(); }
};

// The library's own walk keeps a handle to the next map, which may be deleted meanwhile.
struct MAPS_WALK {
  SHARED_DATABASE db;
  std::uint32_t at = 0;
  std::uint32_t last = 0;
};

// One index of one side.
struct GROUP {
  SHARED_DATABASE db;
  KEYPOINTS same;
  KEYPOINTS inverse;
};

std::optional<PLACE> place_if_any(const MAP& map, const KPT_REGISTER_TRANSFORMATION& handle) {
  return map.seen_from.is_null() ? std::nullopt : find_place(handle, map.side, map.seen_from);
}

// The present position of the register from which the map is seen. An event may have moved it to another map.
PLACE place_in(const MAP& map, const KPT_REGISTER_TRANSFORMATION& handle) {
  const std::optional<PLACE> place = place_if_any(map, handle);
  if (!place) {
    raise_gone(map.seen_from.is_null()
                   ? "map " + std::to_string(map.number) + " lists no register"
                   : "register " + label(map.seen_from) + " is no longer in map " + std::to_string(map.number));
  }
  return *place;
}

template <class ASK>
auto ask(const MAP& map, ASK ask) {
  const KPT_REGISTER_TRANSFORMATION handle = map.get();
  return ask(handle, place_in(map, handle));
}

py::tuple registers_across(const MAP& map, bool inverse) {
  return to_tuple(
      map.db, ask(map, [=](const auto& handle, const PLACE& place) { return counterparts(handle, place, inverse); }));
}

py::tuple registers_beside(const MAP& map, bool inverse) {
  return to_tuple(map.db, ask(map, [&](const auto& handle, const PLACE& place) {
                    return twins(handle, place, inverse, map.seen_from);
                  }));
}

py::tuple groups_of(const MAP& map, KPT_SET_ENUM side) {
  std::vector<GROUP> groups;
  const KPT_REGISTER_TRANSFORMATION handle = map.get();
  const std::size_t end = handle.get_number_of_indices(side);
  for (std::size_t index = 0; index < end; ++index) {
    groups.push_back({map.db, registers_of(handle.get_group(side, index, false)),
                      registers_of(handle.get_group(side, index, true))});
  }
  py::tuple result(groups.size());
  for (std::size_t index = 0; index < groups.size(); ++index) {
    result[index] = py::cast(std::move(groups[index]));
  }
  return result;
}

KPT_FATE_ENUM fate(const MAP& map) {
  const KPT_REGISTER_TRANSFORMATION handle = map.get();
  const std::optional<PLACE> place = place_if_any(map, handle);
  return place ? fate_of(handle, *place) : KPT_FATE_UNKNOWN;
}

std::optional<int> constant(const MAP& map) {
  const std::optional<bool> value = ask(map, constant_of);
  return value ? std::optional<int>(*value ? 1 : 0) : std::nullopt;
}

std::optional<std::string> elimination(const MAP& map) {
  const KPT_ELIM_ENUM status = map.get().get_elimination();
  return status == KPT_NOT_ELIMINATED ? std::nullopt : std::optional<std::string>(kpt_elim_word(status));
}

py::object table(const MAP& map) {
  const std::shared_ptr<const KPT_STATE_TABLE> table = table_of(map.get());
  return table == nullptr ? py::none() : py::cast(TABLE(table));
}

py::object seen_from(const MAP& map) {
  map.get();
  return map.seen_from.is_null() ? py::none() : py::cast(REGISTER{map.db, map.seen_from});
}

bool is_gone(const MAP& map) {
  return map.db->is_published() || map.db->use().get_transformation_set().get_map(map.number).is_null();
}

// "map 3 of count, mapped"
std::string in_words(const MAP& map) {
  if (is_gone(map)) {
    return "<kpt.Map: gone>";
  }
  const std::string of = map.seen_from.is_null() ? "no register" : label(map.seen_from);
  return "<kpt.Map: " + std::to_string(map.number) + " of " + of + ", " + fate_word(fate(map)) + ">";
}

void bind_groups(py::module_& module) {
  py::class_<GROUP> type(module, "Group",
                         "One index of one side of a Map: registers that hold its value or the inverse.\n\n"
                         "It does not change when the map changes.");
  refuse_new(type);
  type.def_property_readonly(
          "same", [](const GROUP& group) { return to_tuple(group.db, group.same); },
          "A tuple of the Registers that hold the value of the index.")
      .def_property_readonly(
          "inverse", [](const GROUP& group) { return to_tuple(group.db, group.inverse); },
          "A tuple of the Registers that hold the inverse of the value.")
      .def("__len__", [](const GROUP& group) { return group.same.size() + group.inverse.size(); })
      .def("__repr__", [](const GROUP& group) {
        return "<kpt.Group: " + std::to_string(group.same.size()) + " same, " + std::to_string(group.inverse.size()) +
               " inverse>";
      });
}

void bind_structure(py::class_<MAP>& type) {
  type.def_property_readonly(
          "number", [](const MAP& map) { return map.get().get_number(); },
          "The map's number in the database, from 1 in order of creation. No other map gets this number.")
      .def_property_readonly("register", &seen_from,
                             "The Register from which the map is seen; None for a map without registers.")
      .def_property_readonly("is_gone", &is_gone, "Whether the map was absorbed or deleted. Never raises.")
      .def_property_readonly(
          "reference", [](const MAP& map) { return groups_of(map, KPT_REFERENCE_SET); },
          "A tuple of Groups, one for each index of the reference side. Index k is column k of the state table.")
      .def_property_readonly(
          "transformed", [](const MAP& map) { return groups_of(map, KPT_TRANSFORMED_SET); },
          "A tuple of Groups, one for each index of the transformed side.")
      .def_property_readonly(
          "is_fsm", [](const MAP& map) { return map.get().has_fsm(); },
          "Whether the map is that of a re-encoded state machine.")
      .def_property_readonly(
          "fsm", &table,
          "The StateTable of a state machine. None for other maps, and for a table whose size differs\n"
          "from the map's number of indices: such a table says nothing about the registers.")
      .def_property_readonly(
          "elimination", &elimination,
          "Why registers of the map were removed, as recorded: \"stuck_at_zero\", \"stuck_at_one\",\n"
          "\"no_fanout\" or \"eliminated\"; None when no register was removed.");
}

void bind_answers(py::class_<MAP>& type) {
  type.def_property_readonly(
          "equivalents", [](const MAP& map) { return registers_across(map, false); },
          "A tuple of the Registers of the other netlist that hold the register's value. If the representative holds\n"
          "it, it is the first. Empty for a bit of a state machine: see `fsm`.")
      .def_property_readonly(
          "inverted_equivalents", [](const MAP& map) { return registers_across(map, true); },
          "A tuple of the Registers of the other netlist that hold the inverse of the register's value.")
      .def_property_readonly(
          "twins", [](const MAP& map) { return registers_beside(map, false); },
          "A tuple of the other Registers of the register's own netlist that hold its value.")
      .def_property_readonly(
          "inverted_twins", [](const MAP& map) { return registers_beside(map, true); },
          "A tuple of the Registers of the register's own netlist that hold the inverse of its value.")
      .def_property_readonly(
          "inverted", [](const MAP& map) { return ask(map, is_inverted); },
          "Whether the representative in the other netlist holds the inverse of the register's value. None when\n"
          "there is no representative, and for a bit of a state machine.")
      .def_property_readonly("constant", &constant,
                             "The value, 0 or 1, of a register that is constant; None when no constant is known.")
      .def_property_readonly(
          "no_fanout", [](const MAP& map) { return fate(map) == KPT_FATE_WITHOUT_FANOUT; },
          "Whether the register is gone because it drives nothing.")
      .def_property_readonly(
          "fate", [](const MAP& map) { return fate_word(fate(map)); },
          "What became of the register: \"mapped\", \"machine\", \"constant\", \"without_fanout\" or \"unknown\".\n"
          "For a transformed register, the same words say where it comes from.");
}

MAP find(const OWNER& db, const py::object& key) {
  const KEY parsed(key);
  const KPT_KEYPOINTS_DB& handle = db->use();
  const KPT_REGISTER_KEYPOINT found = parsed.find_in(handle.get_reference_set());
  if (found.is_null()) {
    raise("UnknownRegister", py::cast(db).attr("reference"), key);
  }
  const std::uint32_t number = handle.get_transformation_set().get_number_of_map(KPT_REFERENCE_SET, found);
  if (number == 0) {
    raise_gone("the reference register " + parsed.label() + " has no map");
  }
  return {db, number, found, KPT_REFERENCE_SET};
}

// db[key] without pybind11's dispatcher, which takes longer than the look-up.
PyObject* subscript(PyObject* self, PyObject* key) {
  static const py::detail::type_info* const type = py::detail::get_type_info(typeid(OWNER));
  return result_of([=]() -> py::object {
    const py::detail::value_and_holder place =
        reinterpret_cast<py::detail::instance*>(self)->get_value_and_holder(type);
    return py::cast(find(*static_cast<OWNER*>(place.value_ptr()), py::reinterpret_borrow<py::object>(key)));
  });
}

py::object find_or(const OWNER& db, const py::object& key, const py::object& otherwise) {
  const KEY parsed(key);
  const KPT_KEYPOINTS_DB& handle = db->use();
  const KPT_REGISTER_KEYPOINT found = parsed.find_in(handle.get_reference_set());
  const std::uint32_t number = handle.get_transformation_set().get_number_of_map(KPT_REFERENCE_SET, found);
  return number == 0 ? otherwise : py::cast(MAP{db, number, found, KPT_REFERENCE_SET});
}

MAPS_WALK walk_over(const MAPS& maps) {
  MAPS_WALK walk{maps.db};
  for (const KPT_REGISTER_TRANSFORMATION& map : maps.get()) {
    walk.last = map.get_number();
  }
  return walk;
}

MAP next(MAPS_WALK& walk) {
  const KPT_TRANSFORMATION_SET maps = walk.db->use().get_transformation_set();
  while (walk.at < walk.last) {
    const KPT_REGISTER_TRANSFORMATION map = maps.get_map(++walk.at);
    if (!map.is_null()) {
      return seen_from_first(walk.db, map);
    }
  }
  throw py::stop_iteration();
}

void bind_set(py::module_& module) {
  py::class_<MAPS> maps(module, "Maps",
                        "The maps of a database, in order of creation.\n\n"
                        "len() counts the maps, and a loop visits them. Maps may be added and deleted during a loop,\n"
                        "which does not visit the added ones.");
  refuse_new(maps);
  maps.def("__len__", [](const MAPS& set) { return set.get().size(); })
      .def("__iter__", &walk_over)
      .def("__repr__", [](const MAPS& set) {
        return set.db->is_published() ? std::string("<kpt.Maps of a published database>")
                                      : "<kpt.Maps: " + std::to_string(set.get().size()) + ">";
      });
  py::class_<MAPS_WALK> walk(module, "MapIterator", "An iterator over maps.");
  refuse_new(walk);
  walk.def("__iter__", [](const py::object& self) { return self; }).def("__next__", &next);
}

}  // namespace

void bind_maps(py::module_& module) {
  bind_groups(module);
  py::class_<MAP> type(
      module, "Map",
      "What became of registers: groups of reference registers, and groups of transformed ones.\n\n"
      "A map is seen from one register: words such as equivalent and inverted compare with the value of that\n"
      "register. A map keeps its database alive. An event may delete a map, or let another map absorb it. Everything\n"
      "but is_gone then raises Gone. To get the present map of the register, ask the database again. Two maps are\n"
      "equal when they are the same map, even if they are seen from different registers.");
  refuse_new(type);
  bind_structure(type);
  bind_answers(type);
  bind_attributes(type, [](const MAP& map) { return map.get(); });
  type.def("__eq__",
           [](const MAP& a, const py::object& b) { return py::isinstance<MAP>(b) && a == b.cast<const MAP&>(); })
      .def("__hash__",
           [](const MAP& map) { return std::hash<const void*>()(map.db.get()) ^ (map.number * 0x9E3779B97F4A7C15U); })
      .def("__repr__", [](const MAP& map) { return to_python(in_words(map)); });
  bind_set(module);
}

void bind_map_look_ups(DATABASE_CLASS& database) {
  database
      .def_property_readonly(
          "maps", [](const OWNER& db) { return MAPS{db}; }, "The Maps of the database.")
      .def(
          "__getitem__", &find,
          "__getitem__($self, key)\n--\n\n"
          "The Map of a reference register: by the name of a signal, by the name, entity and type of a block instance\n"
          "in a tuple, or by a Register of any database. Raises UnknownRegister, a KeyError, when there is no such\n"
          "register, and Gone when the register has no map.")
      .def("get", &find_or, py::arg("key"), py::arg("default") = py::none(),
           "get($self, key, default=None)\n--\n\n"
           "The Map of a reference register, or `default` when the register is unknown or has no map.")
      .def("__contains__",
           [](const OWNER& db, const py::object& key) {
             const KEY parsed(key);
             return !parsed.find_in(db->use().get_reference_set()).is_null();
           })
      .def("__len__", [](const OWNER& db) { return db->use().get_reference_set().size(); })
      .def("__iter__", [](const py::object& db) { return py::iter(db.attr("reference")); });
  reinterpret_cast<PyHeapTypeObject*>(database.ptr())->as_mapping.mp_subscript = subscript;
}

}  // namespace kpt_python
