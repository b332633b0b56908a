// The extension module of the package kpt.
#include <pybind11/stl.h>

#include "bindings.h"
#include "host/kpt_host.h"
#include "library_use.h"
#include "python_objects.h"
#include "state_table.h"
#include "text.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

void bind_database(DATABASE_CLASS& type) {
  make_in_new<OWNER>(type, [](PyObject*, PyObject*) { return new OWNER; });
  // Not a constructor: __new__ has made the object, so a derived class cannot leave it unmade.
  type.attr("__init__") = py::cpp_function(
      [](OWNER& db, const py::object& name) { db.init(TEXT(name, "a database's name").view()); }, py::name("init"),
      py::is_method(type), py::arg("name"), "init($self, name)\n--\n\nAn empty database; any name will do.");
  type.def_property_readonly(
          "name", [](const OWNER& db) { return to_python(db->use().get_name()); }, "Its name, a str.")
      .def(
          "publish", [](const OWNER& db) { db->publish(); },
          "publish($self)\n--\n\n"
          "Hands the database over to the registry of the process, where C++ code finds it by its name.\n\n"
          "It is then no longer Python's: this object and all handles from it raise Gone. Refused when the registry\n"
          "has a database of that name.")
      .def_property_readonly(
          "is_published", [](const OWNER& db) { return db->is_published(); },
          "Whether it was handed over. Never raises.")
      .def("__repr__", [](const OWNER& db) {
        if (db->is_published()) {
          return py::str("<kpt.Database: published>");
        }
        const KPT_KEYPOINTS_DB& handle = db->use();
        const std::string counts = std::to_string(handle.get_reference_set().size()) + " reference and " +
                                   std::to_string(handle.get_transformed_set().size()) + " transformed registers, " +
                                   std::to_string(handle.get_transformation_set().size()) + " maps>";
        return to_python("<kpt.Database " + std::string(std::string_view(handle.get_name())) + ": " + counts);
      });
}

py::dict trackers() {
  wait_for_library();
  py::dict result;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    result[py::str(tracker.type)] = py::make_tuple(tracker.live_bytes, tracker.live_blocks, tracker.peak_bytes);
  }
  return result;
}

}  // namespace

}  // namespace kpt_python

PYBIND11_MODULE(_kpt, module) {
  namespace py = pybind11;
  using kpt_python::DATABASE_CLASS;
  py::options options;
  options.disable_function_signatures();

  kpt_python::bind_state_table(module);
  kpt_python::bind_registers(module);
  kpt_python::bind_maps(module);
  DATABASE_CLASS database(
      module, "Database",
      "Database(name)\n--\n\n"
      "What became of the registers of one design, from the netlist as it was written, the reference, to the netlist\n"
      "after optimisation.\n\n"
      "Python owns it, and it lives as long as there is a handle to anything in it. The events (associate, merge and "
      "so\n"
      "on) record; db[key] is the Map of a reference register. `in`, len() and a walk speak of the reference\n"
      "registers. Threads may share it: a call waits until another thread's long one is done.");
  kpt_python::bind_database(database);
  kpt_python::bind_look_ups(database);
  kpt_python::bind_map_look_ups(database);
  kpt_python::bind_events(database);
  kpt_python::bind_bulk(database);
  kpt_python::bind_files(module, database);

  module.def("trackers", &kpt_python::trackers,
             "trackers()\n--\n\n"
             "What the library's memory goes to: by the C++ type, its live bytes, live blocks and peak bytes.");
  module.attr("__version__") = KPT_VERSION;
}
