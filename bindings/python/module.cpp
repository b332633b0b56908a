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
      py::is_method(type), py::arg("name"), "init($self, name)\n--\n\nMakes an empty database. Any name is accepted.");
  type.def_property_readonly(
          "name", [](const OWNER& db) { return to_python(db->use().get_name()); }, "Its name, a str.")
      .def(
          "publish", [](const OWNER& db) { db->publish(); },
          "publish($self)\n--\n\n"
          "Hands the database over to the registry of the process, where C++ code finds it by its name.\n\n"
          "Python no longer owns the database: this object and all handles from it then raise Gone. Raises Refused\n"
          "when the registry has a database of that name.")
      .def_property_readonly(
          "is_published", [](const OWNER& db) { return db->is_published(); },
          "Whether `publish` has handed the database over. Never raises.")
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
      "What became of the registers of one design, from the reference netlist, which is the design as written, to the\n"
      "transformed netlist, which is the design after optimisation.\n\n"
      "The database exists as long as there is a handle to anything in it. Events such as associate and merge record\n"
      "what a flow did. db[key] is the Map of a reference register. `in`, len() and a loop are about the reference\n"
      "registers. Threads may share a database: a call waits until another thread's call has ended.");
  kpt_python::bind_database(database);
  kpt_python::bind_look_ups(database);
  kpt_python::bind_map_look_ups(database);
  kpt_python::bind_events(database);
  kpt_python::bind_bulk(database);
  kpt_python::bind_files(module, database);

  module.def("trackers", &kpt_python::trackers,
             "trackers()\n--\n\n"
             "The memory of the library: a dict from each C++ type to its live bytes, live blocks and peak bytes.");
  module.attr("__version__") = KPT_VERSION;
}
