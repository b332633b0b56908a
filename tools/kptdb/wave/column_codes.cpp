#include "column_codes.h"

namespace kptdb {

COLUMN_CODES::COLUMN_CODES(const std::vector<CODE_PAIR>& codes, const std::vector<std::uint32_t>& known_columns) {
  for (const auto& [reference, transformed] : codes) {
    std::string key;
    for (const std::uint32_t column : known_columns) {
      key += transformed[column];
    }
    const auto [found, is_new] = m_codes.try_emplace(std::move(key), reference);
    for (std::size_t k = 0; !is_new && k < reference.size(); ++k) {
      if (found->second[k] != reference[k]) {
        found->second[k] = 'x';
      }
    }
  }
}

const std::string* COLUMN_CODES::reference_code(const std::string& known_bits) const {
  const auto found = m_codes.find(known_bits);
  return found == m_codes.end() ? nullptr : &found->second;
}

}  // namespace kptdb
