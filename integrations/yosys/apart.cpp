#include "apart.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "kernel/yosys.h"

namespace kpt_yosys {

namespace {

bool send_all(int to, const void* bytes, std::size_t count) {
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t sent = write(to, at, count);
    if (sent <= 0) {
      return false;
    }
    at += sent;
    count -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool receive_all(int from, void* bytes, std::size_t count) {
  char* at = static_cast<char*>(bytes);
  while (count > 0) {
    const ssize_t received = read(from, at, count);
    if (received <= 0) {
      return false;
    }
    at += received;
    count -= static_cast<std::size_t>(received);
  }
  return true;
}

// No exception leaves the process.
bool worked_into(int to, const std::function<std::vector<int>()>& work) {
  try {
    const std::vector<int> result = work();
    const std::size_t count = result.size();
    return send_all(to, &count, sizeof count) && send_all(to, result.data(), count * sizeof(int));
  } catch (...) {
    return false;
  }
}

bool receive(int from, std::vector<int>& result) {
  std::size_t count = 0;
  if (!receive_all(from, &count, sizeof count)) {
    return false;
  }
  result.resize(count);
  return receive_all(from, result.data(), count * sizeof(int));
}

}  // namespace

std::vector<int> done_apart(const char* what, const std::function<std::vector<int>()>& work) {
  std::fflush(nullptr);  // so that buffered output is not printed twice
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) {
    throw std::runtime_error(std::string(what) + " needs a pipe, which the system refuses");
  }
  const pid_t child = fork();
  if (child == 0) {
    Yosys::log_files.clear();
    Yosys::log_streams.clear();
    Yosys::log_errfile = nullptr;
    close(ends[0]);
    _exit(worked_into(ends[1], work) ? 0 : 1);
  }
  close(ends[1]);
  std::vector<int> result;
  const bool received = child > 0 && receive(ends[0], result);
  close(ends[0]);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0 || !received) {
    throw std::runtime_error(std::string(what) + " could not be carried out");
  }
  return result;
}

}  // namespace kpt_yosys
