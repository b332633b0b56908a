// Names between Python and the library: str on one side, bytes on the other.
// Bytes that are not UTF-8 go through Python as lone surrogates and come back
// as they were.
//
// Ownership: a TEXT keeps what its bytes lie in.
#ifndef KPT_PYTHON_TEXT_H
#define KPT_PYTHON_TEXT_H

#include <pybind11/pybind11.h>

#include <string_view>

namespace kpt_python {

/// The bytes of a str that outlives this. TypeError for what is no str.
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
