// The exceptions of the module, which kpt/_errors.py defines.
//
// Ownership: none.
#ifndef KPT_PYTHON_ERRORS_H
#define KPT_PYTHON_ERRORS_H

#include <pybind11/pybind11.h>

#include <string>

namespace kpt_python {

/// Throws an exception of kpt/_errors.py with these arguments.
template <class... ARGS>
[[noreturn]] void raise(const char* name, ARGS&&... args) {
  namespace py = pybind11;
  const py::object type = py::module_::import("kpt._errors").attr(name);
  const py::object error = type(std::forward<ARGS>(args)...);
  PyErr_SetObject(type.ptr(), error.ptr());
  throw py::error_already_set();
}

/// The library or this module refuses: `reason` says why.
[[noreturn]] void raise_refused(const std::string& reason);
/// The object does not exist any more.
[[noreturn]] void raise_gone(const std::string& what);

}  // namespace kpt_python

#endif
