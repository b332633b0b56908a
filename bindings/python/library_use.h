// Who is inside the library: one thread at a time.
//
// Python's own lock keeps threads apart while a short call runs. A long call
// gives that lock back, so that other threads of the program go on; whoever
// calls the library meanwhile waits here, and does not hold Python up.
//
// Ownership: none. All of it is called with Python's lock held.
#ifndef KPT_PYTHON_LIBRARY_USE_H
#define KPT_PYTHON_LIBRARY_USE_H

#include <pybind11/pybind11.h>

#include <optional>

namespace kpt_python {

/// Returns once no other thread is inside. The caller is alone until it makes or
/// calls something of Python's: so it first takes out of the library what it
/// needs, and then makes the objects.
void wait_for_library();

/// A long call: for its length other Python threads run. What a call back makes
/// of the library, from the same thread, is let in.
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
