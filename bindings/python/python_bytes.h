// The bytes of a Python file object, for a load that does not hold Python's lock.
//
// Ownership: keeps the file object, and an exception of it until the exception is raised.
#ifndef KPT_PYTHON_PYTHON_BYTES_H
#define KPT_PYTHON_PYTHON_BYTES_H

#include <pybind11/pybind11.h>

#include <optional>
#include <utility>

#include "db/kpt/kpt.h"

namespace kpt_python {

class PYTHON_BYTES : public KPT_BYTES {
 public:
  /// `rewind` is a function that goes back to the first byte, or None.
  PYTHON_BYTES(const pybind11::object& file, pybind11::object rewind)
      : m_read(file.attr("read")), m_rewind(std::move(rewind)) {}

  std::ptrdiff_t read(char* to, std::size_t size) override;
  bool rewind() override;
  /// Throws the exception that reading raised, if any. With Python's lock held.
  void rethrow();

 private:
  pybind11::object m_read;
  pybind11::object m_rewind;
  std::optional<pybind11::error_already_set> m_error;
};

}  // namespace kpt_python

#endif
