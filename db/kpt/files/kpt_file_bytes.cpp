#include "db/kpt/files/kpt_file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "h/fio_path.h"

KPT_STRING kpt_path_to_open(std::string_view file_name) {
  KPT_STRING path(file_name);
  if (FIO_PATH::is_unc_path(path.c_str())) {
    FIO_PATH unc(path.c_str());
    unc.change_path_separators_for_windows_api();
    return unc.fullpath();
  }
  return path;
}

KPT_FILE_BYTES::KPT_FILE_BYTES(const KPT_STRING& file_name) {
  if (file_name.find('\0') != KPT_STRING::npos) {
    return;
  }
  do {
    m_descriptor = ::open(file_name.c_str(), O_RDONLY | O_CLOEXEC);
  } while (m_descriptor < 0 && errno == EINTR);
  if (m_descriptor < 0) {
    return;
  }
  struct stat state {};
  if (::fstat(m_descriptor, &state) != 0 || S_ISDIR(state.st_mode)) {
    ::close(m_descriptor);
    m_descriptor = -1;
    return;
  }
  m_is_regular = S_ISREG(state.st_mode);
  m_size = m_is_regular ? static_cast<std::uint64_t>(state.st_size) : 0;
}

KPT_FILE_BYTES::~KPT_FILE_BYTES() {
  if (is_open()) {
    ::close(m_descriptor);
  }
}

std::ptrdiff_t KPT_FILE_BYTES::read(char* to, std::size_t size) {
  ssize_t count = 0;
  do {
    count = ::read(m_descriptor, to, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

bool KPT_FILE_BYTES::rewind() { return m_is_regular && ::lseek(m_descriptor, 0, SEEK_SET) == 0; }

std::ptrdiff_t KPT_MEMORY_BYTES::read(char* to, std::size_t size) {
  const std::size_t count = std::min(size, m_bytes.size() - m_position);
  std::memcpy(to, m_bytes.data() + m_position, count);
  m_position += count;
  return static_cast<std::ptrdiff_t>(count);
}

bool KPT_MEMORY_BYTES::rewind() {
  m_position = 0;
  return true;
}
