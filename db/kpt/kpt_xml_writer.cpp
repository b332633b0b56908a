#include "db/kpt/kpt_xml_writer.h"
#include "db/kpt/files/kpt_format_words.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "db/kpt/kpt_steps.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 20;
constexpr int LEVEL_STEP = 2;
constexpr std::string_view BLANKS = "                ";
constexpr mode_t PERMISSIONS = 0666;

// The reference for the character at a position; empty for a character that needs
// none.
std::string_view reference_for(std::string_view text, std::size_t at) {
  switch (text[at]) {
    case '<':
      return "&lt;";
    case '&':
      return "&amp;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return at >= 2 && text.substr(at - 2, 3) == "]]>" ? "&gt;" : std::string_view();
  }
}

}  // namespace

// Takes ownership of the descriptor, also when it fails.
bool KPT_XML_WRITER::STREAM::start(int descriptor) {
  if (m_block == nullptr) {
    m_block.reset(new (std::nothrow) char[BLOCK_SIZE]);
  }
  if (descriptor >= 0 && m_block == nullptr) {
    ::close(descriptor);
    descriptor = -1;
  }
  m_descriptor = descriptor;
  m_good = is_open();
  m_at = m_block.get();
  m_end = m_good ? m_at + BLOCK_SIZE : m_at;
  return m_good;
}

// A stream that is already open is not opened again; its later writes are lost.
bool KPT_XML_WRITER::STREAM::open(const KPT_STRING& file_name) {
  if (is_open()) {
    flush();
    m_good = false;
    m_end = m_at;
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
  return start(descriptor);
}

bool KPT_XML_WRITER::STREAM::attach(int descriptor) { return start(descriptor); }

void KPT_XML_WRITER::STREAM::write_out(const char* from, std::size_t size) {
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

// Writes the content of the block. After a failure the block has no room.
void KPT_XML_WRITER::STREAM::flush() {
  char* const block = m_block.get();
  write_out(block, static_cast<std::size_t>(m_at - block));
  m_at = block;
  m_end = m_good && is_open() ? block + BLOCK_SIZE : block;
}

void KPT_XML_WRITER::STREAM::append_past_end(std::string_view text) {
  if (!is_open()) {
    return;
  }
  flush();
  if (text.size() > room()) {
    write_out(text.data(), text.size());
  } else {
    m_at += text.copy(m_at, text.size());
  }
}

void KPT_XML_WRITER::STREAM::append_blanks_past_end(std::size_t count) {
  while (count > 0) {
    const std::size_t piece = std::min(count, BLANKS.size());
    append(BLANKS.substr(0, piece));
    count -= piece;
  }
}

void KPT_XML_WRITER::STREAM::append(std::string_view text) {
  if (text.size() <= room()) {
    m_at += text.copy(m_at, text.size());
  } else {
    append_past_end(text);
  }
}

// A level is small, so one store of fixed size writes the blanks. The text that
// follows overwrites those beyond the level.
void KPT_XML_WRITER::STREAM::append_blanks(std::size_t count) {
  if (count <= BLANKS.size() && room() >= BLANKS.size()) {
    std::memcpy(m_at, BLANKS.data(), BLANKS.size());
    m_at += count;
  } else {
    append_blanks_past_end(count);
  }
}

bool KPT_XML_WRITER::STREAM::sync() {
  if (!is_open()) {
    return false;
  }
  flush();
  while (m_good && ::fsync(m_descriptor) != 0) {
    m_good = errno == EINTR;
  }
  return m_good;
}

bool KPT_XML_WRITER::STREAM::close() {
  if (!is_open()) {
    return false;
  }
  flush();
  const bool closed = ::close(m_descriptor) == 0 || errno == EINTR;
  m_descriptor = -1;
  m_end = m_at;
  m_good = m_good && closed;
  return m_good;
}

void KPT_XML_WRITER::put(std::string_view text) { m_stream.append(text); }

void KPT_XML_WRITER::put_space() { m_stream.append_blanks(m_indent_level); }

void KPT_XML_WRITER::step_in() { m_indent_level = static_cast<std::uint16_t>(m_indent_level + LEVEL_STEP); }

bool KPT_XML_WRITER::step_out() {
  if (m_indent_level < LEVEL_STEP) {
    return false;
  }
  m_indent_level = static_cast<std::uint16_t>(m_indent_level - LEVEL_STEP);
  return true;
}

void KPT_XML_WRITER::put_start_tag(std::string_view name) {
  put_space();
  put("<");
  put(name);
}

void KPT_XML_WRITER::put_value(std::string_view text) {
  if (m_escapes) {
    put_escaped(text);
  } else {
    put(text);
  }
}

void KPT_XML_WRITER::put_escaped(std::string_view text) {
  constexpr std::string_view ESCAPED = "<&\">\t\n\r";
  std::size_t written = 0;
  for (std::size_t at = text.find_first_of(ESCAPED); at != text.npos; at = text.find_first_of(ESCAPED, at + 1)) {
    const std::string_view reference = reference_for(text, at);
    if (!reference.empty()) {
      put(text.substr(written, at - written));
      put(reference);
      written = at + 1;
    }
  }
  put(text.substr(written));
}

void KPT_XML_WRITER::put_attribute(std::string_view name, std::string_view value) {
  put(" ");
  put(name);
  put("=\"");
  put_value(value);
  put("\"");
}

void KPT_XML_WRITER::put_new_line() { put(">\n"); }

void KPT_XML_WRITER::put_end_tag(std::string_view name) {
  step_out();
  put_space();
  put("</");
  put(name);
  put_new_line();
  step_in();
}

void KPT_XML_WRITER::put_simple_text_element(std::string_view name, std::string_view text) {
  put("<");
  put(name);
  put(">");
  put_value(text);
  put("</");
  put(name);
  put_new_line();
}

// The host converts ints, so an id beyond that range is written as another number.
void KPT_XML_WRITER::put_number_attribute(std::string_view name, long value) {
  gen_itoa(static_cast<int>(value), m_number, 10);
  put_attribute(name, m_number);
}

KPT_XML_WRITER::KPT_XML_WRITER(std::string_view file_name) : m_file_name(file_name) {}

KPT_XML_WRITER::~KPT_XML_WRITER() = default;

void KPT_XML_WRITER::step() {
  if (m_steps != nullptr) {
    m_steps->next();
  }
}

bool KPT_XML_WRITER::start_file() { return m_stream.open(m_file_name); }

bool KPT_XML_WRITER::start_file_on(int descriptor) { return m_stream.attach(descriptor); }

bool KPT_XML_WRITER::finish_file() {
  const bool synced = m_stream.sync();
  return m_stream.close() && synced;
}

bool KPT_XML_WRITER::space() {
  put_space();
  return true;
}

bool KPT_XML_WRITER::indent() {
  step_in();
  return true;
}

bool KPT_XML_WRITER::outdent() { return step_out(); }

bool KPT_XML_WRITER::start_tag(std::string_view name) {
  put_start_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_attribute(std::string_view name, std::string_view value) {
  put_attribute(name, value);
  return true;
}

bool KPT_XML_WRITER::new_line() {
  put_new_line();
  return true;
}

bool KPT_XML_WRITER::close_tag() {
  put("> ");
  return true;
}

bool KPT_XML_WRITER::end_tag(std::string_view name) {
  put_end_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_text_content(std::string_view text) {
  put(text);
  return true;
}

bool KPT_XML_WRITER::write_simple_text_element(std::string_view name, std::string_view text) {
  put_simple_text_element(name, text);
  return true;
}

bool KPT_XML_WRITER::write_empty_content_element(std::string_view name) {
  put_start_tag(name);
  put_new_line();
  put_space();
  put_end_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_db_start_xml(std::string_view db_name) {
  put_start_tag(kpt_words::KPT_DB);
  put_attribute(kpt_words::NAME, db_name);
  put_new_line();
  return true;
}

bool KPT_XML_WRITER::write_attributes(const KPT_ATTRIBUTE_LIST& attributes) {
  for (const auto& [name, value] : attributes) {
    if (!name.empty() && !value.empty()) {
      put_space();
      put_start_tag(kpt_words::ATTRIBUTE);
      put_attribute(kpt_words::NAME, name);
      put_attribute(kpt_words::VALUE, value);
      put("> ");
      put_end_tag(kpt_words::ATTRIBUTE);
    }
  }
  return true;
}

void KPT_XML_WRITER::put_attributes() {
  if (!m_attributes.empty()) {
    write_attributes(m_attributes);
    m_attributes.clear();
  }
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name) {
  step_in();
  put_space();
  put_start_tag(kpt_words::KEY_POINT);
  put_attribute(kpt_words::ID, id);
  put_attribute(kpt_words::TYPE, type);
  put_new_line();
  step_in();
  put_space();
  put_simple_text_element(kpt_words::NAME, name);
  put_attributes();
  step_out();
  put_space();
  put_end_tag(kpt_words::KEY_POINT);
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name,
                                        std::string_view entity, std::string_view reg_type) {
  put_space();
  put_start_tag(kpt_words::KEY_POINT);
  step_in();
  put_attribute(kpt_words::ID, id);
  put_attribute(kpt_words::TYPE, type);
  put_new_line();
  step_in();
  put_space();
  put_simple_text_element(kpt_words::NAME, name);
  put_space();
  put_simple_text_element(kpt_words::ENTITY, entity);
  put_space();
  put_simple_text_element(kpt_words::REG_TYPE, reg_type);
  put_attributes();
  step_out();
  put_space();
  put_end_tag(kpt_words::KEY_POINT);
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_transformation_start_xml(std::string_view elim_type) {
  step_in();
  put_space();
  put_start_tag(kpt_words::TRANSFORMATION);
  if (!elim_type.empty()) {
    put_attribute(kpt_words::ELIM_TYPE, elim_type);
  }
  put_new_line();
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_tr_set_start_xml(std::string_view type) {
  step_in();
  put_space();
  put_start_tag(kpt_words::KP_SET);
  put_attribute(kpt_words::TYPE, type);
  put_new_line();
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_tr_state_start_xml(unsigned short index) {
  step_in();
  put_space();
  put_start_tag(kpt_words::KP_STATE);
  put_number_attribute(kpt_words::INDEX, index);
  put_new_line();
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_transformation_xml(std::string_view tag, unsigned short /*index*/, const KPT_ID_LIST& ids) {
  begin_transformation_xml(tag);
  for (const long id : ids) {
    write_kp_xml(id);
  }
  return end_transformation_xml(tag);
}

bool KPT_XML_WRITER::begin_transformation_xml(std::string_view tag) {
  step_in();
  put_space();
  put_start_tag(tag);
  put_new_line();
  step_in();
  return true;
}

bool KPT_XML_WRITER::write_kp_xml(long id) {
  put_space();
  put_start_tag(kpt_words::KP);
  put_number_attribute(kpt_words::ID, id);
  put("> ");
  put_end_tag(kpt_words::KP);
  return true;
}

bool KPT_XML_WRITER::end_transformation_xml(std::string_view tag) {
  put_space();
  step_out();
  put_end_tag(tag);
  step_out();
  return true;
}

bool KPT_XML_WRITER::write_state_index_xml(unsigned short index) {
  put_start_tag(kpt_words::STATE);
  put_number_attribute(kpt_words::INDEX, index);
  put_new_line();
  return true;
}

bool KPT_XML_WRITER::write_state_table_xml(unsigned short index, std::string_view value) {
  step_in();
  put_space();
  put_start_tag(kpt_words::VALUE);
  put_number_attribute(kpt_words::INDEX, index);
  put("> ");
  put(value);
  put_end_tag(kpt_words::VALUE);
  step_out();
  return true;
}
