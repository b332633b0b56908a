#include "host_lines.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "host/kpt_host.h"
#include "text.h"

namespace kptdb {

namespace {

// More lines than a failing operation issues; a load issues one for every odd table.
constexpr std::size_t MOST_LINES = 100;

// The beginnings and ends of lines about failures. All other lines announce or time an operation.
constexpr std::array<std::string_view, 2> BEGINNINGS{"Error: ", "Caught "};
constexpr std::array<std::string_view, 2> ENDS{" does not exist in T", " already exists in T"};

bool tells_of_failure(std::string_view line) {
  return std::any_of(BEGINNINGS.begin(), BEGINNINGS.end(), [&](auto text) { return line.starts_with(text); }) ||
         std::any_of(ENDS.begin(), ENDS.end(), [&](auto text) { return line.ends_with(text); });
}

// Some of the library's lines contain the blanks of a longer text.
std::string on_one_line(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool is_blank = c == '\t' || c == '\n' || c == ' ';
    if (!is_blank) {
      result += c;
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  return printable(result);
}

bool debug_is_wanted() {
  const char* value = std::getenv("KPT_DEBUG");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

}  // namespace

HOST_LINES::HOST_LINES() {
  const auto keep = [](std::vector<std::string>& lines, const char* text) {
    if (lines.size() < MOST_LINES) {
      lines.emplace_back(text);
    }
  };
  kpt_host::set_debug_sink([this, keep](const char*, const char* text) { keep(m_debug_lines, text); });
  kpt_host::set_error_sink([this, keep](const char*, const char* text) { keep(m_errors, text); });
  kpt_host::set_debug(true);
}

HOST_LINES::~HOST_LINES() {
  kpt_host::set_debug(debug_is_wanted());
  kpt_host::set_debug_sink({});
  kpt_host::set_error_sink({});
}

void HOST_LINES::clear() {
  m_debug_lines.clear();
  m_errors.clear();
}

std::string HOST_LINES::reason() const {
  if (!m_errors.empty()) {
    return on_one_line(m_errors.front());
  }
  const auto line = std::find_if(m_debug_lines.begin(), m_debug_lines.end(), tells_of_failure);
  return line == m_debug_lines.end() ? std::string() : on_one_line(*line);
}

}  // namespace kptdb
