#include "name_query.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "files.h"
#include "outcome.h"
#include "text.h"

namespace kptdb {

namespace {

std::vector<std::string> names_from(const std::string& path) {
  std::vector<std::string> names;
  LINE_READER reader(path);
  for (std::string line; reader.next(line);) {
    line.erase(line.find_last_not_of('\r') + 1);
    if (!line.empty()) {
      names.push_back(line);
    }
  }
  return names;
}

}  // namespace

void NAME_QUERY::FREE::operator()(regex_t* regex) const {
  ::regfree(regex);
  delete regex;
}

NAME_QUERY::NAME_QUERY(const NAME_OPTIONS& options) : m_any_case(options.any_case) {
  for (const std::string& name : options.names) {
    add(name, options);
  }
  if (!options.from.empty()) {
    for (const std::string& name : names_from(options.from)) {
      add(name, options);
    }
  }
}

std::string NAME_QUERY::fold(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return result;
}

void NAME_QUERY::add(const std::string& name, const NAME_OPTIONS& options) {
  if (options.is_regex) {
    m_patterns.push_back(compiled(name));
  } else {
    const std::string text = m_any_case ? fold(name) : name;
    if (!m_exact.emplace(text, m_names.size()).second) {
      return;
    }
    if (options.is_glob || name.find_first_of("*?") != std::string::npos) {
      // A register with the pattern as its name matches the pattern as well.
      m_exact.erase(text);
      m_patterns.push_back({m_names.size(), text, nullptr});
    }
  }
  m_names.push_back(name);
}

NAME_QUERY::PATTERN NAME_QUERY::compiled(const std::string& name) const {
  auto regex = std::make_unique<regex_t>();
  const int problem = ::regcomp(regex.get(), name.c_str(), REG_EXTENDED | REG_NOSUB | (m_any_case ? REG_ICASE : 0));
  if (problem != 0) {
    std::string reason(256, '\0');
    reason.resize(::regerror(problem, regex.get(), reason.data(), reason.size()) - 1);
    throw FAILURE(EXIT_WRONG_USE, fmt::format("{} is no regular expression: {}", printable(name), reason));
  }
  return {m_names.size(), {}, std::unique_ptr<regex_t, FREE>(regex.release())};
}

bool NAME_QUERY::matches(const PATTERN& pattern, std::string_view text) {
  if (pattern.regex == nullptr) {
    return kptdb::matches(pattern.glob, text);
  }
  regmatch_t all{};
  all.rm_eo = static_cast<regoff_t>(text.size());
  return ::regexec(pattern.regex.get(), text.data() == nullptr ? "" : text.data(), 1, &all, REG_STARTEND) == 0;
}

bool NAME_QUERY::matches_any(std::string_view text) const {
  bool found = false;
  for_each_match(text, [&](std::size_t) { found = true; });
  return found;
}

}  // namespace kptdb
