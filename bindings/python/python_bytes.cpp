#include "python_bytes.h"

#include <algorithm>
#include <cstring>

namespace kpt_python {

namespace py = pybind11;

namespace {

// A file is read in pieces of this size, whatever size the library asks for.
constexpr std::size_t MOST = std::size_t{1} << 20U;

std::ptrdiff_t copy_bytes(const py::object& bytes, char* to, std::size_t size) {
  if (!PyBytes_Check(bytes.ptr())) {
    throw py::type_error("the file was opened in text mode: read() gave a " +
                         std::string(Py_TYPE(bytes.ptr())->tp_name));
  }
  const auto length = static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()));
  if (length > size) {
    throw py::value_error("read() gave more bytes than it was asked for");
  }
  std::memcpy(to, PyBytes_AS_STRING(bytes.ptr()), length);
  return static_cast<std::ptrdiff_t>(length);
}

// A Python exception, in whatever way it comes.
template <class ACTION>
bool keeps_error(std::optional<py::error_already_set>& error, ACTION action) {
  try {
    action();
    return false;
  } catch (py::error_already_set& raised) {
    error.emplace(raised);
  } catch (const py::builtin_exception& raised) {
    raised.set_error();
    error.emplace();
  }
  return true;
}

}  // namespace

std::ptrdiff_t PYTHON_BYTES::read(char* to, std::size_t size) {
  const py::gil_scoped_acquire acquired;
  std::ptrdiff_t length = 0;
  const bool failed = m_error || keeps_error(m_error, [&] {
                        const std::size_t wanted = std::min(size, MOST);
                        length = copy_bytes(m_read(wanted), to, wanted);
                      });
  return failed ? -1 : length;
}

bool PYTHON_BYTES::rewind() {
  const py::gil_scoped_acquire acquired;
  return !m_rewind.is_none() && !m_error && !keeps_error(m_error, [&] { m_rewind(); });
}

void PYTHON_BYTES::rethrow() {
  if (m_error) {
    throw py::error_already_set(*std::exchange(m_error, std::nullopt));
  }
}

}  // namespace kpt_python
