#include "db/kpt/files/kpt_xml_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "db/kpt/msg_kpt.h"

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 20;
constexpr mode_t PERMISSIONS = 0666;

}  // namespace

bool KPT_XML_STREAM::attach(int descriptor) {
  if (m_block == nullptr) {
    m_block.reset(new (std::nothrow) char[BLOCK_SIZE]);
  }
  if (descriptor >= 0 && m_block == nullptr) {
    ::close(descriptor);
    descriptor = -1;
  }
  m_descriptor = descriptor;
  m_good = is_open();
  start_buffer();
  return m_good;
}

void KPT_XML_STREAM::start_buffer() {
  char* const first = writes() ? m_block.get() : m_nowhere.data();
  m_space = {first, first + (writes() ? BLOCK_SIZE : m_nowhere.size())};
}

// A stream that is already open is not opened again; its later writes are lost.
bool KPT_XML_STREAM::open(const KPT_STRING& file_name) {
  if (is_open()) {
    flush();
    m_good = false;
    start_buffer();
    return false;
  }
  if (file_name.find('\0') != KPT_STRING::npos) {
    return false;
  }
  struct stat state {};
  if (::stat(file_name.c_str(), &state) == 0 && S_ISFIFO(state.st_mode)) {
    kpt_msg_debug("Info: %s is a pipe: saving waits until it is read", file_name.c_str());
  }
  int descriptor = -1;
  do {
    descriptor = ::open(file_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, PERMISSIONS);
  } while (descriptor < 0 && errno == EINTR);
  return attach(descriptor);
}

void KPT_XML_STREAM::write_out(const char* from, std::size_t size) {
  while (size > 0 && m_good) {
    const ssize_t written = ::write(m_descriptor, from, size);
    if (written > 0) {
      from += written;
      size -= static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      m_good = false;
    }
  }
}

// Writes the content of the block.
void KPT_XML_STREAM::flush() {
  if (writes()) {
    write_out(m_block.get(), static_cast<std::size_t>(m_space.at - m_block.get()));
  }
  start_buffer();
}

KPT_XML_STREAM::SPACE KPT_XML_STREAM::append(std::string_view text) {
  flush();
  if (!writes()) {
    return m_space;
  }
  if (text.size() > BLOCK_SIZE - ROOM) {
    write_out(text.data(), text.size());
  } else {
    m_space.at += text.copy(m_space.at, text.size());
  }
  return m_space;
}

bool KPT_XML_STREAM::sync() {
  if (!is_open()) {
    return false;
  }
  flush();
  while (m_good && ::fsync(m_descriptor) != 0) {
    m_good = errno == EINTR;
  }
  return m_good;
}

bool KPT_XML_STREAM::close() {
  if (!is_open()) {
    return false;
  }
  flush();
  const bool closed = ::close(m_descriptor) == 0 || errno == EINTR;
  m_descriptor = -1;
  m_good = m_good && closed;
  start_buffer();
  return m_good;
}
