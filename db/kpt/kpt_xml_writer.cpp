#include "db/kpt/kpt_xml_writer.h"

#include <array>
#include <cstring>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/files/kpt_xml_stream.h"
#include "db/kpt/kpt_steps.h"
#include "h/gen_sys.h"

namespace {

constexpr int LEVEL_STEP = 2;
constexpr std::string_view BLANKS = "                ";
constexpr std::string_view ESCAPED = "<&\">\t\n\r";

// A text that the compiler knows, such as the name of an element.
class FIXED_TEXT {
 public:
  consteval explicit FIXED_TEXT(std::string_view text) : m_text(text) {}
  constexpr std::string_view view() const { return m_text; }

 private:
  std::string_view m_text;
};

// Whether a character may need a reference, for each character.
constexpr std::array<bool, 256> MAY_NEED_REFERENCE = [] {
  std::array<bool, 256> result{};
  for (const char c : ESCAPED) {
    result[static_cast<unsigned char>(c)] = true;
  }
  return result;
}();

bool may_need_references(std::string_view text) {
  bool result = false;
  for (const char c : text) {
    result |= MAY_NEED_REFERENCE[static_cast<unsigned char>(c)];
  }
  return result;
}

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

// A save takes about a hundred steps for each register. So a pen holds what they
// need in variables of its own, which the compiler keeps in registers, and its steps
// are inline also where the compiler would not choose so: only then is the length of a
// fixed text known where it is copied.
//
// The fixed texts and blanks between two values are shorter than the room that a
// space has at least. They are put without a check.
//
// The name of an element is a FIXED_TEXT, or a std::string_view that a caller gives.
#define KPT_STEP [[gnu::always_inline]] inline
class KPT_XML_WRITER::PEN {
 public:
  explicit PEN(KPT_XML_WRITER& writer)
      : m_writer(writer), m_space(writer.m_stream->space()), m_level(writer.m_indent_level) {}
  ~PEN() {
    m_writer.m_stream->advance_to(m_space.at);
    m_writer.m_indent_level = m_level;
  }
  PEN(const PEN&) = delete;
  PEN& operator=(const PEN&) = delete;

  KPT_STEP void put(FIXED_TEXT text) { m_space.at += text.view().copy(m_space.at, text.view().size()); }

  KPT_STEP void put(std::string_view text) {
    if (text.size() + KPT_XML_STREAM::ROOM <= static_cast<std::size_t>(m_space.end - m_space.at)) {
      m_space.at += text.copy(m_space.at, text.size());
    } else {
      m_writer.m_stream->advance_to(m_space.at);
      m_space = m_writer.m_stream->append(text);
    }
  }

  // A level is small, so one store of fixed size writes the blanks. The text that
  // follows overwrites those beyond the level.
  KPT_STEP void space() {
    std::size_t count = m_level;
    for (; count > BLANKS.size(); count -= BLANKS.size()) {
      put(BLANKS);
    }
    std::memcpy(m_space.at, BLANKS.data(), BLANKS.size());
    m_space.at += count;
  }

  KPT_STEP void step_in() { m_level = static_cast<std::uint16_t>(m_level + LEVEL_STEP); }

  KPT_STEP void step_out() {
    if (m_level >= LEVEL_STEP) {
      m_level = static_cast<std::uint16_t>(m_level - LEVEL_STEP);
    }
  }

  template <class NAME>
  KPT_STEP void start_tag(NAME name) {
    space();
    put(FIXED_TEXT("<"));
    put(name);
  }

  KPT_STEP void value(std::string_view text) {
    put(m_writer.m_escapes && may_need_references(text) ? m_writer.escaped(text) : text);
  }

  template <class NAME>
  KPT_STEP void attribute(NAME name, std::string_view text) {
    put(FIXED_TEXT(" "));
    put(name);
    put(FIXED_TEXT("=\""));
    value(text);
    put(FIXED_TEXT("\""));
  }

  // The host converts ints, so an id beyond that range is written as another number.
  KPT_STEP void number_attribute(FIXED_TEXT name, long number) {
    gen_itoa(static_cast<int>(number), m_writer.m_number, 10);
    attribute(name, m_writer.m_number);
  }

  KPT_STEP void new_line() { put(FIXED_TEXT(">\n")); }

  template <class NAME>
  KPT_STEP void end_tag(NAME name) {
    step_out();
    space();
    put(FIXED_TEXT("</"));
    put(name);
    new_line();
    step_in();
  }

  template <class NAME>
  KPT_STEP void simple_text_element(NAME name, std::string_view text) {
    put(FIXED_TEXT("<"));
    put(name);
    put(FIXED_TEXT(">"));
    value(text);
    put(FIXED_TEXT("</"));
    put(name);
    new_line();
  }

  KPT_STEP void end_element(FIXED_TEXT name) {
    space();
    end_tag(name);
  }

  KPT_STEP void attribute_elements(const KPT_ATTRIBUTE_LIST& attributes) {
    for (const auto& [name, text] : attributes) {
      if (!name.empty() && !text.empty()) {
        space();
        start_tag(FIXED_TEXT(kpt_words::ATTRIBUTE));
        attribute(FIXED_TEXT(kpt_words::NAME), name);
        attribute(FIXED_TEXT(kpt_words::VALUE), text);
        put(FIXED_TEXT("> "));
        end_tag(FIXED_TEXT(kpt_words::ATTRIBUTE));
      }
    }
  }

  KPT_STEP void key_point_name(std::string_view id, std::string_view type, std::string_view name) {
    attribute(FIXED_TEXT(kpt_words::ID), id);
    attribute(FIXED_TEXT(kpt_words::TYPE), type);
    new_line();
    step_in();
    space();
    simple_text_element(FIXED_TEXT(kpt_words::NAME), name);
  }

  KPT_STEP void end_key_point(const KPT_ATTRIBUTE_LIST& attributes) {
    attribute_elements(attributes);
    step_out();
    space();
    end_tag(FIXED_TEXT(kpt_words::KEY_POINT));
    step_out();
  }

 private:
  KPT_XML_WRITER& m_writer;
  KPT_XML_STREAM::SPACE m_space;
  std::uint16_t m_level;
};
#undef KPT_STEP

std::string_view KPT_XML_WRITER::escaped(std::string_view text) {
  m_escaped.clear();
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view reference = reference_for(text, at);
    m_escaped += reference.empty() ? text.substr(at, 1) : reference;
  }
  return m_escaped;
}

KPT_XML_WRITER::KPT_XML_WRITER(std::string_view file_name)
    : m_file_name(file_name), m_stream(std::make_unique<KPT_XML_STREAM>()) {}

KPT_XML_WRITER::~KPT_XML_WRITER() = default;

void KPT_XML_WRITER::step() {
  if (m_steps != nullptr) {
    m_steps->next();
  }
}

bool KPT_XML_WRITER::start_file() { return m_stream->open(m_file_name); }

bool KPT_XML_WRITER::start_file_on(int descriptor) { return m_stream->attach(descriptor); }

bool KPT_XML_WRITER::finish_file() {
  const bool synced = m_stream->sync();
  return m_stream->close() && synced;
}

bool KPT_XML_WRITER::space() {
  PEN pen(*this);
  pen.space();
  return true;
}

bool KPT_XML_WRITER::indent() {
  PEN(*this).step_in();
  return true;
}

bool KPT_XML_WRITER::outdent() {
  const bool goes_down = m_indent_level >= LEVEL_STEP;
  PEN(*this).step_out();
  return goes_down;
}

bool KPT_XML_WRITER::start_tag(std::string_view name) {
  PEN pen(*this);
  pen.start_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_attribute(std::string_view name, std::string_view value) {
  PEN pen(*this);
  pen.attribute(name, value);
  return true;
}

bool KPT_XML_WRITER::new_line() {
  PEN pen(*this);
  pen.new_line();
  return true;
}

bool KPT_XML_WRITER::close_tag() {
  PEN pen(*this);
  pen.put(FIXED_TEXT("> "));
  return true;
}

bool KPT_XML_WRITER::end_tag(std::string_view name) {
  PEN pen(*this);
  pen.end_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_text_content(std::string_view text) {
  PEN pen(*this);
  pen.put(text);
  return true;
}

bool KPT_XML_WRITER::write_simple_text_element(std::string_view name, std::string_view text) {
  PEN pen(*this);
  pen.simple_text_element(name, text);
  return true;
}

bool KPT_XML_WRITER::write_empty_content_element(std::string_view name) {
  PEN pen(*this);
  pen.start_tag(name);
  pen.new_line();
  pen.space();
  pen.end_tag(name);
  return true;
}

bool KPT_XML_WRITER::write_db_start_xml(std::string_view db_name) {
  PEN pen(*this);
  pen.start_tag(FIXED_TEXT(kpt_words::KPT_DB));
  pen.attribute(FIXED_TEXT(kpt_words::NAME), db_name);
  pen.new_line();
  return true;
}

bool KPT_XML_WRITER::write_attributes(const KPT_ATTRIBUTE_LIST& attributes) {
  PEN pen(*this);
  pen.attribute_elements(attributes);
  return true;
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name) {
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::KEY_POINT));
  pen.key_point_name(id, type, name);
  pen.end_key_point(m_attributes);
  m_attributes.clear();
  return true;
}

bool KPT_XML_WRITER::write_keypoint_xml(std::string_view id, std::string_view type, std::string_view name,
                                        std::string_view entity, std::string_view reg_type) {
  PEN pen(*this);
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::KEY_POINT));
  pen.step_in();
  pen.key_point_name(id, type, name);
  pen.space();
  pen.simple_text_element(FIXED_TEXT(kpt_words::ENTITY), entity);
  pen.space();
  pen.simple_text_element(FIXED_TEXT(kpt_words::REG_TYPE), reg_type);
  pen.end_key_point(m_attributes);
  m_attributes.clear();
  return true;
}

bool KPT_XML_WRITER::write_transformation_start_xml(std::string_view elim_type) {
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::TRANSFORMATION));
  if (!elim_type.empty()) {
    pen.attribute(FIXED_TEXT(kpt_words::ELIM_TYPE), elim_type);
  }
  pen.new_line();
  pen.step_out();
  return true;
}

bool KPT_XML_WRITER::write_tr_set_start_xml(std::string_view type) {
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::KP_SET));
  pen.attribute(FIXED_TEXT(kpt_words::TYPE), type);
  pen.new_line();
  pen.step_out();
  return true;
}

bool KPT_XML_WRITER::write_tr_state_start_xml(unsigned short index) {
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::KP_STATE));
  pen.number_attribute(FIXED_TEXT(kpt_words::INDEX), index);
  pen.new_line();
  pen.step_out();
  return true;
}

bool KPT_XML_WRITER::write_tr_state_end_xml() {
  PEN(*this).end_element(FIXED_TEXT(kpt_words::KP_STATE));
  return true;
}

bool KPT_XML_WRITER::write_tr_set_end_xml() {
  PEN(*this).end_element(FIXED_TEXT(kpt_words::KP_SET));
  return true;
}

bool KPT_XML_WRITER::write_transformation_end_xml() {
  PEN(*this).end_element(FIXED_TEXT(kpt_words::TRANSFORMATION));
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
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(tag);
  pen.new_line();
  pen.step_in();
  return true;
}

bool KPT_XML_WRITER::write_kp_xml(long id) {
  PEN pen(*this);
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::KP));
  pen.number_attribute(FIXED_TEXT(kpt_words::ID), id);
  pen.put(FIXED_TEXT("> "));
  pen.end_tag(FIXED_TEXT(kpt_words::KP));
  return true;
}

bool KPT_XML_WRITER::end_transformation_xml(std::string_view tag) {
  PEN pen(*this);
  pen.space();
  pen.step_out();
  pen.end_tag(tag);
  pen.step_out();
  return true;
}

bool KPT_XML_WRITER::write_state_index_xml(unsigned short index) {
  PEN pen(*this);
  pen.start_tag(FIXED_TEXT(kpt_words::STATE));
  pen.number_attribute(FIXED_TEXT(kpt_words::INDEX), index);
  pen.new_line();
  return true;
}

bool KPT_XML_WRITER::write_state_table_xml(unsigned short index, std::string_view value) {
  PEN pen(*this);
  pen.step_in();
  pen.space();
  pen.start_tag(FIXED_TEXT(kpt_words::VALUE));
  pen.number_attribute(FIXED_TEXT(kpt_words::INDEX), index);
  pen.put(FIXED_TEXT("> "));
  pen.put(value);
  pen.end_tag(FIXED_TEXT(kpt_words::VALUE));
  pen.step_out();
  return true;
}
