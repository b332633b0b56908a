// A new file that replaces its target at the end. Until then it has no
// name, if the file system allows that, so nothing is left however the
// process ends. On other file systems, and at the moment in which it
// replaces a target, it has one of a few temporary names that belong to the
// target.
//
// The new file is locked as long as the object exists. A temporary file without a
// lock was left by a process that was killed. A later save that finds it removes
// it, if it may open the file to check the lock.
//
// Ownership: owns the folder's descriptor and the lock, and removes the new file
// unless `replace_target` succeeded. The caller owns the descriptor that `open`
// returns.
#ifndef KPT_FILE_REPLACEMENT_H
#define KPT_FILE_REPLACEMENT_H

#include <sys/types.h>

#include <optional>
#include <string_view>

#include "db/kpt/kpt_types.h"

class KPT_FILE_REPLACEMENT {
 public:
  explicit KPT_FILE_REPLACEMENT(std::string_view target) : m_target(target) {}
  ~KPT_FILE_REPLACEMENT();
  KPT_FILE_REPLACEMENT(const KPT_FILE_REPLACEMENT&) = delete;
  KPT_FILE_REPLACEMENT& operator=(const KPT_FILE_REPLACEMENT&) = delete;

  /// The new file, or -1.
  int open();
  /// Gives the new file, which is written, synced and closed, the target's name.
  /// False when the target is unchanged.
  bool replace_target();
  /// Whether the new file has the owner and the group of the earlier one; true
  /// when there was none. Only a privileged process can give a file away, and
  /// others can give it to groups of theirs alone.
  bool keeps_owner() const { return m_keeps_owner; }

 private:
  bool follow_link();
  bool open_folder();
  bool may_replace();
  bool take_over_rights(int file);
  int open_nameless();
  int open_named();
  int create(const char* name);
  bool lock(int file);
  bool leads_to(const char* name, int file) const;
  bool has_own_name() const;
  bool take_free_name() const;
  bool rename_over_target();
  int link_locked(const char* name) const;
  KPT_STRING path_of_locked() const;
  template <class MAKE>
  int with_temporary_name(MAKE make);
  bool remove_abandoned(const char* name) const;

  KPT_STRING m_target;
  KPT_STRING m_leaf;
  KPT_STRING m_temporary;  // empty while the new file has no name
  int m_folder = -1;
  int m_lock = -1;
  bool m_keeps_owner = true;
  // Of the file that is replaced.
  struct RIGHTS {
    mode_t mode;
    uid_t owner;
    gid_t group;
  };
  std::optional<RIGHTS> m_earlier;
};

#endif
