// Lets one thread at a time into the library.
//
// Python's own lock separates threads during a short call. A long call releases
// that lock, so that other threads of the program can run. A thread that calls
// the library meanwhile waits here, and does not block Python.
//
// Ownership: none. Every function is called with Python's lock held.
#ifndef KPT_PYTHON_LIBRARY_USE_H
#define KPT_PYTHON_LIBRARY_USE_H

#include <pybind11/pybind11.h>

#include <optional>

namespace kpt_python {

/// Returns when no other thread is inside. The caller is alone until it makes or
/// calls a Python object. So it first reads from the library what it needs, and
/// then makes the objects.
void wait_for_library();

/// A long call, during which other Python threads run. Calls of the library from
/// a callback on the same thread are let in.
class LONG_CALL {
 public:
  LONG_CALL();
  ~LONG_CALL();
  LONG_CALL(const LONG_CALL&) = delete;
  LONG_CALL& operator=(const LONG_CALL&) = delete;

 private:
  std::optional<pybind11::gil_scoped_release> m_released;
};

}  // namespace kpt_python

#endif
