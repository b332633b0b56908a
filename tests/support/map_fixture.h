// What the tests of single maps share: registers, and maps written as text.
//
// Ownership: the fixture owns the registers that its maps list.
#ifndef TESTS_SUPPORT_MAP_FIXTURE_H
#define TESTS_SUPPORT_MAP_FIXTURE_H

#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace kpt_test {

class MAP_TEST : public testing::Test {
 protected:
  using MAP = KPT_TRANSFORMATION_IMPL;

  MAP plain(const char* r, const char* t, KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) {
    return MAP(k.side(r), k.side(t), status);
  }
  MAP fsm(const char* r, const char* t, const STATES& states, KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) {
    return MAP(k.side(r), k.side(t), make_table(states), status);
  }

  REGISTERS k;
};

}  // namespace kpt_test

#endif
