#include "text.h"

namespace kpt_python {

namespace py = pybind11;

TEXT::TEXT(py::handle text, const char* what) {
  if (!PyUnicode_Check(text.ptr())) {
    throw py::type_error(std::string(what) + " is a str, not " + Py_TYPE(text.ptr())->tp_name);
  }
  Py_ssize_t size = 0;
  if (const char* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size)) {
    m_view = {bytes, static_cast<std::size_t>(size)};
    return;
  }
  PyErr_Clear();  // surrogates
  m_bytes = py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
  if (!m_bytes) {
    throw py::error_already_set();
  }
  m_view = {PyBytes_AS_STRING(m_bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(m_bytes.ptr()))};
}

py::str to_python(std::string_view bytes) {
  PyObject* const text = PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogateescape");
  if (text == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::str>(text);
}

}  // namespace kpt_python
