#include "scopes.h"

namespace kptdb {

namespace {

// A name with more parts keeps the remaining ones in its last part, so that no name makes a deep tree.
constexpr std::size_t MOST_LEVELS = 32;

// Visits the positions of a name's separators.
template <class VISIT>
void for_each_separator(std::string_view name, VISIT visit) {
  std::size_t depth = 0;
  std::size_t levels = 0;
  std::size_t begin = 0;
  for (std::size_t k = 0; k + 1 < name.size() && levels < MOST_LEVELS; ++k) {
    depth += name[k] == '[' ? 1U : 0U;
    depth -= name[k] == ']' && depth > 0 ? 1U : 0U;
    if ((name[k] == '.' || name[k] == '/') && depth == 0 && k > begin) {
      visit(begin, k);
      begin = k + 1;
      ++levels;
    }
  }
}

}  // namespace

std::uint32_t SCOPES::scope_of(std::string_view name) {
  std::size_t length = 0;
  for_each_separator(name, [&](std::size_t, std::size_t end) { length = end + 1; });
  const std::string_view path = name.substr(0, length);
  if (path == m_last_path) {
    return m_last;
  }
  std::uint32_t scope = 0;
  for_each_separator(name, [&](std::size_t begin, std::size_t end) {
    const auto [at, is_new] = m_numbers.try_emplace(name.substr(0, end + 1), static_cast<std::uint32_t>(m_all.size()));
    if (is_new) {
      m_all.push_back({name.substr(begin, end + 1 - begin), scope});
    }
    scope = at->second;
  });
  m_last_path = path;
  m_last = scope;
  return scope;
}

}  // namespace kptdb
