#include "byte_source.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "../open_to_read.h"
#include "../outcome.h"

namespace kptdb {

namespace {

constexpr unsigned READ_BLOCK = 1U << 18;

}  // namespace

BYTE_SOURCE::BYTE_SOURCE(const std::string& path)
    : m_path(path == "-" ? "standard input" : path), m_file(nullptr, gzclose_r) {
  const int descriptor = open_to_read(path);
  if (descriptor < 0) {
    fail(std::strerror(errno));
  }
  m_file.reset(gzdopen(descriptor, "rb"));
  if (m_file == nullptr) {
    ::close(descriptor);
    fail("no memory to read it");
  }
  gzbuffer(m_file.get(), READ_BLOCK);
}

std::size_t BYTE_SOURCE::read(char* into, std::size_t size) {
  const int got = gzread(m_file.get(), into, static_cast<unsigned>(std::min<std::size_t>(size, READ_BLOCK)));
  int code = Z_OK;
  const char* reason = gzerror(m_file.get(), &code);
  if (got < 0 || (code != Z_OK && code != Z_STREAM_END)) {
    fail(code == Z_ERRNO ? std::strerror(errno) : code == Z_BUF_ERROR ? "it ends within packed data" : reason);
  }
  return static_cast<std::size_t>(got);
}

void BYTE_SOURCE::fail(const std::string& reason) const { throw FAILURE(EXIT_UNREADABLE, m_path + ": " + reason); }

}  // namespace kptdb
