#include "files.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "outcome.h"

namespace kptdb {

namespace {

constexpr std::size_t LONGEST_LINE = std::size_t{16} << 20;

[[noreturn]] void fail_reading(const std::string& path) {
  throw FAILURE(EXIT_UNREADABLE, fmt::format("{}: {}", path, std::strerror(errno)));
}

std::FILE* open_input(const std::string& path) {
  if (path == "-") {
    return stdin;
  }
  std::FILE* file = std::fopen(path.c_str(), "rbe");
  if (file == nullptr) {
    fail_reading(path);
  }
  return file;
}

int close_input(std::FILE* file) { return file == stdin ? 0 : std::fclose(file); }

}  // namespace

void refuse_unless_regular(const std::string& path) {
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0 || ::access(path.c_str(), R_OK) != 0) {
    fail_reading(path);
  }
  if (!S_ISREG(state.st_mode)) {
    throw FAILURE(EXIT_UNREADABLE, path + (S_ISDIR(state.st_mode) ? ": a directory" : ": not a regular file"));
  }
  if (state.st_size == 0) {
    throw FAILURE(EXIT_UNREADABLE, path + ":1: the file is empty");
  }
}

std::uint64_t file_size(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? static_cast<std::uint64_t>(state.st_size) : 0;
}

std::string read_file(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(open_input(path), close_input);
  std::string text;
  std::string block(std::size_t{1} << 16, '\0');
  std::size_t count = 0;
  while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
    text.append(block, 0, count);
  }
  if (std::ferror(file.get()) != 0) {
    fail_reading(path);
  }
  return text;
}

LINE_READER::LINE_READER(const std::string& path) : m_path(path), m_file(open_input(path), close_input) {}

bool LINE_READER::next(std::string& line) {
  line.clear();
  int c = 0;
  while ((c = ::getc_unlocked(m_file.get())) != EOF && c != '\n') {
    if (line.size() == LONGEST_LINE) {
      throw FAILURE(EXIT_UNREADABLE, fmt::format("{}:{}: the line is too long for an event", m_path, m_line + 1));
    }
    line += static_cast<char>(c);
  }
  if (std::ferror(m_file.get()) != 0) {
    fail_reading(m_path);
  }
  if (c == EOF && line.empty()) {
    return false;
  }
  ++m_line;
  m_bytes += line.size() + 1;
  return true;
}

RESULT_FILE::RESULT_FILE(const std::string& path) : m_path(path), m_file(stdout) {
  if (m_path.empty()) {
    return;
  }
  struct stat state {};
  const bool exists = ::stat(m_path.c_str(), &state) == 0;
  if (exists && !S_ISREG(state.st_mode)) {
    throw FAILURE(EXIT_FOUND, m_path + ": not written: it is not a regular file");
  }
  // Behind a symbolic link it is the file it leads to that is replaced.
  const std::unique_ptr<char, void (*)(void*)> real(exists ? ::realpath(m_path.c_str(), nullptr) : nullptr, std::free);
  m_path = real == nullptr ? m_path : real.get();
  m_temporary = m_path + ".XXXXXX";
  const int descriptor = ::mkstemp(m_temporary.data());
  if (descriptor < 0) {
    m_temporary.clear();
    fail();
  }
  // mkstemp gives the file to its owner alone.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  const mode_t mode = exists ? state.st_mode & 0777U : 0666U & ~mask;
  m_file = ::fchmod(descriptor, mode) == 0 ? ::fdopen(descriptor, "wb") : nullptr;
  if (m_file == nullptr) {
    ::close(descriptor);
    ::unlink(m_temporary.c_str());
    fail();
  }
}

RESULT_FILE::~RESULT_FILE() {
  if (m_file != stdout && m_file != nullptr) {
    std::fclose(m_file);
  }
  if (!m_temporary.empty()) {
    ::unlink(m_temporary.c_str());
  }
}

void RESULT_FILE::write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), m_file) != text.size()) {
    fail();
  }
}

void RESULT_FILE::finish() {
  bool good = std::fflush(m_file) == 0;
  if (m_file != stdout) {
    good = good && ::fsync(::fileno(m_file)) == 0;
    good = std::fclose(m_file) == 0 && good;
    m_file = nullptr;
    good = good && std::rename(m_temporary.c_str(), m_path.c_str()) == 0;
  }
  if (!good) {
    fail();
  }
  m_temporary.clear();
}

void RESULT_FILE::fail() const {
  throw FAILURE(EXIT_FOUND,
                fmt::format("{}: not written: {}", m_path.empty() ? "standard output" : m_path, std::strerror(errno)));
}

}  // namespace kptdb
