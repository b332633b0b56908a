// A function that the C library checks is defined in its header, so it could not be defined here.
#undef _FORTIFY_SOURCE

#include "tests/format/system_calls.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

namespace {

kpt_test::SYSTEM_CALLS* s_watcher = nullptr;

bool breaks(const char* name) { return s_watcher != nullptr && s_watcher->breaks(name); }

bool breaks_too(const char* name) { return s_watcher != nullptr && s_watcher->breaks_too(name); }

}  // namespace

namespace kpt_test {

SYSTEM_CALLS::SYSTEM_CALLS(TROUBLE trouble, unsigned at, int error) : m_trouble(trouble), m_at(at), m_error(error) {
  s_watcher = this;
}

SYSTEM_CALLS::~SYSTEM_CALLS() { s_watcher = nullptr; }

bool SYSTEM_CALLS::breaks(const char* name) {
  m_names.emplace_back(name);
  if (m_trouble == NONE || m_names.size() != m_at + 1) {
    return false;
  }
  if (m_trouble == KILL) {
    ::kill(::getpid(), SIGKILL);
  }
  errno = m_error;
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
  return breaks("write") ? s_watcher->written() : ::syscall(SYS_write, descriptor, from, size);
}

KPT_BEFORE_THE_C_LIBRARY ssize_t read(int descriptor, void* to, size_t size) {
  return breaks_too("read") ? -1 : ::syscall(SYS_read, descriptor, to, size);
}

KPT_BEFORE_THE_C_LIBRARY off_t lseek(int descriptor, off_t offset, int from) noexcept {
  return breaks_too("lseek") ? -1 : ::syscall(SYS_lseek, descriptor, offset, from);
}

KPT_BEFORE_THE_C_LIBRARY int fsync(int descriptor) {
  return breaks("fsync") ? -1 : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

KPT_BEFORE_THE_C_LIBRARY int fchmod(int descriptor, mode_t mode) noexcept {
  return breaks("fchmod") ? -1 : static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}

KPT_BEFORE_THE_C_LIBRARY int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
  if (s_watcher != nullptr && s_watcher->others().has_value()) {
    breaks("fchown");
    errno = EPERM;
    return owner == static_cast<uid_t>(-1) && s_watcher->others()->may_get_groups ? 0 : -1;
  }
  return breaks("fchown") ? -1 : static_cast<int>(::syscall(SYS_fchown, descriptor, owner, group));
}

KPT_BEFORE_THE_C_LIBRARY int fstatat(int folder, const char* path, struct stat* state, int flags) noexcept {
  if (breaks_too("fstatat")) {
    return -1;
  }
  const int result = static_cast<int>(::syscall(SYS_newfstatat, folder, path, state, flags));
  if (result == 0 && s_watcher != nullptr && s_watcher->others().has_value()) {
    state->st_uid += s_watcher->others()->own ? 1U : 0U;
    state->st_gid += s_watcher->others()->are_its_group ? 1U : 0U;
  }
  return result;
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
  return breaks_too("openat") ? -1 : static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

KPT_BEFORE_THE_C_LIBRARY int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return breaks_too("open") ? -1 : static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

KPT_BEFORE_THE_C_LIBRARY int fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  return breaks_too("fcntl") ? -1 : static_cast<int>(::syscall(SYS_fcntl, descriptor, command, argument));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"  // of the structure of that name
KPT_BEFORE_THE_C_LIBRARY int flock(int descriptor, int operation) noexcept {
  if (s_watcher != nullptr && s_watcher->all_is_locked()) {
    errno = EWOULDBLOCK;
    return -1;
  }
  return breaks_too("flock") ? -1 : static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
#pragma GCC diagnostic pop

KPT_BEFORE_THE_C_LIBRARY int access(const char* path, int mode) noexcept {
  return breaks_too("access") ? -1 : static_cast<int>(::syscall(SYS_faccessat, AT_FDCWD, path, mode));
}

// The process has one user only, so it does not matter whose permission is asked for.
KPT_BEFORE_THE_C_LIBRARY int faccessat(int folder, const char* path, int mode, int /*flags*/) noexcept {
  return breaks_too("faccessat") ? -1 : static_cast<int>(::syscall(SYS_faccessat, folder, path, mode));
}

KPT_BEFORE_THE_C_LIBRARY int fstat(int descriptor, struct stat* state) noexcept {
  return breaks_too("fstat") ? -1 : static_cast<int>(::syscall(SYS_fstat, descriptor, state));
}

KPT_BEFORE_THE_C_LIBRARY int unlinkat(int folder, const char* path, int flags) noexcept {
  return breaks_too("unlinkat") ? -1 : static_cast<int>(::syscall(SYS_unlinkat, folder, path, flags));
}

// The descriptor is free then, too, whatever is answered.
KPT_BEFORE_THE_C_LIBRARY int close(int descriptor) {
  const bool is_broken = breaks_too("close");
  const int error = errno;
  const int result = static_cast<int>(::syscall(SYS_close, descriptor));
  errno = is_broken ? error : errno;
  return is_broken ? -1 : result;
}

}  // extern "C"
