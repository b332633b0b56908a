#include "input.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "open_to_read.h"
#include "outcome.h"

namespace kptdb {

namespace {

constexpr unsigned READ_BLOCK = 1U << 18;
constexpr std::size_t BEGINNING = 64;

// Whether the file begins like a gzip file. False for a file that cannot be sought.
bool is_packed(int descriptor) {
  unsigned char magic[2] = {};
  return ::pread(descriptor, magic, sizeof magic, ::lseek(descriptor, 0, SEEK_CUR)) == sizeof magic &&
         magic[0] == 0x1F && magic[1] == 0x8B;
}

}  // namespace

bool is_packed_name(std::string_view path) { return path.ends_with(".gz"); }

INPUT::INPUT(const std::string& path) : m_shown(path == "-" ? "standard input" : path), m_file(nullptr, gzclose_r) {
  const int descriptor = open_to_read(path);
  if (descriptor < 0) {
    fail(std::strerror(errno));
  }
  struct stat state {};
  const bool is_known = ::fstat(descriptor, &state) == 0;
  const bool is_regular = is_known && S_ISREG(state.st_mode);
  if (is_known && (S_ISDIR(state.st_mode) || S_ISBLK(state.st_mode) || (S_ISCHR(state.st_mode) && path != "-"))) {
    ::close(descriptor);
    fail(S_ISDIR(state.st_mode) ? "a directory" : "not a regular file");
  }
  m_size = is_regular ? static_cast<std::uint64_t>(state.st_size) : 0;
  m_is_plain_file = is_regular && !is_packed(descriptor);
  m_file.reset(gzdopen(descriptor, "rb"));
  if (m_file == nullptr) {
    ::close(descriptor);
    fail("no memory to read it");
  }
  gzbuffer(m_file.get(), READ_BLOCK);
}

std::ptrdiff_t INPUT::read(char* to, std::size_t size) {
  if (!m_problem.empty()) {
    return -1;
  }
  errno = 0;
  const int got = gzread(m_file.get(), to, static_cast<unsigned>(std::min<std::size_t>(size, 1U << 30)));
  int code = Z_OK;
  const char* reason = gzerror(m_file.get(), &code);
  if (got < 0 || (code != Z_OK && code != Z_STREAM_END)) {
    m_problem = code == Z_ERRNO ? std::strerror(errno) : code == Z_BUF_ERROR ? "it ends within packed data" : reason;
    return -1;
  }
  note_beginning(to, static_cast<std::size_t>(got));
  m_bytes += static_cast<std::uint64_t>(got);
  if (m_progress) {
    m_progress->at(m_before + position());
  }
  return got;
}

bool INPUT::rewind() {
  const std::uint64_t passed = m_bytes == 0 ? 0 : position();
  if (!m_problem.empty() || gzrewind(m_file.get()) != 0) {
    return false;
  }
  m_before += passed;
  m_bytes = 0;
  return true;
}

void INPUT::show_progress(const std::string& what, unsigned passes) {
  m_before = 0;
  m_progress.emplace(what, m_size * passes);
}

std::uint64_t INPUT::position() const {
  const z_off_t offset = m_is_plain_file ? static_cast<z_off_t>(m_bytes) : gzoffset(m_file.get());
  return offset < 0 ? m_bytes : static_cast<std::uint64_t>(offset);
}

void INPUT::note_beginning(const char* bytes, std::size_t size) {
  if (m_bytes < BEGINNING) {
    m_beginning.resize(std::min<std::size_t>(m_beginning.size(), m_bytes));
    m_beginning.append(bytes, std::min(size, BEGINNING - m_beginning.size()));
  }
}

bool INPUT::begins_like_events() const {
  const std::size_t first = m_beginning.find_first_not_of(" \t\r\n");
  return first != std::string::npos && m_beginning[first] == '{';
}

void INPUT::fail(const std::string& reason) const { throw FAILURE(EXIT_UNREADABLE, m_shown + ": " + reason); }

}  // namespace kptdb
