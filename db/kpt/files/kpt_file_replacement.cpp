#include "db/kpt/files/kpt_file_replacement.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>

#include "h/gen_sys.h"

namespace {

constexpr mode_t NEW_FILE = 0666;
constexpr mode_t PERMISSIONS = 0777;
constexpr int ATTEMPTS = 100;

void close_and_forget(int& descriptor) {
  if (descriptor >= 0) {
    ::close(descriptor);
    descriptor = -1;
  }
}

KPT_STRING decimal(std::size_t number) {
  std::array<char, 20> digits;
  return {digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr};
}

template <class CALL>
auto retried(CALL call) {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

}  // namespace

KPT_FILE_REPLACEMENT::~KPT_FILE_REPLACEMENT() {
  if (has_own_name()) {
    ::unlinkat(m_folder, m_temporary.c_str(), 0);
  }
  close_and_forget(m_lock);
  close_and_forget(m_folder);
}

int KPT_FILE_REPLACEMENT::open() {
  if (!follow_link() || !open_folder() || !may_replace()) {
    return -1;
  }
  int file = open_nameless();
  if (file < 0) {
    file = open_named();
  }
  if (file >= 0 && m_earlier.has_value() && !take_over_rights(file)) {
    close_and_forget(file);
  }
  return file;
}

// When the new file has the target's name, nothing can be undone, so no later
// failure is reported. If the folder cannot be synced, the target is the new or
// the earlier file after a power failure.
bool KPT_FILE_REPLACEMENT::replace_target() {
  if (!take_free_name() && !rename_over_target()) {
    return false;
  }
  retried([&] { return ::fsync(m_folder); });
  return true;
}

// For a symbolic link, the file that it names is replaced, because a plain save
// also writes there.
bool KPT_FILE_REPLACEMENT::follow_link() {
  if (m_target.find('\0') != KPT_STRING::npos) {
    return false;
  }
  struct stat state {};
  if (::lstat(m_target.c_str(), &state) != 0 || !S_ISLNK(state.st_mode)) {
    return true;
  }
  const std::unique_ptr<char, decltype(&std::free)> path(::realpath(m_target.c_str(), nullptr), std::free);
  if (path == nullptr) {
    return false;
  }
  m_target = path.get();
  return true;
}

bool KPT_FILE_REPLACEMENT::open_folder() {
  const std::size_t leaf = m_target.rfind('/') + 1;  // 0 without a folder
  m_leaf = m_target.substr(leaf);
  const KPT_STRING folder = leaf == 0 ? KPT_STRING(".") : m_target.substr(0, leaf);
  m_folder = retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  return m_folder >= 0 && !m_leaf.empty();
}

// A device or a folder of that name is not to be lost, and neither is a file
// that the process may not write, which a rename does not ask for.
bool KPT_FILE_REPLACEMENT::may_replace() {
  struct stat state {};
  if (::fstatat(m_folder, m_leaf.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT;
  }
  m_earlier = {state.st_mode & PERMISSIONS, state.st_uid, state.st_gid};
  return S_ISREG(state.st_mode) && ::faccessat(m_folder, m_leaf.c_str(), W_OK, AT_EACCESS) == 0;
}

// Where the group is another one, it gets no more than all others have: its
// permissions were meant for the members of the earlier one.
bool KPT_FILE_REPLACEMENT::take_over_rights(int file) {
  constexpr uid_t SAME_OWNER = static_cast<uid_t>(-1);
  constexpr unsigned GROUP_SHIFT = 3;
  struct stat state {};
  if (::fstat(file, &state) != 0) {
    return false;
  }
  bool keeps_group = state.st_gid == m_earlier->group;
  m_keeps_owner = state.st_uid == m_earlier->owner && keeps_group;
  if (!m_keeps_owner) {
    m_keeps_owner = ::fchown(file, m_earlier->owner, m_earlier->group) == 0;
    keeps_group = keeps_group || m_keeps_owner || ::fchown(file, SAME_OWNER, m_earlier->group) == 0;
    m_keeps_owner = m_keeps_owner || (keeps_group && state.st_uid == m_earlier->owner);
  }
  const mode_t mode = m_earlier->mode;
  const mode_t group = mode & S_IRWXG & (keeps_group ? S_IRWXG : (mode & S_IRWXO) << GROUP_SHIFT);
  return ::fchmod(file, (mode & ~static_cast<mode_t>(S_IRWXG)) | group) == 0;
}

// The descriptor of the lock is also used to find the closed file again.
int KPT_FILE_REPLACEMENT::open_nameless() {
  int file = retried([&] { return ::openat(m_folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, NEW_FILE); });
  if (file >= 0 && (!lock(file) || ::access(path_of_locked().c_str(), F_OK) != 0)) {
    close_and_forget(m_lock);
    close_and_forget(file);
  }
  return file;
}

// Calls `make` with the target's temporary names until one is free. A name is
// made from a number and not from the target's name, which may be too long to be
// extended. A negative result is a failure.
template <class MAKE>
int KPT_FILE_REPLACEMENT::with_temporary_name(MAKE make) {
  const KPT_STRING stem = ".kpt-" + decimal(kpt_hash_bytes(0, m_leaf)) + "-";
  for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
    const KPT_STRING name = stem + gen_itoa(attempt, 10);
    int result = make(name.c_str());
    bool in_use = result < 0 && errno == EEXIST;
    if (in_use && remove_abandoned(name.c_str())) {
      result = make(name.c_str());
      in_use = result < 0 && errno == EEXIST;
    }
    if (result >= 0) {
      m_temporary = name;
    }
    if (!in_use) {
      return result;
    }
  }
  return -1;
}

int KPT_FILE_REPLACEMENT::open_named() {
  return with_temporary_name([&](const char* name) { return create(name); });
}

// Before the new file is locked, another process may take it for an abandoned
// one. Then its name counts as in use.
int KPT_FILE_REPLACEMENT::create(const char* name) {
  int file = retried([&] { return ::openat(m_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE); });
  if (file >= 0 && !(lock(file) && leads_to(name, m_lock))) {
    close_and_forget(m_lock);
    close_and_forget(file);
    errno = EEXIST;
  }
  return file;
}

// On a file system without locks, no file is found unlocked.
bool KPT_FILE_REPLACEMENT::lock(int file) {
  m_lock = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
  return m_lock >= 0 && (::flock(m_lock, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK);
}

bool KPT_FILE_REPLACEMENT::leads_to(const char* name, int file) const {
  struct stat named {};
  struct stat opened {};
  return ::fstatat(m_folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(file, &opened) == 0 &&
         S_ISREG(named.st_mode) && named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
}

bool KPT_FILE_REPLACEMENT::has_own_name() const {
  return !m_temporary.empty() && leads_to(m_temporary.c_str(), m_lock);
}

// When there is nothing to replace, a file without a name gets its final name at once.
bool KPT_FILE_REPLACEMENT::take_free_name() const {
  return m_temporary.empty() && !m_earlier.has_value() && link_locked(m_leaf.c_str()) == 0;
}

bool KPT_FILE_REPLACEMENT::rename_over_target() {
  const auto link = [&](const char* name) { return link_locked(name); };
  if (m_temporary.empty() && with_temporary_name(link) != 0) {
    return false;
  }
  if (!has_own_name() || ::renameat(m_folder, m_temporary.c_str(), m_folder, m_leaf.c_str()) != 0) {
    return false;
  }
  m_temporary.clear();
  return true;
}

int KPT_FILE_REPLACEMENT::link_locked(const char* name) const {
  return ::linkat(AT_FDCWD, path_of_locked().c_str(), m_folder, name, AT_SYMLINK_FOLLOW);
}

KPT_STRING KPT_FILE_REPLACEMENT::path_of_locked() const { return "/proc/self/fd/" + gen_itoa(m_lock, 10); }

// Only the holder of the lock may remove the name or use it for another file.
bool KPT_FILE_REPLACEMENT::remove_abandoned(const char* name) const {
  int file = ::openat(m_folder, name, O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  const bool removed =
      file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0 && leads_to(name, file) && ::unlinkat(m_folder, name, 0) == 0;
  close_and_forget(file);
  return removed;
}
