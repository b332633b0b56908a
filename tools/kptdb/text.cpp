#include "text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace kptdb {

std::string printable(std::string_view text) {
  const auto is_shown = [](char c) { return c >= 0x20 && c <= 0x7E; };
  if (std::all_of(text.begin(), text.end(), is_shown)) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (is_shown(c)) {
      result += c;
    } else {
      result += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    }
  }
  return result;
}

// On a mismatch, the last star takes one more character. Earlier stars need not be tried again.
bool matches(std::string_view pattern, std::string_view text) {
  std::size_t p = 0;
  std::size_t t = 0;
  std::size_t star = std::string_view::npos;
  std::size_t retry = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      retry = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t limit) {
  const std::size_t gap = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  if (gap >= limit) {
    return limit;
  }
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    std::size_t least = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t exchanged = diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U);
      diagonal = row[j];
      row[j] = std::min({exchanged, row[j] + 1, row[j - 1] + 1});
      least = std::min(least, row[j]);
    }
    if (least >= limit) {
      return limit;
    }
  }
  return std::min(row.back(), limit);
}

std::string counted(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::vector<std::size_t> TEXT_TABLE::widths() const {
  std::vector<std::size_t> result;
  for (const auto& row : m_rows) {
    result.resize(std::max(result.size(), row.size()));
    for (std::size_t k = 0; k < row.size(); ++k) {
      result[k] = std::max(result[k], row[k].size());
    }
  }
  return result;
}

std::string TEXT_TABLE::text(std::string_view indent) const {
  const std::vector<std::size_t> columns = widths();
  std::string result;
  for (const auto& row : m_rows) {
    std::string line(indent);
    for (std::size_t k = 0; k < row.size(); ++k) {
      line += fmt::format("{:<{}}  ", row[k], columns[k]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    result += line;
    result += '\n';
  }
  return result;
}

}  // namespace kptdb
