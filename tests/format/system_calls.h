// Counts the system calls with which the library writes a file, and lets them fail.
//
// Ownership: only one object at a time watches the process.
#ifndef TESTS_FORMAT_SYSTEM_CALLS_H
#define TESTS_FORMAT_SYSTEM_CALLS_H

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

namespace kpt_test {

/// While it exists, it notes the calls of write, fsync, fchmod, fchown, linkat and
/// renameat in order, and the k-th of them (from 0) fails as requested.
class SYSTEM_CALLS {
 public:
  enum TROUBLE { NONE, FAILURE, NOTHING_WRITTEN, KILL };

  explicit SYSTEM_CALLS(TROUBLE trouble = NONE, unsigned at = 0, int error = EIO);
  ~SYSTEM_CALLS();
  SYSTEM_CALLS(const SYSTEM_CALLS&) = delete;
  SYSTEM_CALLS& operator=(const SYSTEM_CALLS&) = delete;

  const std::vector<std::string>& names() const { return m_names; }

  /// From now on every system call by which files are looked at, opened, read,
  /// locked and closed is noted, and may go wrong, as well.
  void watch_all() { m_watches_all = true; }

  // For the calls themselves.

  /// Whether this call has to fail. For the calls themselves.
  bool breaks(const char* name);
  /// What a write returns that goes wrong: that it failed, or that it wrote no byte.
  long written() const { return m_trouble == NOTHING_WRITTEN ? 0 : -1; }
  /// Whether a call has to fail that is noted with all others only.
  bool breaks_too(const char* name) { return m_watches_all && breaks(name); }

  /// From now on, file systems have no files without a name.
  void refuse_nameless_files() { m_refuses_nameless = true; }
  bool refuses_nameless_files() const { return m_refuses_nameless; }

  struct OTHERS {
    bool own = true;              // the files of another owner
    bool are_its_group = true;    // another group's
    bool may_get_groups = false;  // a file can be given to a group alone
  };
  /// From now on files that are asked for by name are others' files, and no file can be given to an owner.
  void pretend_others(const OTHERS& others) { m_others = others; }
  const std::optional<OTHERS>& others() const { return m_others; }

  /// From now on every file is locked by another process.
  void pretend_all_is_locked() { m_all_is_locked = true; }
  bool all_is_locked() const { return m_all_is_locked; }

 private:
  TROUBLE m_trouble;
  unsigned m_at;
  int m_error;
  bool m_watches_all = false;
  bool m_refuses_nameless = false;
  std::optional<OTHERS> m_others;
  bool m_all_is_locked = false;
  std::vector<std::string> m_names;
};

/// Runs `body` in a process of its own. Returns its result, or minus the signal that ended it.
int in_child(int (*body)(const std::string& argument), const std::string& argument);

}  // namespace kpt_test

#endif
