// State tables as short texts. A state is one text: the reference bits, a blank,
// the transformed bits. "10 1" is a state with two reference registers, the first
// of them true, and one transformed register, which is true.
//
// Ownership: the caller owns the results.
#ifndef TESTS_SUPPORT_STATE_TABLE_TEXT_H
#define TESTS_SUPPORT_STATE_TABLE_TEXT_H

#include <string>
#include <vector>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/messages.h"

namespace kpt_test {

using STATES = std::vector<std::string>;

/// All states have as many registers as the first. There is at least one state.
inline KPT_STATE_TABLE_IMPL make_table(const STATES& states) {
  const std::size_t blank = states.front().find(' ');
  const std::size_t num_t = states.front().size() - blank - 1;
  KPT_STATE_TABLE_IMPL table(static_cast<unsigned short>(states.size()), static_cast<unsigned short>(blank),
                             static_cast<unsigned short>(num_t));
  for (std::size_t s = 0; s < states.size(); ++s) {
    const auto row = static_cast<unsigned short>(s + 1);
    for (std::size_t c = 0; c < states[s].size(); ++c) {
      if (states[s][c] == '1') {
        if (c < blank) {
          table.set_reference_entry(row, static_cast<unsigned short>(c + 1), true);
        } else {
          table.set_transformed_entry(row, static_cast<unsigned short>(c - blank), true);
        }
      }
    }
  }
  return table;
}

inline STATES states_of(const KPT_STATE_TABLE_IMPL& table) {
  STATES states;
  for (unsigned row = 1; row <= table.get_num_states(); ++row) {
    std::string state;
    for (unsigned c = 1; c <= table.get_num_reference_registers(); ++c) {
      state +=
          std::to_string(table.get_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(c)));
    }
    state += ' ';
    for (unsigned c = 1; c <= table.get_num_transformed_registers(); ++c) {
      state +=
          std::to_string(table.get_transformed_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(c)));
    }
    states.push_back(state);
  }
  return states;
}

}  // namespace kpt_test

#endif
