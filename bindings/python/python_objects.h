// Makes Python objects from the library's answers.
//
// Ownership: the objects share the database.
#ifndef KPT_PYTHON_PYTHON_OBJECTS_H
#define KPT_PYTHON_PYTHON_OBJECTS_H

#include <pybind11/pybind11.h>

#include <memory>
#include <new>

#include "answers.h"
#include "handles.h"

namespace kpt_python {

/// A tuple of Registers.
pybind11::tuple to_tuple(const SHARED_DATABASE& db, const KEYPOINTS& keypoints);

/// For a function that Python calls without pybind11: the object that `make`
/// returns, or null with the exception set.
template <class MAKE>
PyObject* result_of(MAKE make) noexcept {
  namespace py = pybind11;
  try {
    return make().release().ptr();
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    PyErr_SetString(PyExc_RuntimeError, error.what());
  }
  return nullptr;
}

/// Only the module makes objects of the class. Its constructor raises TypeError,
/// and so does every other way to make an empty object.
void refuse_new(pybind11::handle type);

/// Objects of the class are complete when __new__ has made them, whatever a derived class
/// does in __init__. A constructor of pybind11 is not called. `make` returns their content.
template <class HELD>
void make_in_new(pybind11::class_<HELD>& type, HELD* (*make)(PyObject* args, PyObject* kwargs)) {
  namespace py = pybind11;
  static HELD* (*maker)(PyObject*, PyObject*) = make;
  static const newfunc allocate = reinterpret_cast<PyTypeObject*>(type.ptr())->tp_new;
  reinterpret_cast<PyTypeObject*>(type.ptr())->tp_new = [](PyTypeObject* cls, PyObject* args, PyObject* kwargs) {
    return result_of([&] {
      std::unique_ptr<HELD> held(maker(args, kwargs));
      auto self = py::reinterpret_steal<py::object>(allocate(cls, args, kwargs));
      if (!self) {
        throw py::error_already_set();
      }
      auto* const instance = reinterpret_cast<py::detail::instance*>(self.ptr());
      py::detail::value_and_holder place = instance->get_value_and_holder(py::detail::get_type_info(typeid(HELD)));
      place.value_ptr() = held.release();
      place.type->init_instance(instance, nullptr);
      return self;
    });
  };
}

}  // namespace kpt_python

#endif
