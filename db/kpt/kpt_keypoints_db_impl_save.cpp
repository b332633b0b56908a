// How a database becomes a file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/msg_kpt.h"

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

// Whether the text comes back from a file as it is: nothing is escaped, and
// the parser's narrow characters are only sure to hold ASCII.
bool reads_back(std::string_view text) {
  const auto plain = [](char c) { return c >= 0x20 && c <= 0x7E && c != '<' && c != '&' && c != '"'; };
  return std::all_of(text.begin(), text.end(), plain) && text.find("]]>") == std::string_view::npos;
}

bool register_reads_back(const KPT_REGISTER_KEYPOINT_IMPL& k) {
  const bool ok = reads_back(k.get_element_name()) &&
                  (k.register_is_signal() || (reads_back(k.get_entity_name()) && reads_back(k.get_register_type())));
  if (!ok) {
    kpt_msg_debug("Error: register %s cannot be saved: a file cannot hold its name, entity or type",
                  k.get_element_name().c_str());
  }
  return ok;
}

bool set_reads_back(const KPT_KEYPOINT_SET_IMPL& set) {
  bool ok = true;
  set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) { return ok = register_reads_back(*k); });
  return ok;
}

bool database_reads_back(KPT_KEYPOINTS_DB_IMPL& db) {
  const KPT_STRING& name = db.get_db_name();
  if (name.empty() || !reads_back(name)) {
    kpt_msg_debug("Error: database %s cannot be saved: a file cannot hold its name", name.c_str());
    return false;
  }
  return set_reads_back(*db.get_reference_set()) && set_reads_back(*db.get_transformed_set());
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
// so that nothing stays behind however the process ends.
//
// Ownership: owns the folder's descriptor and removes the new file unless
// `replace_target` succeeded. The descriptor that `open` returns is the caller's.
class REPLACEMENT {
 public:
  explicit REPLACEMENT(std::string_view target) : m_target(target) {}
  ~REPLACEMENT() {
    if (!m_temporary.empty()) {
      ::unlinkat(m_folder, m_temporary.c_str(), 0);
    }
    close(m_nameless);
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

  // The new file is written, synced and closed.
  bool replace_target() {
    if (m_nameless >= 0 && !give_name()) {
      return false;
    }
    if (::renameat(m_folder, m_temporary.c_str(), m_folder, m_leaf.c_str()) != 0) {
      return false;
    }
    m_temporary.clear();
    // Some file systems cannot sync a folder and say so.
    return retried([&] { return ::fsync(m_folder); }) == 0 || errno == EINVAL;
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
    if (m_target.find('\0') != std::string::npos) {
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
    const std::string folder = leaf == 0 ? "." : m_target.substr(0, leaf);
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

  // The second descriptor is by what the closed file is found again.
  int open_nameless() {
    int file = retried([&] { return ::openat(m_folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, NEW_FILE); });
    if (file < 0) {
      return -1;
    }
    m_nameless = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
    if (m_nameless < 0 || ::access(path_of_nameless().c_str(), F_OK) != 0) {
      close(m_nameless);
      close(file);
    }
    return file;
  }

  int open_named() {
    return with_new_name([&](const char* name) {
      return retried([&] { return ::openat(m_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, NEW_FILE); });
    });
  }

  bool give_name() {
    return with_new_name([&](const char* name) {
             return ::linkat(AT_FDCWD, path_of_nameless().c_str(), m_folder, name, AT_SYMLINK_FOLLOW);
           }) >= 0;
  }

  std::string path_of_nameless() const { return "/proc/self/fd/" + std::to_string(m_nameless); }

  // Calls `create` with names that no file of the folder should have, until one
  // is free. A negative result is a failure.
  template <class CREATE>
  int with_new_name(CREATE create) {
    static unsigned s_count = 0;
    int result = -1;
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
      const std::string name = ".kpt-" + std::to_string(::getpid()) + "-" + std::to_string(++s_count);
      result = create(name.c_str());
      if (result >= 0) {
        m_temporary = name;
      }
      if (result >= 0 || errno != EEXIST) {
        break;
      }
    }
    return result;
  }

  std::string m_target;
  std::string m_leaf;
  std::string m_temporary;  // empty while the new file has no name
  int m_folder = -1;
  int m_nameless = -1;
  std::optional<mode_t> m_earlier_mode;
};

}  // namespace

bool KPT_KEYPOINTS_DB_IMPL::save(std::string_view file_name) {
  KPT_XML_WRITER writer(file_name);
  return writer.start_file() && write_database(*this, writer);
}

bool KPT_KEYPOINTS_DB_IMPL::save_atomically(std::string_view file_name) {
  if (!database_reads_back(*this)) {
    return false;
  }
  REPLACEMENT file(file_name);
  KPT_XML_WRITER writer(file_name);
  bool saved = writer.start_file_on(file.open()) && write_database(*this, writer);
  saved = writer.finish_file() && saved && file.replace_target();
  if (!saved) {
    kpt_msg_debug("Error: cannot write %s", KPT_STRING(file_name).c_str());
  }
  return saved;
}
