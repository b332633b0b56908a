#include "db/kpt/load/kpt_plain_scanner.h"

#include <algorithm>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/files/kpt_plain_characters.h"
#include "db/kpt/files/kpt_window.h"
#include "db/kpt/load/kpt_line_counter.h"
#include "db/kpt/load/kpt_open_elements.h"
#include "db/kpt/load/kpt_plain_attributes.h"

namespace {

using namespace kpt_plain;

static_assert(KPT_WINDOW::SLACK >= BLOCK);

// Goes through a file once. The handler has start(name, attributes), end(),
// wants_text() and text(piece), and may have set_line(line), which is called before
// the first two.
//
// A register of a file takes about thirteen tags, which are a few dozen steps each.
// So the steps of a tag are inline also where the compiler would not choose so.
#define KPT_STEP [[gnu::always_inline]] inline
template <class HANDLER>
class SCANNER {
 public:
  SCANNER(KPT_BYTES& bytes, HANDLER& handler)
      : m_window(bytes), m_handler(handler), m_at(m_window.begin()), m_counted(m_at) {}

  bool is_plain() {
    if (!passes_blanks() || m_at == m_window.end() || !passes_tag()) {
      return false;
    }
    while (!m_open.empty()) {
      if (!passes_text() || !passes_tag()) {
        return false;
      }
    }
    return passes_blanks() && m_at == m_window.end() && !m_window.has_failed();
  }

 private:
  enum STEP { PASSED, CUT_OFF, NOT_PLAIN };

  // At a character that is not allowed here. The null after the window is such a character.
  STEP unexpected(const char* p) const { return p == m_window.end() ? CUT_OFF : NOT_PLAIN; }
  bool more() { return read_on(m_at); }

  static constexpr bool COUNTS_LINES = requires(HANDLER & handler) { handler.set_line(std::size_t{1}); };

  // Counts the lines of a text before it leaves the window.
  bool read_on(const char*& keep) {
    if constexpr (COUNTS_LINES) {
      count_lines_up_to(std::max(keep, m_counted));
      const auto counted = m_counted - keep;
      const bool any = m_window.more(keep);
      m_counted = keep + counted;
      return any;
    } else {
      return m_window.more(keep);
    }
  }
  void count_lines_up_to(const char* end) {
    m_lines.pass({m_counted, static_cast<std::size_t>(end - m_counted)});
    m_counted = end;
  }
  // The line of a tag that ends there.
  void tell_line(const char* end) {
    if constexpr (COUNTS_LINES) {
      count_lines_up_to(end);
      m_handler.set_line(m_lines.line());
    }
  }

  // Reads on when fewer than `count` bytes after the position are in the window.
  void see(std::size_t count) {
    while (static_cast<std::size_t>(m_window.end() - m_at) < count && more_in_text()) {
    }
  }
  // The two bytes before the position stay in the window.
  bool more_in_text() {
    const std::size_t before = std::min<std::size_t>(2, static_cast<std::size_t>(m_at - m_window.begin()));
    const char* keep = m_at - before;
    const bool any = read_on(keep);
    m_at = keep + before;
    return any;
  }
  std::string_view ahead() const { return {m_at, static_cast<std::size_t>(m_window.end() - m_at)}; }

  bool passes_blanks() {
    do {
      m_at = behind(m_at, BLANK);
    } while (m_at == m_window.end() && more());
    return m_at == m_window.end() || *m_at == '<';
  }

  // Goes to the next tag.
  KPT_STEP bool passes_text() {
    while (true) {
      const char* const start = m_at;
      m_at = behind_text(start);
      if (m_at != start && m_handler.wants_text()) {
        m_handler.text({start, static_cast<std::size_t>(m_at - start)});
      }
      if (*m_at == '<') {
        return true;
      }
      if (!passes_special()) {
        return false;
      }
    }
  }

  bool passes_special() {
    switch (*m_at) {
      case '\0':
        return m_at == m_window.end() && more_in_text();
      case '&':
        return passes_reference();
      case '\r':
        see(2);
        m_at += m_at[1] == '\n' ? 2 : 1;
        m_handler.text("\n");
        return true;
      case '>':
        // "]]>" ends a section that a plain file cannot have.
        if (m_at - m_window.begin() >= 2 && m_at[-1] == ']' && m_at[-2] == ']') {
          return false;
        }
        m_handler.text({m_at++, 1});
        return true;
      default:
        return passes_characters_beyond_ascii();
    }
  }

  bool passes_reference() {
    see(LONGEST_CHARACTER);
    char out[4];
    std::size_t size = 0;
    const std::size_t length = reference_length(ahead(), out, size);
    m_handler.text({out, size});
    m_at += length;
    return length != 0;
  }

  bool passes_characters_beyond_ascii() {
    see(LONGEST_CHARACTER);
    const char* const start = m_at;
    while (const std::size_t length = utf8_length(ahead())) {
      m_at += length;
    }
    m_handler.text({start, static_cast<std::size_t>(m_at - start)});
    return m_at != start;
  }

  // A tag is read as a whole. When the window ends within a tag, the tag is read
  // again from its beginning with more of it in the window.
  KPT_STEP bool passes_tag() {
    while (true) {
      const STEP step = m_at[1] == '/' ? end_tag() : start_tag();
      if (step != CUT_OFF) {
        return step == PASSED;
      }
      if (!more()) {
        return false;
      }
    }
  }

  KPT_STEP STEP start_tag() {
    const char* const start = m_at + 1;
    if (!is(*start, NAME_START)) {
      return unexpected(start);
    }
    const char* p = behind_name(start + 1);
    const std::string_view name(start, static_cast<std::size_t>(p - start));
    m_attributes.clear();
    while (*p != '>' && *p != '/') {
      const STEP step = attribute(p);
      if (step != PASSED) {
        return step;
      }
    }
    const bool is_empty = *p == '/';
    p += is_empty ? 1 : 0;
    if (*p != '>') {
      return unexpected(p);
    }
    if (is_reserved(name) || !m_attributes.are_unique()) {
      return NOT_PLAIN;
    }
    tell_line(p);
    m_handler.start(name, m_attributes);
    if (is_empty) {
      m_handler.end();
    } else {
      m_open.push(name);
    }
    m_at = p + 1;
    return PASSED;
  }

  // One attribute and the blanks around it.
  KPT_STEP STEP attribute(const char*& p) {
    const char* const name = behind(p, BLANK);
    if (*name == '>' || *name == '/') {
      p = name;
      return PASSED;
    }
    if (name == p || !is(*name, NAME_START)) {
      return unexpected(name);
    }
    const char* const name_end = behind(name + 1, IN_NAME);
    p = behind(name_end, BLANK);
    if (*p != '=') {
      return unexpected(p);
    }
    p = behind(p + 1, BLANK);
    if (*p != '"') {
      return unexpected(p);
    }
    const char* const value = ++p;
    bool is_as_is = true;
    const STEP step = value_end(p, is_as_is);
    if (step != PASSED) {
      return step;
    }
    const std::string_view text(name, static_cast<std::size_t>(name_end - name));
    m_attributes.add(text, {value, static_cast<std::size_t>(p - value)}, is_as_is);
    ++p;
    return is_reserved(text) ? NOT_PLAIN : PASSED;
  }

  KPT_STEP STEP value_end(const char*& p, bool& is_as_is) const {
    while (*(p = behind_value(p)) != '"') {
      const std::string_view rest(p, static_cast<std::size_t>(m_window.end() - p));
      char out[4];
      std::size_t size = 0;
      std::size_t length = 1;
      if (*p == '&') {
        length = reference_length(rest, out, size);
      } else if (!is(*p, BLANK)) {
        length = utf8_length(rest);
      }
      is_as_is = is_as_is && *p != '&' && !is(*p, BLANK);
      if (length == 0) {
        return rest.size() < LONGEST_CHARACTER ? CUT_OFF : NOT_PLAIN;
      }
      p += length;
    }
    return PASSED;
  }

  KPT_STEP STEP end_tag() {
    const char* p = m_at + 2;
    if (m_open.empty()) {
      return NOT_PLAIN;
    }
    const std::size_t size = m_open.size_of_last();
    if (static_cast<std::size_t>(m_window.end() - p) <= size) {
      return CUT_OFF;
    }
    if (!m_open.last_is_at(p, size)) {
      return NOT_PLAIN;
    }
    p = behind(p + size, BLANK);
    if (*p != '>') {
      return unexpected(p);
    }
    m_open.pop(size);
    tell_line(p);
    m_handler.end();
    m_at = p + 1;
    return PASSED;
  }

  // Names that begin with "xml" have a meaning for a parser.
  static bool is_reserved(std::string_view name) {
    return (name[0] | 0x20) == 'x' && name.size() >= 3 && (name[1] | 0x20) == 'm' && (name[2] | 0x20) == 'l';
  }

  KPT_WINDOW m_window;
  HANDLER& m_handler;
  const char* m_at;
  const char* m_counted;  // the lines before it are counted
  KPT_LINE_COUNTER m_lines;
  KPT_PLAIN_ATTRIBUTES m_attributes;
  KPT_OPEN_ELEMENTS m_open;
};
#undef KPT_STEP

// Keeps only the name of the database.
class NAME_READER {
 public:
  explicit NAME_READER(KPT_STRING& name) : m_name(name) {}

  void start(std::string_view, const KPT_PLAIN_ATTRIBUTES& attributes) {
    if (!m_had_root) {
      m_name = attributes.value(kpt_words::NAME);
      m_had_root = true;
    }
  }
  void end() {}
  static bool wants_text() { return false; }
  void text(std::string_view) {}

 private:
  KPT_STRING& m_name;
  bool m_had_root = false;
};

}  // namespace

bool kpt_is_plain(KPT_BYTES& bytes, KPT_STRING& name) {
  NAME_READER reader(name);
  return SCANNER<NAME_READER>(bytes, reader).is_plain();
}

bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_DATABASE_BUILDER& builder) {
  return SCANNER<KPT_DATABASE_BUILDER>(bytes, builder).is_plain();
}

bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_WATCHED_BUILDER& builder) {
  return SCANNER<KPT_WATCHED_BUILDER>(bytes, builder).is_plain();
}
