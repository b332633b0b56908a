#include "db/kpt/kpt_xml_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "h/gen_sys.h"

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 20;
constexpr int LEVEL_STEP = 2;
constexpr mode_t PERMISSIONS = 0666;

}  // namespace

bool KPT_XML_WRITER::STREAM::take_block() {
  if (m_block == nullptr) {
    m_block.reset(new (std::nothrow) char[BLOCK_SIZE]);
  }
  return m_block != nullptr;
}

// A stream that is open already is not opened again, and takes no more.
bool KPT_XML_WRITER::STREAM::open(const KPT_STRING& file_name) {
  const bool names_a_file = file_name.find('\0') == KPT_STRING::npos;
  if (is_open() || !names_a_file || !take_block()) {
    flush();
    m_good = false;
    return false;
  }
  do {
    m_descriptor = ::open(file_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, PERMISSIONS);
  } while (m_descriptor < 0 && errno == EINTR);
  m_good = is_open();
  return m_good;
}

bool KPT_XML_WRITER::STREAM::attach(int descriptor) {
  if (is_open() || descriptor < 0 || !take_block()) {
    m_good = false;
    if (descriptor >= 0) {
      ::close(descriptor);
    }
    return false;
  }
  m_descriptor = descriptor;
  m_good = true;
  return true;
}

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

void KPT_XML_WRITER::STREAM::flush() {
  write_out(m_block.get(), m_used);  // nothing is used unless the file is open
  m_used = 0;
}

void KPT_XML_WRITER::STREAM::append(std::string_view text) {
  if (!takes_text()) {
    return;
  }
  if (text.size() > BLOCK_SIZE - m_used) {
    flush();
    if (text.size() > BLOCK_SIZE) {
      write_out(text.data(), text.size());
      return;
    }
  }
  m_used += text.copy(m_block.get() + m_used, text.size());
}

// A level is 16 bits wide, so its blanks fit an empty block.
void KPT_XML_WRITER::STREAM::append(std::size_t count, char c) {
  if (!takes_text()) {
    return;
  }
  if (count > BLOCK_SIZE - m_used) {
    flush();
  }
  std::memset(m_block.get() + m_used, c, count);
  m_used += count;
}

bool KPT_XML_WRITER::STREAM::sync() {
  if (!is_open()) {
    return false;
  }
  flush();
  int result = 0;
  do {
    result = m_good ? ::fsync(m_descriptor) : -1;
  } while (result != 0 && m_good && errno == EINTR);
  m_good = m_good && result == 0;
  return m_good;
}

bool KPT_XML_WRITER::STREAM::close() {
  if (!is_open()) {
    return false;
  }
  flush();
  const bool closed = ::close(m_descriptor) == 0 || errno == EINTR;
  m_descriptor = -1;
  m_good = m_good && closed;
  return m_good;
}

KPT_XML_WRITER::KPT_XML_WRITER(std::string_view file_name) : m_file_name(file_name) {}

KPT_XML_WRITER::~KPT_XML_WRITER() = default;

bool KPT_XML_WRITER::start_file() { return m_stream.open(m_file_name); }

bool KPT_XML_WRITER::start_file_on(int descriptor) { return m_stream.attach(descriptor); }

bool KPT_XML_WRITER::finish_file() {
  const bool synced = m_stream.sync();
  return m_stream.close() && synced;
}

bool KPT_XML_WRITER::space() {
  m_stream.append(m_indent_level, ' ');
  return true;
}

bool KPT_XML_WRITER::indent() {
  m_indent_level = static_cast<std::uint16_t>(m_indent_level + LEVEL_STEP);
  return true;
}

bool KPT_XML_WRITER::outdent() {
  if (m_indent_level < LEVEL_STEP) {
    return false;
  }
  m_indent_level = static_cast<std::uint16_t>(m_indent_level - LEVEL_STEP);
  return true;
}

bool KPT_XML_WRITER::start_tag(std::string_view name) {
  space();
  write("<");
  write(name);
  return true;
}

bool KPT_XML_WRITER::write_attribute(std::string_view name, std::string_view value) {
  write(" ");
  write(name);
  write("=\"");
  write(value);
  write("\"");
  return true;
}

bool KPT_XML_WRITER::new_line() {
  write(">\n");
  return true;
}

bool KPT_XML_WRITER::close_tag() {
  write("> ");
  return true;
}

bool KPT_XML_WRITER::end_tag(std::string_view name) {
  outdent();
  space();
  write("</");
  write(name);
  new_line();
  indent();
  return true;
}

bool KPT_XML_WRITER::write_text_content(std::string_view text) {
  write(text);
  return true;
}

bool KPT_XML_WRITER::write_simple_text_element(std::string_view name, std::string_view text) {
  write("<");
  write(name);
  write(">");
  write(text);
  write("</");
  write(name);
  new_line();
  return true;
}

bool KPT_XML_WRITER::write_empty_content_element(std::string_view name) {
  start_tag(name);
  new_line();
  space();
  end_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_db_start_xml(std::string_view db_name) {
  start_tag("kpt_db");
  write_attribute("name", db_name);
  new_line();
  return true;
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name) {
  indent();
  space();
  start_tag("key_point");
  write_attribute("id", id);
  write_attribute("type", type);
  new_line();
  indent();
  space();
  write_simple_text_element("name", name);
  outdent();
  space();
  end_tag("key_point");
  outdent();
  return true;
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name,
                                        std::string_view entity, std::string_view reg_type) {
  space();
  start_tag("key_point");
  indent();
  write_attribute("id", id);
  write_attribute("type", type);
  new_line();
  indent();
  space();
  write_simple_text_element("name", name);
  space();
  write_simple_text_element("entity", entity);
  space();
  write_simple_text_element("reg_type", reg_type);
  outdent();
  space();
  end_tag("key_point");
  outdent();
  return true;
}

bool KPT_XML_WRITER::write_transformation_start_xml(std::string_view elim_type) {
  indent();
  space();
  start_tag("transformation");
  if (!elim_type.empty()) {
    write_attribute("elim_type", elim_type);
  }
  new_line();
  outdent();
  return true;
}

bool KPT_XML_WRITER::write_tr_set_start_xml(std::string_view type) {
  indent();
  space();
  start_tag("kp_set");
  write_attribute("type", type);
  new_line();
  outdent();
  return true;
}

bool KPT_XML_WRITER::write_tr_state_start_xml(unsigned short index) {
  indent();
  space();
  start_tag("kp_state");
  write_attribute("index", itoa(index));
  new_line();
  outdent();
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
  indent();
  space();
  start_tag(tag);
  new_line();
  indent();
  return true;
}

bool KPT_XML_WRITER::write_kp_xml(long id) {
  space();
  start_tag("kp");
  write_attribute("id", itoa(id));
  close_tag();
  end_tag("kp");
  return true;
}

bool KPT_XML_WRITER::end_transformation_xml(std::string_view tag) {
  space();
  outdent();
  end_tag(tag);
  outdent();
  return true;
}

bool KPT_XML_WRITER::write_state_index_xml(unsigned short index) {
  start_tag("state");
  write_attribute("index", itoa(index));
  new_line();
  return true;
}

bool KPT_XML_WRITER::write_state_table_xml(unsigned short index, std::string_view value) {
  indent();
  space();
  start_tag("value");
  write_attribute("index", itoa(index));
  close_tag();
  write_text_content(value);
  end_tag("value");
  outdent();
  return true;
}

// The host converts ints, so an id beyond that range comes out as another number.
std::string_view KPT_XML_WRITER::itoa(long value) {
  gen_itoa(static_cast<int>(value), m_number, 10);
  return m_number;
}
