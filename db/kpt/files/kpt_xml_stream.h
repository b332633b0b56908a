// The file that a database is written to, with a large buffer: one system call for
// each full buffer, however short the texts. After the first failure nothing more
// is written.
//
// Ownership: the stream owns its descriptor and its buffer. A SPACE points into the
// buffer, and is valid until the stream is told to do anything but `advance_to`.
#ifndef KPT_XML_STREAM_H
#define KPT_XML_STREAM_H

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include "db/kpt/kpt_types.h"

class KPT_XML_STREAM {
 public:
  /// The free part of the buffer.
  struct SPACE {
    char* at;
    char* end;
  };
  /// Bytes that a SPACE has at least. Who puts fewer need not ask how many it has.
  static constexpr std::size_t ROOM = 512;

  KPT_XML_STREAM() { start_buffer(); }
  ~KPT_XML_STREAM() { close(); }
  KPT_XML_STREAM(const KPT_XML_STREAM&) = delete;
  KPT_XML_STREAM& operator=(const KPT_XML_STREAM&) = delete;

  /// Creates or truncates the file. False when it cannot be opened.
  bool open(const KPT_STRING& file_name);
  /// Takes ownership of the descriptor, also when it fails.
  bool attach(int descriptor);

  SPACE space() {
    if (m_space.end - m_space.at < static_cast<std::ptrdiff_t>(ROOM)) {
      flush();
    }
    return m_space;
  }
  /// What was put into the space ends here.
  void advance_to(char* at) { m_space.at = at; }
  /// Writes a text for which the space has no room. Returns the space behind it.
  SPACE append(std::string_view text);

  /// Writes everything to the disk.
  bool sync();
  /// Whether every write succeeded.
  bool close();

 private:
  bool is_open() const { return m_descriptor >= 0; }
  bool writes() const { return m_good && is_open(); }
  void start_buffer();
  void flush();
  void write_out(const char* from, std::size_t size);

  int m_descriptor = -1;
  bool m_good = true;
  std::unique_ptr<char[]> m_block;
  // What is put while no file can be written goes here and is lost.
  std::array<char, ROOM> m_nowhere{};
  // Part of the block, or all of `m_nowhere`.
  SPACE m_space{};
};

#endif
