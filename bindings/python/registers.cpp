// Register, and the registers of a netlist.
#include <algorithm>
#include <iterator>
#include <map>

#include "attributes.h"
#include "bindings.h"
#include "errors.h"
#include "handles.h"
#include "keys.h"
#include "library_use.h"
#include "python_objects.h"
#include "text.h"
#include "tools/kptdb/text.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

// The registers of a netlist.
struct SET {
  SHARED_DATABASE db;
  KPT_SET_ENUM side;

  KPT_KEYPOINT_SET get() const { return db->use().get_set(side); }
};

struct SET_WALK {
  SET set;
  KPT_KEYPOINT_SET::ITERATOR at;
};

// The library's handle. Checks that the database exists, because the next call may need it.
const KPT_REGISTER_KEYPOINT& used(const REGISTER& reg) {
  reg.db->use();
  return reg.keypoint;
}

const KPT_REGISTER_KEYPOINT& present(const REGISTER& reg) {
  if (!reg.is_present()) {
    raise_gone("register " + label(reg.keypoint) + " has left the database");
  }
  return reg.keypoint;
}

py::object key_of(const REGISTER& reg) {
  const KPT_REGISTER_KEYPOINT& keypoint = used(reg);
  if (keypoint.is_signal()) {
    return to_python(keypoint.get_name());
  }
  return py::make_tuple(to_python(keypoint.get_name()), to_python(keypoint.get_entity_name()),
                        to_python(keypoint.get_type()));
}

MAP map_of(const REGISTER& reg) {
  const KPT_REGISTER_TRANSFORMATION map = reg.db->use().get_register_transformation(reg.keypoint);
  if (map.is_null()) {
    raise_gone(std::string("the ") + side_word(side_of(reg.keypoint)) + " register " + label(reg.keypoint) +
               " has no map");
  }
  return {reg.db, map.get_number(), reg.keypoint, side_of(reg.keypoint)};
}

bool has_map(const REGISTER& reg) { return !reg.db->use().get_register_transformation(reg.keypoint).is_null(); }

REGISTER find(const SET& set, const py::object& key) {
  const KEY parsed(key);
  const KPT_REGISTER_KEYPOINT found = parsed.find_in(set.get());
  if (found.is_null()) {
    raise("UnknownRegister", py::cast(set), key);
  }
  return {set.db, found};
}

bool contains(const SET& set, const py::object& key) {
  const KEY parsed(key);
  return !parsed.find_in(set.get()).is_null();
}

py::object find_or(const SET& set, const py::object& key, const py::object& otherwise) {
  const KEY parsed(key);
  const KPT_REGISTER_KEYPOINT found = parsed.find_in(set.get());
  return found.is_null() ? otherwise : py::cast(REGISTER{set.db, found});
}

// The names nearest to an unknown one, nearest first. They differ in at most a third of it and one character.
py::list nearest(const SET& set, const py::object& key) {
  constexpr std::size_t MOST = 3;
  const std::string name(KEY(key).name().name);
  const std::size_t limit = name.size() / 3 + 2;
  std::multimap<std::size_t, std::string> found;
  const KPT_KEYPOINT_SET registers = set.get();
  {
    const LONG_CALL call;
    std::size_t bound = limit;
    for (const KPT_REGISTER_KEYPOINT& keypoint : registers) {
      const std::string_view candidate = keypoint.get_name();
      const std::size_t distance = kptdb::edit_distance(name, candidate, bound);
      if (distance < bound) {
        found.emplace(distance, candidate);
        if (found.size() > MOST) {
          found.erase(std::prev(found.end()));
          bound = std::prev(found.end())->first;
        }
      }
    }
  }
  py::list names;
  for (const auto& near : found) {
    names.append(to_python(near.second));
  }
  return names;
}

REGISTER next(SET_WALK& walk) {
  walk.set.db->use();
  if (walk.at == KPT_KEYPOINT_SET::ITERATOR()) {
    throw py::stop_iteration();
  }
  REGISTER reg{walk.set.db, *walk.at};
  ++walk.at;
  return reg;
}

void bind_register(py::module_& module) {
  py::class_<REGISTER> type(
      module, "Register",
      "A register of one netlist of a database.\n\n"
      "A register keeps its database alive. When a register has left the database, its name, id and side can\n"
      "still be read, but its map and attributes raise Gone. Two registers are equal when they are the same\n"
      "register of the same database.");
  refuse_new(type);
  type.def_property_readonly(
          "name", [](const REGISTER& reg) { return to_python(used(reg).get_name()); }, "Its name, a str.")
      .def_property_readonly(
          "id", [](const REGISTER& reg) { return used(reg).get_id(); },
          "The number that identifies the register among those of its side in a database file.")
      .def_property_readonly(
          "side", [](const REGISTER& reg) { return side_word(side_of(used(reg))); },
          "The netlist of the register: \"reference\" or \"transformed\".")
      .def_property_readonly(
          "entity", [](const REGISTER& reg) { return to_python(used(reg).get_entity_name()); },
          "The entity of a block instance; empty for a signal.")
      .def_property_readonly(
          "type", [](const REGISTER& reg) { return to_python(used(reg).get_type()); },
          "The register type of a block instance; empty for a signal.")
      .def_property_readonly(
          "is_signal", [](const REGISTER& reg) { return used(reg).is_signal(); },
          "Whether the register is a signal, not a block instance.")
      .def_property_readonly(
          "key", &key_of,
          "The key of the register in its netlist: a signal's name, or a block instance's name, entity and type.")
      .def_property_readonly("is_present", &REGISTER::is_present,
                             "Whether its netlist still has the register. A union deletes registers that no map lists.")
      .def_property_readonly("has_map", &has_map, "Whether the register has a map.")
      .def_property_readonly(
          "map", &map_of,
          "The Map of the register, seen from the register. Raises Gone when the register has no map: it was\n"
          "eliminated, was merged into another register, or never had a map.")
      .def("__eq__", [](const REGISTER& a,
                        const py::object& b) { return py::isinstance<REGISTER>(b) && a == b.cast<const REGISTER&>(); })
      .def("__hash__", [](const REGISTER& reg) { return std::hash<KPT_REGISTER_KEYPOINT>()(reg.keypoint); })
      .def("__repr__", [](const REGISTER& reg) {
        if (reg.db->is_published()) {
          return py::str("<kpt.Register of a published database>");
        }
        const KPT_REGISTER_KEYPOINT& keypoint = used(reg);
        return to_python(std::string("<kpt.Register: ") + side_word(side_of(keypoint)) + " " + label(keypoint) + ">");
      });
  bind_attributes(type, present);
}

void bind_set(py::module_& module) {
  py::class_<SET> type(
      module, "Registers",
      "The registers of one netlist of a database.\n\n"
      "registers[key] is a Register. The key is the name of a signal, the name, entity and type of a block\n"
      "instance in a tuple, or a Register of any database. It raises UnknownRegister, a KeyError, when there is\n"
      "no such register. `in`, len() and a loop work as for a set. A loop visits signals first, then block\n"
      "instances, each in order of creation. It does not visit registers that are added during the loop.");
  refuse_new(type);
  type.def("__getitem__", &find)
      .def("__contains__", &contains)
      .def("__len__", [](const SET& set) { return set.get().size(); })
      .def("__iter__",
           [](const SET& set) {
             return SET_WALK{set, set.get().begin()};
           })
      .def("get", &find_or, py::arg("key"), py::arg("default") = py::none(),
           "get($self, key, default=None)\n--\n\nThe Register, or `default` when there is none.")
      .def_property_readonly(
          "side", [](const SET& set) { return side_word(set.side); }, "\"reference\" or \"transformed\".")
      .def("_nearest", &nearest)
      .def("__repr__", [](const SET& set) {
        if (set.db->is_published()) {
          return std::string("<kpt.Registers of a published database>");
        }
        return "<kpt.Registers: " + std::to_string(set.get().size()) + " " + side_word(set.side) + ">";
      });

  py::class_<SET_WALK> walk(module, "RegisterIterator", "An iterator over registers.");
  refuse_new(walk);
  walk.def("__iter__", [](const py::object& self) { return self; }).def("__next__", &next);
}

}  // namespace

void bind_registers(py::module_& module) {
  bind_register(module);
  bind_set(module);
}

void bind_look_ups(DATABASE_CLASS& database) {
  database
      .def_property_readonly(
          "reference",
          [](const OWNER& db) {
            return SET{db, KPT_REFERENCE_SET};
          },
          "The Registers of the reference netlist, which is the design as written.")
      .def_property_readonly(
          "transformed",
          [](const OWNER& db) {
            return SET{db, KPT_TRANSFORMED_SET};
          },
          "The Registers of the transformed netlist, which is the design after optimisation.");
}

}  // namespace kpt_python
