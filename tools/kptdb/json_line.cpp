#include "json_line.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace kptdb {

namespace {

// Whether JSON has the character as it is. Bytes beyond ASCII may be no characters at all.
bool is_plain(char c) { return c >= 0x20 && c != '"' && c != '\\'; }

}  // namespace

void JSON_LINE::clear() {
  m_text.clear();
  m_has_before = false;
}

void JSON_LINE::separate() {
  if (m_has_before) {
    m_text += ',';
  }
}

void JSON_LINE::open(char bracket) {
  separate();
  m_text += bracket;
  m_has_before = false;
}

void JSON_LINE::close(char bracket) {
  m_text += bracket;
  m_has_before = true;
}

void JSON_LINE::key(std::string_view name) {
  separate();
  m_text += '"';
  m_text += name;
  m_text += "\":";
  m_has_before = false;
}

void JSON_LINE::put(std::string_view value) {
  separate();
  m_text += value;
  m_has_before = true;
}

void JSON_LINE::add(long number) {
  char digits[24];
  const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), number);
  put({digits, static_cast<std::size_t>(end - digits)});
}

void JSON_LINE::add(std::string_view text) {
  separate();
  if (std::all_of(text.begin(), text.end(), is_plain)) {
    m_text += '"';
    m_text += text;
    m_text += '"';
  } else {
    put_escaped(text);
  }
  m_has_before = true;
}

void JSON_LINE::add_named(std::string_view name, std::string_view text) {
  add(name);
  m_text += ':';
  m_has_before = false;
  add(text);
}

void JSON_LINE::put_escaped(std::string_view text) {
  using JSON = nlohmann::json;
  const auto handler = m_invalid == REPLACED ? JSON::error_handler_t::replace : JSON::error_handler_t::strict;
  m_text += JSON(text).dump(-1, ' ', false, handler);
}

}  // namespace kptdb
