#include "python_objects.h"

namespace kpt_python {

namespace py = pybind11;

py::tuple to_tuple(const SHARED_DATABASE& db, const KEYPOINTS& keypoints) {
  py::tuple result(keypoints.size());
  for (std::size_t k = 0; k < keypoints.size(); ++k) {
    result[k] = py::cast(REGISTER{db, keypoints[k]});
  }
  return result;
}

void refuse_new(py::handle type) {
  reinterpret_cast<PyTypeObject*>(type.ptr())->tp_new = [](PyTypeObject* cls, PyObject*, PyObject*) -> PyObject* {
    PyErr_Format(PyExc_TypeError, "a %s is got from a database, not made", cls->tp_name);
    return nullptr;
  };
}

}  // namespace kpt_python
