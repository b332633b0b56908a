#include "files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include "outcome.h"

namespace kptdb {

namespace {

constexpr std::size_t LONGEST_LINE = std::size_t{16} << 20;

constexpr std::size_t BLOCK = std::size_t{1} << 18;

bool s_has_used_standard_output = false;

bool is_standard_output(const std::string& path) { return path.empty() || path == "-"; }

}  // namespace

std::uint64_t file_size(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? static_cast<std::uint64_t>(state.st_size) : 0;
}

LINE_READER::LINE_READER(const std::string& path) : m_path(path), m_input(path), m_block(BLOCK) {}

bool LINE_READER::fill() {
  const std::ptrdiff_t count = m_input.read(m_block.data(), m_block.size());
  if (count < 0) {
    throw FAILURE(EXIT_UNREADABLE, fmt::format("{}: {}", m_input.shown(), m_input.problem()));
  }
  m_at = 0;
  m_end = static_cast<std::size_t>(count);
  return count > 0;
}

bool LINE_READER::next(std::string& line) {
  line.clear();
  bool has_ended = false;
  while (!has_ended && (m_at < m_end || fill())) {
    const char* const begin = m_block.data() + m_at;
    const char* const end = m_block.data() + m_end;
    const char* const stop = std::find(begin, end, '\n');
    if (line.size() + static_cast<std::size_t>(stop - begin) > LONGEST_LINE) {
      throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:{}: the line is too long for an event", m_path, m_line + 1));
    }
    line.append(begin, stop);
    has_ended = stop != end;
    m_at += static_cast<std::size_t>(stop - begin) + (has_ended ? 1U : 0U);
  }
  if (!has_ended && line.empty()) {
    return false;
  }
  ++m_line;
  return true;
}

RESULT_FILE::RESULT_FILE(const std::string& path) {
  if (is_standard_output(path)) {
    m_file = stdout;
    return;
  }
  m_path = path;
  open_temporary();
}

RESULT_FILE RESULT_FILE::beside(const std::string& output) { return RESULT_FILE(output == "-" ? stderr : stdout); }

bool RESULT_FILE::has_used_standard_output() { return s_has_used_standard_output; }

// The library replaces database files under stricter rules: the bytes are on the disk before it returns, and the
// rights of the group are kept. Its class is private, as is all of the library that clients do not need, and a
// result that a command can write again needs less.
void RESULT_FILE::open_temporary() {
  struct stat state {};
  const bool exists = ::stat(m_path.c_str(), &state) == 0;
  if (exists && !S_ISREG(state.st_mode)) {
    throw FAILURE(EXIT_FOUND, m_path + ": not written: it is not a regular file");
  }
  const bool is_packed = is_packed_name(m_path);
  // For a symbolic link, the file that it names is replaced.
  const std::unique_ptr<char, void (*)(void*)> real(exists ? ::realpath(m_path.c_str(), nullptr) : nullptr, std::free);
  m_path = real == nullptr ? m_path : real.get();
  m_temporary = m_path + ".XXXXXX";
  const int descriptor = ::mkstemp(m_temporary.data());
  if (descriptor < 0) {
    m_temporary.clear();
    fail();
  }
  // Only the owner may read a file of mkstemp.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  const mode_t mode = exists ? state.st_mode & 0777U : 0666U & ~mask;
  if (::fchmod(descriptor, mode) == 0) {
    is_packed ? pack(descriptor) : void(m_file = ::fdopen(descriptor, "wb"));
  }
  if (m_file == nullptr && m_packed == nullptr) {
    ::close(descriptor);
    ::unlink(m_temporary.c_str());
    fail();
  }
}

// The same text gives the same bytes, because the file contains neither a name nor a time.
void RESULT_FILE::pack(int descriptor) {
  m_packed = gzdopen(descriptor, "wb");
  if (m_packed != nullptr) {
    gzbuffer(m_packed, BLOCK);
  }
}

RESULT_FILE::~RESULT_FILE() {
  if (m_packed != nullptr) {
    gzclose_w(m_packed);
  }
  if (m_file != nullptr && !m_path.empty()) {
    std::fclose(m_file);
  }
  if (!m_temporary.empty()) {
    ::unlink(m_temporary.c_str());
  }
}

void RESULT_FILE::write(std::string_view text) {
  s_has_used_standard_output = s_has_used_standard_output || (m_file == stdout && !text.empty());
  const bool good = m_packed != nullptr
                        ? text.empty() || gzwrite(m_packed, text.data(), static_cast<unsigned>(text.size())) > 0
                        : std::fwrite(text.data(), 1, text.size(), m_file) == text.size();
  if (!good) {
    fail();
  }
}

// A file that is not on the disk counts as not written.
bool RESULT_FILE::close() {
  if (m_packed != nullptr) {
    const int descriptor = ::open(m_temporary.c_str(), O_WRONLY | O_CLOEXEC);
    const bool is_whole = gzclose_w(std::exchange(m_packed, nullptr)) == Z_OK;
    const bool is_on_disk = descriptor >= 0 && ::fsync(descriptor) == 0;
    return descriptor >= 0 && ::close(descriptor) == 0 && is_whole && is_on_disk;
  }
  const bool is_flushed = std::fflush(m_file) == 0;
  if (m_path.empty()) {
    return is_flushed;
  }
  const bool is_on_disk = is_flushed && ::fsync(::fileno(m_file)) == 0;
  return std::fclose(std::exchange(m_file, nullptr)) == 0 && is_on_disk;
}

void RESULT_FILE::finish() {
  if (!close() || (!m_path.empty() && std::rename(m_temporary.c_str(), m_path.c_str()) != 0)) {
    fail();
  }
  m_temporary.clear();
}

void RESULT_FILE::fail() const {
  throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: {}", shown(), std::strerror(errno)));
}

SCRATCH_FOLDER::SCRATCH_FOLDER() : m_path(std::filesystem::temp_directory_path() / "kptdb.XXXXXX") {
  if (::mkdtemp(m_path.data()) == nullptr) {
    throw FAILURE(EXIT_FOUND, fmt::format("{}: {}", m_path, std::strerror(errno)));
  }
}

SCRATCH_FOLDER::~SCRATCH_FOLDER() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

}  // namespace kptdb
