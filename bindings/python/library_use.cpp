#include "library_use.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace kpt_python {

namespace {

namespace py = pybind11;

// The long call that is running. It is changed with both locks held, so either lock is enough to read it.
struct {
  unsigned depth = 0;  // of calls back into the library
  std::thread::id owner;
} running;
std::mutex waiting;
std::condition_variable ended;

bool another_is_inside() { return running.depth != 0 && running.owner != std::this_thread::get_id(); }

}  // namespace

void wait_for_library() {
  while (another_is_inside()) {
    const py::gil_scoped_release released;
    std::unique_lock<std::mutex> lock(waiting);
    ended.wait(lock, [] { return !another_is_inside(); });
  }
}

LONG_CALL::LONG_CALL() {
  wait_for_library();
  {
    const std::lock_guard<std::mutex> lock(waiting);
    ++running.depth;
    running.owner = std::this_thread::get_id();
  }
  m_released.emplace();
}

LONG_CALL::~LONG_CALL() {
  m_released.reset();
  {
    const std::lock_guard<std::mutex> lock(waiting);
    --running.depth;
  }
  ended.notify_all();
}

}  // namespace kpt_python
