#include "machine_table.h"

#include <algorithm>
#include <utility>

namespace kpt_yosys {

namespace {

using COLUMNS = std::vector<MACHINE_TABLE::COLUMN>;

constexpr std::size_t MOST_STATES = 65535;

const MACHINE_TABLE::COLUMN* column_of(const COLUMNS& columns, int number) {
  const auto found = std::find_if(columns.begin(), columns.end(), [number](const MACHINE_TABLE::COLUMN& column) {
    return column.m_register == number;
  });
  return found != columns.end() ? &*found : nullptr;
}

// Whether the machines agree on their common registers when one is in state `i` and the other in state `j`.
bool agree(const COLUMNS& a, const COLUMNS& b, std::size_t i, std::size_t j) {
  return std::all_of(a.begin(), a.end(), [&](const MACHINE_TABLE::COLUMN& column) {
    const MACHINE_TABLE::COLUMN* const same = column_of(b, column.m_register);
    return same == nullptr || column.m_values[i] == same->m_values[j];
  });
}

COLUMNS joined_columns(const COLUMNS& a, const COLUMNS& b,
                       const std::vector<std::pair<std::size_t, std::size_t>>& states) {
  COLUMNS all;
  const auto add = [&](const MACHINE_TABLE::COLUMN& column, bool of_a) {
    MACHINE_TABLE::COLUMN values{column.m_register, {}};
    for (const auto& [i, j] : states) {
      values.m_values.push_back(column.m_values[of_a ? i : j]);
    }
    all.push_back(std::move(values));
  };
  for (const MACHINE_TABLE::COLUMN& column : a) {
    add(column, true);
  }
  for (const MACHINE_TABLE::COLUMN& column : b) {
    if (column_of(a, column.m_register) == nullptr) {
      add(column, false);
    }
  }
  return all;
}

}  // namespace

bool share_register(const MACHINE_TABLE& a, const MACHINE_TABLE& b) {
  return std::any_of(a.m_transformed.begin(), a.m_transformed.end(), [&b](const MACHINE_TABLE::COLUMN& column) {
    return column_of(b.m_transformed, column.m_register) != nullptr;
  });
}

std::optional<MACHINE_TABLE> joined(const MACHINE_TABLE& a, const MACHINE_TABLE& b) {
  std::vector<std::pair<std::size_t, std::size_t>> states;
  for (std::size_t i = 0; i < a.m_states; ++i) {
    for (std::size_t j = 0; j < b.m_states; ++j) {
      if (agree(a.m_transformed, b.m_transformed, i, j) && agree(a.m_reference, b.m_reference, i, j)) {
        states.emplace_back(i, j);
      }
    }
    if (states.size() > MOST_STATES) {
      return std::nullopt;
    }
  }
  if (states.empty()) {
    return std::nullopt;
  }
  MACHINE_TABLE both;
  both.m_reference = joined_columns(a.m_reference, b.m_reference, states);
  both.m_transformed = joined_columns(a.m_transformed, b.m_transformed, states);
  both.m_states = states.size();
  both.m_members = a.m_members + b.m_members;
  return both;
}

}  // namespace kpt_yosys
