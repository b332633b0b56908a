// How a database becomes a file.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

namespace {

// A part is left out once one before it failed, but the root is always closed.
bool write_database(KPT_KEYPOINTS_DB_IMPL& db, KPT_XML_WRITER& writer) {
  writer.write_db_start_xml(db.get_db_name());
  const bool saved = db.get_reference_set()->save_keypoint_set(KPT_REFERENCE_SET, writer) &&
                     db.get_transformed_set()->save_keypoint_set(KPT_TRANSFORMED_SET, writer) &&
                     db.get_transformation_set()->save_transformation_set(writer);
  writer.end_tag("kpt_db");
  return saved;
}

// The length of the character of XML that the text begins with, in UTF-8; 0
// when it begins with none.
std::size_t character_length(std::string_view text) {
  const auto byte = [&](std::size_t k) { return k < text.size() ? static_cast<unsigned char>(text[k]) : 0U; };
  const unsigned first = byte(0);
  if (first < 0x80) {
    return first >= 0x20 || first == '\t' || first == '\n' || first == '\r' ? 1 : 0;
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  unsigned code = first & (0x7FU >> length);
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(k) & 0xC0U) != 0x80) {
      return 0;
    }
    code = code << 6U | (byte(k) & 0x3FU);
  }
  constexpr std::array<unsigned, 3> LEAST{0x80, 0x800, 0x10000};  // in fewer bytes it is another spelling of one
  const bool is_character = code >= LEAST[length - 2] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) &&
                            code != 0xFFFE && code != 0xFFFF && first >= 0xC0;
  return is_character ? length : 0;
}

// Whether a file can hold the text: XML knows no control characters, and bytes
// that are not UTF-8 are none of its characters.
bool can_be_held(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

void tell_of_texts(const char* file_name, const KPT_STRING& owner) {
  const std::unique_ptr<MSG_E> message(MSG_KPT::E::TEXTS_CANNOT_BE_SAVED(file_name, owner.c_str()));
  message->post();
}

bool register_can_be_held(const KPT_REGISTER_KEYPOINT_IMPL& k) {
  return can_be_held(k.get_element_name()) &&
         (k.register_is_signal() || (can_be_held(k.get_entity_name()) && can_be_held(k.get_register_type())));
}

bool set_can_be_held(const KPT_KEYPOINT_SET_IMPL& set, const char* file_name) {
  bool ok = true;
  set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    ok = register_can_be_held(*k);
    if (!ok) {
      kpt_msg_debug("Error: register %s cannot be saved: a file cannot hold its name, entity or type",
                    k->get_element_name().c_str());
      tell_of_texts(file_name, "register " + k->get_element_name());
    }
    return ok;
  });
  return ok;
}

bool database_can_be_held(KPT_KEYPOINTS_DB_IMPL& db, const char* file_name) {
  const KPT_STRING& name = db.get_db_name();
  if (name.empty() || !can_be_held(name)) {
    kpt_msg_debug("Error: database %s cannot be saved: a file cannot hold its name", name.c_str());
    tell_of_texts(file_name, "database " + name);
    return false;
  }
  return set_can_be_held(*db.get_reference_set(), file_name) && set_can_be_held(*db.get_transformed_set(), file_name);
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

// A file that is written out of sight and takes its target's place at the end.
// Where the file system can hold a file without a name it has none until then,
// so that nothing stays behind however the process ends. Elsewhere, and for the
// moment in which it replaces a target, it has a temporary name, one of a few
// that belong to the target.
//
// The new file is locked as long as the object lives. A file of a temporary
// name that nobody locks was left by a process that was killed: whoever comes
// upon it removes it, if it may be opened to see to the lock.
//
// Ownership: owns the folder's descriptor and the lock, and removes the new
// file unless `replace_target` succeeded. The descriptor that `open` returns is
// the caller's.
class REPLACEMENT {
 public:
  explicit REPLACEMENT(std::string_view target) : m_target(target) {}
  ~REPLACEMENT() {
    if (has_own_name()) {
      ::unlinkat(m_folder, m_temporary.c_str(), 0);
    }
    close(m_lock);
    close(m_folder);
  }
  REPLACEMENT(const REPLACEMENT&) = delete;
  REPLACEMENT& operator=(const REPLACEMENT&) = delete;

  // The new file, or -1.
  int open() {
    if (!follow_link() || !open_folder() || !may_replace()) {
      return -1;
    }
    int file = open_nameless();
    if (file < 0) {
      file = open_named();
    }
    if (file >= 0 && m_earlier_mode.has_value() && ::fchmod(file, *m_earlier_mode) != 0) {
      close(file);
    }
    return file;
  }

  // The new file is written, synced and closed. Once it has its target's name
  // there is no way back, so nothing behind that point is asked whether it went
  // well: a file system that cannot sync the folder keeps the new name or the
  // earlier one when the power fails.
  bool replace_target() {
    if (!take_free_name() && !rename_over_target()) {
      return false;
    }
    retried([&] { return ::fsync(m_folder); });
    return true;
  }

 private:
  static constexpr mode_t NEW_FILE = 0666;
  static constexpr mode_t PERMISSIONS = 0777;
  static constexpr int ATTEMPTS = 100;

  static void close(int& descriptor) {
    if (descriptor >= 0) {
      ::close(descriptor);
      descriptor = -1;
    }
  }

  // Behind a symbolic link it is the file it leads to that is replaced, as a
  // plain save would write it.
  bool follow_link() {
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

  bool open_folder() {
    const std::size_t leaf = m_target.rfind('/') + 1;  // 0 without a folder
    m_leaf = m_target.substr(leaf);
    const KPT_STRING folder = leaf == 0 ? KPT_STRING(".") : m_target.substr(0, leaf);
    m_folder = retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    return m_folder >= 0 && !m_leaf.empty();
  }

  // A device or a folder of that name is not to be lost, and the new file gets
  // the permissions of the earlier one.
  bool may_replace() {
    struct stat state {};
    if (::fstatat(m_folder, m_leaf.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
      return errno == ENOENT;
    }
    m_earlier_mode = state.st_mode & PERMISSIONS;
    return S_ISREG(state.st_mode);
  }

  // The lock is also the descriptor by which the closed file is found again.
  int open_nameless() {
    int file = retried([&] { return ::openat(m_folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, NEW_FILE); });
    if (file >= 0 && (!lock(file) || ::access(path_of_locked().c_str(), F_OK) != 0)) {
      close(m_lock);
      close(file);
    }
    return file;
  }

  int open_named() {
    return with_temporary_name([&](const char* name) { return create(name); });
  }

  // Before it is locked the new file may be taken for an abandoned one: then
  // its name counts as in use.
  int create(const char* name) {
    int file = retried([&] { return ::openat(m_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE); });
    if (file >= 0 && !(lock(file) && leads_to(name, m_lock))) {
      close(m_lock);
      close(file);
      errno = EEXIST;
    }
    return file;
  }

  // Where a file system knows no locks, none is found unlocked either.
  bool lock(int file) {
    m_lock = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
    return m_lock >= 0 && (::flock(m_lock, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK);
  }

  bool leads_to(const char* name, int file) const {
    struct stat named {};
    struct stat opened {};
    return ::fstatat(m_folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(file, &opened) == 0 &&
           S_ISREG(named.st_mode) && named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
  }

  bool has_own_name() const { return !m_temporary.empty() && leads_to(m_temporary.c_str(), m_lock); }

  // Where there is nothing to replace, a file without a name needs no other than its last.
  bool take_free_name() const {
    return m_temporary.empty() && !m_earlier_mode.has_value() && link_locked(m_leaf.c_str()) == 0;
  }

  bool rename_over_target() {
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

  int link_locked(const char* name) const {
    return ::linkat(AT_FDCWD, path_of_locked().c_str(), m_folder, name, AT_SYMLINK_FOLLOW);
  }

  KPT_STRING path_of_locked() const { return "/proc/self/fd/" + gen_itoa(m_lock, 10); }

  // Calls `make` with the target's temporary names until one is free. They are
  // made of a number that stands for the target, whose name may leave no room
  // for more. A negative result is a failure.
  template <class MAKE>
  int with_temporary_name(MAKE make) {
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

  // Who holds the lock is the only one who may remove the name or pass it on.
  bool remove_abandoned(const char* name) const {
    int file = ::openat(m_folder, name, O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    const bool removed = file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) == 0 && leads_to(name, file) &&
                         ::unlinkat(m_folder, name, 0) == 0;
    close(file);
    return removed;
  }

  KPT_STRING m_target;
  KPT_STRING m_leaf;
  KPT_STRING m_temporary;  // empty while the new file has no name
  int m_folder = -1;
  int m_lock = -1;
  std::optional<mode_t> m_earlier_mode;
};

bool replace_file(KPT_KEYPOINTS_DB_IMPL& db, const KPT_STRING& file_name) {
  REPLACEMENT file(file_name);
  KPT_XML_WRITER writer(file_name);
  writer.escape_texts();
  bool saved = writer.start_file_on(file.open()) && write_database(db, writer);
  saved = writer.finish_file() && saved && file.replace_target();
  if (!saved) {
    kpt_msg_debug("Error: cannot write %s", file_name.c_str());
  }
  return saved;
}

}  // namespace

bool KPT_KEYPOINTS_DB_IMPL::save(std::string_view file_name) {
  try {
    KPT_XML_WRITER writer(file_name);
    return writer.start_file() && write_database(*this, writer);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}

bool KPT_KEYPOINTS_DB_IMPL::save_atomically(std::string_view file_name) {
  try {
    const KPT_STRING name(file_name);
    return database_can_be_held(*this, name.c_str()) && replace_file(*this, name);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
    return false;
  }
}
