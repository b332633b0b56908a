// The header of a value-change dump: scopes and variables.
#include <charconv>

#include "../outcome.h"
#include "../text.h"
#include "vcd_reader.h"

namespace kptdb {

namespace {

bool read_number(std::string_view text, std::int64_t& value) {
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
  // Sums and differences of these numbers have to fit the type.
  return problem == std::errc() && end == text.data() + text.size() && value > -(std::int64_t{1} << 40) &&
         value < (std::int64_t{1} << 40);
}

struct RANGE {
  VCD_INDEX index = NO_INDEX;
  std::int64_t msb = 0;
  std::int64_t lsb = 0;
  std::uint64_t width() const { return static_cast<std::uint64_t>(msb < lsb ? lsb - msb : msb - lsb) + 1; }
};

// "[7:0]" or "[3]"; NO_INDEX for anything else.
RANGE range_of(std::string_view text) {
  RANGE range;
  if (text.size() < 3 || text.front() != '[' || text.back() != ']') {
    return range;
  }
  text = text.substr(1, text.size() - 2);
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) {
    range.index = read_number(text, range.msb) ? BIT_INDEX : NO_INDEX;
    range.lsb = range.msb;
  } else if (read_number(text.substr(0, colon), range.msb) && read_number(text.substr(colon + 1), range.lsb)) {
    range.index = RANGE_INDEX;
  }
  return range;
}

// Removes the mark of an escaped name.
bool unescape(std::string& name) {
  if (name.size() < 2 || name.front() != '\\') {
    return false;
  }
  name.erase(0, 1);
  return true;
}

void take(VCD_VARIABLE& variable, const RANGE& range) {
  variable.index = range.index;
  variable.msb = range.msb;
  variable.lsb = range.lsb;
}

}  // namespace

void VCD_READER::read_header() {
  for (;;) {
    const std::string_view keyword = token_of("the header");
    if (keyword.front() != '$') {
      fail("no declaration: " + printable(keyword.substr(0, 40)));
    }
    if (!read_declaration(keyword)) {
      return;
    }
  }
}

bool VCD_READER::read_declaration(std::string_view keyword) {
  if (keyword == "$var") {
    read_variable();
  } else if (keyword == "$scope") {
    read_scope();
  } else if (keyword == "$upscope") {
    leave_scope();
  } else if (keyword == "$timescale") {
    for (const std::string& word : words_up_to_end()) {
      m_timescale += (m_timescale.empty() ? "" : " ") + word;
    }
  } else if (keyword == "$enddefinitions") {
    skip_to_end();
    return false;
  } else {
    skip_to_end();  // $date, $version, $comment, and additions of some programs
  }
  return true;
}

void VCD_READER::skip_to_end() {
  while (token_of("a declaration") != "$end") {
  }
}

std::vector<std::string> VCD_READER::words_up_to_end() {
  std::vector<std::string> words;
  for (std::string_view word = token_of("a declaration"); word != "$end"; word = token_of("a declaration")) {
    if (word == "$var" || word == "$scope" || word == "$upscope" || word == "$enddefinitions") {
      fail("a declaration without $end before " + std::string(word));
    }
    words.emplace_back(word);
  }
  return words;
}

void VCD_READER::read_scope() {
  const std::vector<std::string> words = words_up_to_end();
  if (words.size() < 2) {
    fail("$scope without a type and a name");
  }
  VCD_SCOPE scope;
  scope.type = words[0];
  scope.name = words[1];
  for (std::size_t k = 2; k < words.size(); ++k) {
    scope.name += ' ' + words[k];
  }
  scope.is_escaped = unescape(scope.name);
  scope.parent = m_scope;
  m_scope = static_cast<std::uint32_t>(m_scopes.size());
  m_scopes.push_back(std::move(scope));
}

void VCD_READER::leave_scope() {
  skip_to_end();
  if (m_scope == 0) {
    fail("$upscope outside of every scope");
  }
  m_scope = m_scopes[m_scope].parent;
}

void VCD_READER::read_variable() {
  std::vector<std::string> words = words_up_to_end();
  if (words.size() < 4) {
    fail("$var without type, size, identifier and name");
  }
  std::int64_t width = 0;
  if (!read_number(words[1], width) || width < 0 || width > std::int64_t{0x7fffffff}) {
    fail("no size of a variable: " + printable(words[1]));
  }
  VCD_VARIABLE variable;
  variable.scope = m_scope;
  variable.is_integer = words[0] == "integer";
  variable.is_number = width == 0 || words[0] == "real" || words[0] == "realtime" || words[0] == "shortreal" ||
                       words[0] == "string" || words[0] == "event";
  variable.signal = declare_signal(words[2], static_cast<std::uint32_t>(width), variable.is_number);
  words.erase(words.begin(), words.begin() + 3);
  read_reference(variable, static_cast<std::uint32_t>(width), std::move(words));
  m_variables.push_back(std::move(variable));
}

// Simulators write "data [7:0]", "data[7:0]", "data [7]" and "data[7]". Anything but
// a range of this width is part of the name: "\mem[3] [7:0]" is word 3 of a memory.
void VCD_READER::read_reference(VCD_VARIABLE& variable, std::uint32_t width, std::vector<std::string> words) const {
  variable.name = words.front();
  RANGE range;
  for (std::size_t k = 1; k < words.size(); ++k) {
    const bool is_last = k + 1 == words.size();
    range = is_last ? range_of(words[k]) : RANGE();
    if (range.index == RANGE_INDEX && range.width() != width && !variable.is_number) {
      fail("the range " + printable(words[k]) + " is not one of " + std::to_string(width) + " bits");
    }
    if (range.index == NO_INDEX || range.width() != width) {
      range = RANGE();
      variable.name += (words[k].front() == '[' ? "" : " ") + words[k];
    }
  }
  variable.is_escaped = unescape(variable.name);
  const std::size_t bracket = variable.name.rfind('[');
  if (range.index == NO_INDEX && bracket != std::string::npos && bracket > 0) {
    range = range_of(std::string_view(variable.name).substr(bracket));
    if (range.index != NO_INDEX && range.width() == width && (range.index == BIT_INDEX || !variable.is_escaped)) {
      variable.name.erase(bracket);
    } else {
      range = RANGE();
    }
  }
  if (range.index == NO_INDEX && width > 1) {
    range = {RANGE_INDEX, static_cast<std::int64_t>(width) - 1, 0};
  }
  take(variable, range);
}

std::uint32_t VCD_READER::declare_signal(const std::string& code, std::uint32_t width, bool is_number) {
  for (const char c : code) {
    if (c < '!' || c > '~') {
      fail("no identifier: " + printable(code.substr(0, 40)));
    }
  }
  const auto [found, is_new] = m_signal_of_code.try_emplace(code, static_cast<std::uint32_t>(m_signals.size()));
  if (is_new) {
    m_signals.push_back({width, NO_BIT, is_number});
  } else if (m_signals[found->second].is_number != is_number ||
             (m_signals[found->second].width != width && !is_number)) {
    fail("the identifier " + code + " has " + std::to_string(m_signals[found->second].width) + " bits elsewhere");
  }
  return found->second;
}

}  // namespace kptdb
