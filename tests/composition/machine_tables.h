// A state table that tests of compositions share.
//
// Ownership: plain values.
#ifndef TESTS_COMPOSITION_MACHINE_TABLES_H
#define TESTS_COMPOSITION_MACHINE_TABLES_H

#include "db/kpt/kpt_state_table.h"

namespace kpt_test {

/// Three states of two bits: 00, 10 and 01 became 00, 10 and 11.
inline KPT_STATE_TABLE count_to_three() {
  KPT_STATE_TABLE table(3, 2, 2);
  table.set_reference_entry(2, 1, true);
  table.set_reference_entry(3, 2, true);
  table.set_transformed_entry(2, 1, true);
  table.set_transformed_entry(3, 1, true);
  table.set_transformed_entry(3, 2, true);
  return table;
}

}  // namespace kpt_test

#endif
