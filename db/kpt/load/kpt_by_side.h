// One value for each side of a database.
//
// Ownership: owns both values.
#ifndef KPT_BY_SIDE_H
#define KPT_BY_SIDE_H

#include <array>
#include <cstddef>

#include "db/kpt/kpt_types.h"

template <class T>
class KPT_BY_SIDE {
 public:
  /// `side` is one of the two; any other value is undefined behaviour.
  T& operator[](KPT_SET_ENUM side) { return m_values[static_cast<std::size_t>(side)]; }
  const T& operator[](KPT_SET_ENUM side) const { return m_values[static_cast<std::size_t>(side)]; }
  void fill(const T& value) { m_values.fill(value); }
  auto begin() { return m_values.begin(); }
  auto end() { return m_values.end(); }

 private:
  std::array<T, 2> m_values{};
};

#endif
