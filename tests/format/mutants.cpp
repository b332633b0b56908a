#include "tests/format/mutants.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kpt_test {

namespace {

constexpr std::string_view WORDS[] = {
    "<kpt_db name=\"d\">",
    "<key_points_set type=\"reference\">",
    "</key_points_set>",
    "<key_point id=\"3\" type=\"register\">",
    "</key_point>",
    "<name>",
    "</name>",
    "<name>n</name>",
    "<entity>u</entity>",
    "<reg_type>d</reg_type>",
    "<transformations_set>",
    "</transformations_set>",
    "<transformations_set/>",
    "<transformation elim_type=\"stuck_at_one\">",
    "</transformation>",
    "<kp_set type=\"transformed\">",
    "</kp_set>",
    "<kp_state index=\"0\">",
    "</kp_state>",
    "<noninverts>",
    "</noninverts>",
    "<inverts><kp id=\"1\"/></inverts>",
    "<kp id=\"2\"/>",
    "<state_table num_states=\"2\" num_reference_registers=\"1\" num_transformed_registers=\"1\">",
    "<state_table type=\"reference\" num_states=\"1\" num_reference_registers=\"1\">",
    "</state_table>",
    "<state index=\"1\">",
    "</state>",
    "<reference>",
    "</reference>",
    "<transformed><value index=\"0\">1</value></transformed>",
    "<value index=\"0\"> 1  </value>",
    "<value index=\"0\">",
    "</value>",
    "<notes><note name=\"a\">b</note></notes>",
    "<!-- -->",
    "<?name n?>",
    "<?state_table?>",
    "<?noninverts?>",
    "<?reference?>",
    "<![CDATA[1]]>",
    "]]>",
    "]]&gt;",
    "<?xml version=\"1.0\"?>",
    "<!DOCTYPE kpt_db [<!ENTITY name 'n'><!ENTITY e '1'>]>",
    "&e;",
    "&name;",
    "&lt;",
    "&amp;",
    "&quot;",
    "&#65;",
    "&#x42;",
    "&#10;",
    "&#1;",
    "&",
    "<",
    ">",
    "\"",
    "'",
    "\r\n",
    "\r",
    "\t",
    "\xC3\xA9",
    "\xE2\x82\xAC",
    "\xF0\x9F\x98\x80",
    "\xEF\xBF\xBE",
    "\xED\xA0\x80",
    "\xC0\x80",
    "\xFF",
    "\xEF\xBB\xBF",
    "\x01",
    "\x7F",
    "xmlns=\"u\"",
    " a:b=\"c\"",
};

constexpr std::string_view NUMBERS[] = {"0",  "1",  "2",  "3",   "-1",         "65535", "65536",       "65537", "",
                                        " 1", "1 ", "+1", "1e9", "2147483647", "001",   "99999999999", "0x1"};

constexpr std::string_view ATTRIBUTES[] = {
    "type=\"reference\"", "type=\"\"", "type=\"register\"", "id=\"1\"",
    "name=\"d\"",         "x='y'",     "index = \"1\"",     "elim_type=\"no_fanout\""};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string MUTANTS::word() { return std::string(WORDS[below(std::size(WORDS))]); }

std::string MUTANTS::number() { return std::string(NUMBERS[below(std::size(NUMBERS))]); }

// The position of one of the marks, searched from a random position on; the end when there is none.
std::size_t MUTANTS::place(const std::string& text, char mark) {
  const std::size_t found = text.empty() ? std::string::npos : text.find(mark, below(text.size()));
  return std::min(found, text.size());
}

std::string MUTANTS::next() {
  std::string text = m_files[below(m_files.size())];
  for (std::size_t count = 1 + below(3); count > 0; --count) {
    mutate(text);
  }
  return text;
}

void MUTANTS::mutate(std::string& text) {
  const std::size_t at = below(text.size() + 1);
  switch (below(12)) {
    case 0:
      text.insert(at, 1, static_cast<char>(below(256)));
      break;
    case 1:
      text.erase(at, 1 + below(4));
      break;
    case 2:
      if (at < text.size()) {
        text[at] = static_cast<char>(below(256));
      }
      break;
    case 3:
    case 4:
      text.insert(at, word());
      break;
    case 5:
      text.insert(place(text, '<'), word());
      break;
    case 6:
    case 7:
      replace_number(text);
      break;
    case 8:
      change_attribute(text);
      break;
    case 9:
      text.insert(place(text, ">< \n"[below(4)]), "  \t\n \r"[below(6)] == '\r' ? "\r\n" : " ");
      break;
    case 10:
      move_element(text);
      break;
    default:
      if (below(8) == 0) {
        text.resize(at);
      } else {
        move_element(text);
      }
  }
}

void MUTANTS::replace_number(std::string& text) {
  const auto from = text.begin() + static_cast<std::ptrdiff_t>(below(text.size() + 1));
  const auto begin = std::find_if(from, text.end(), is_digit);
  const auto end = std::find_if_not(begin, text.end(), is_digit);
  text.replace(begin, end, number());
}

// One attribute more, one less, or one in single quotes.
void MUTANTS::change_attribute(std::string& text) {
  const std::size_t equals = place(text, '=');
  if (equals == text.size()) {
    return;
  }
  const std::size_t end = std::min(text.find('"', equals + 2), text.size() - 1);
  const std::size_t name = text.rfind(' ', equals);
  switch (below(3)) {
    case 0:
      text.insert(end + 1, " " + std::string(ATTRIBUTES[below(std::size(ATTRIBUTES))]));
      break;
    case 1:
      if (name != std::string::npos) {
        text.erase(name, end + 1 - name);
      }
      break;
    default:
      text[end] = '\'';
      if (equals + 1 < text.size()) {
        text[equals + 1] = '\'';
      }
  }
}

// The text between two tags, copied or moved to a third tag.
void MUTANTS::move_element(std::string& text) {
  const std::size_t begin = place(text, '<');
  const std::size_t end = begin == text.size() ? begin : std::min(text.find('<', begin + 1 + below(80)), text.size());
  const std::string piece = text.substr(begin, end - begin);
  if (below(2) == 0) {
    text.erase(begin, end - begin);
  }
  text.insert(place(text, '<'), piece);
}

}  // namespace kpt_test
