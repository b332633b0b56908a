// Names between Python and the library: str in Python, bytes in the library.
// Bytes that are not UTF-8 are lone surrogates in Python, and become the same
// bytes again.
//
// Ownership: a TEXT keeps the object that holds its bytes.
#ifndef KPT_PYTHON_TEXT_H
#define KPT_PYTHON_TEXT_H

#include <pybind11/pybind11.h>

#include <string_view>

namespace kpt_python {

/// The bytes of a str that outlives this. TypeError when the object is not a str.
class TEXT {
 public:
  TEXT(pybind11::handle text, const char* what);
  std::string_view view() const { return m_view; }
  operator std::string_view() const { return m_view; }

 private:
  pybind11::object m_bytes;  // empty where Python keeps the bytes with the str
  std::string_view m_view;
};

pybind11::str to_python(std::string_view bytes);

}  // namespace kpt_python

#endif
