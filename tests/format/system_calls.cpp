#include "tests/format/system_calls.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

namespace {

kpt_test::SYSTEM_CALLS* s_watcher = nullptr;

bool breaks(const char* name) { return s_watcher != nullptr && s_watcher->breaks(name); }

}  // namespace

namespace kpt_test {

SYSTEM_CALLS::SYSTEM_CALLS(TROUBLE trouble, unsigned at) : m_trouble(trouble), m_at(at) { s_watcher = this; }

SYSTEM_CALLS::~SYSTEM_CALLS() { s_watcher = nullptr; }

bool SYSTEM_CALLS::breaks(const char* name) {
  m_names.emplace_back(name);
  if (m_trouble == NONE || m_names.size() != m_at + 1) {
    return false;
  }
  if (m_trouble == KILL) {
    ::kill(::getpid(), SIGKILL);
  }
  errno = EIO;
  return true;
}

int in_child(int (*body)(const std::string& argument), const std::string& argument) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(body(argument));
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace kpt_test

#define KPT_BEFORE_THE_C_LIBRARY __attribute__((visibility("default")))

// These functions precede those of the C library in the program, also for the
// library under test.
extern "C" {

KPT_BEFORE_THE_C_LIBRARY ssize_t write(int descriptor, const void* from, size_t size) {
  return breaks("write") ? -1 : ::syscall(SYS_write, descriptor, from, size);
}

KPT_BEFORE_THE_C_LIBRARY int fsync(int descriptor) {
  return breaks("fsync") ? -1 : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

KPT_BEFORE_THE_C_LIBRARY int fchmod(int descriptor, mode_t mode) noexcept {
  return breaks("fchmod") ? -1 : static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}

KPT_BEFORE_THE_C_LIBRARY int linkat(int from_folder, const char* from, int to_folder, const char* to,
                                    int flags) noexcept {
  return breaks("linkat") ? -1 : static_cast<int>(::syscall(SYS_linkat, from_folder, from, to_folder, to, flags));
}

KPT_BEFORE_THE_C_LIBRARY int renameat(int from_folder, const char* from, int to_folder, const char* to) noexcept {
  return breaks("renameat") ? -1 : static_cast<int>(::syscall(SYS_renameat, from_folder, from, to_folder, to));
}

KPT_BEFORE_THE_C_LIBRARY int openat(int folder, const char* path, int flags, ...) {
  if ((flags & O_TMPFILE) == O_TMPFILE && s_watcher != nullptr && s_watcher->refuses_nameless_files()) {
    errno = EOPNOTSUPP;
    return -1;
  }
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

}  // extern "C"
