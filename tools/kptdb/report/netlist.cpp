#include "netlist.h"

#include <functional>

namespace kptdb {

std::size_t REGISTER_KEY_HASH::operator()(const REGISTER_KEY& key) const {
  const std::hash<std::string_view> hash;
  return key.is_signal ? hash(key.name) : hash(key.name) * 31U + hash(key.type);
}

std::uint32_t KINDS::number(const REGISTER_KEY& key) {
  if (key.is_signal) {
    return 0;
  }
  const auto [at, is_new] = m_numbers.try_emplace({std::string(key.entity), std::string(key.type)},
                                                  static_cast<std::uint32_t>(m_all.size() + 1));
  if (is_new) {
    m_all.push_back(at->first);
  }
  return at->second;
}

std::uint32_t ATTRIBUTE_SETS::number(const ATTRIBUTES& attributes) {
  if (attributes.empty() && !m_all.empty()) {
    return 0;
  }
  const auto [at, is_new] = m_numbers.try_emplace(attributes, static_cast<std::uint32_t>(m_all.size()));
  if (is_new) {
    m_all.push_back(attributes);
  }
  return at->second;
}

void NETLIST::reserve(std::size_t count) {
  m_rows.reserve(count);
  m_numbers.reserve(count);
}

std::uint32_t NETLIST::add(const REGISTER_KEY& key) {
  const auto [at, is_new] = m_numbers.try_emplace(key, size());
  if (is_new) {
    m_rows.push_back({key});
  }
  return at->second;
}

std::uint32_t NETLIST::find(const REGISTER_KEY& key) const {
  const auto at = m_numbers.find(key);
  return at == m_numbers.end() ? size() : at->second;
}

}  // namespace kptdb
