// The elimination for no fanout passes its index, which counts from 0, as a column
// of the state table, which counts from 1. Column 0 means the first column.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::REGISTERS;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(NoFanoutPassesItsIndexAsAColumn, TheFirstColumnGoesForIndex0) {
  REGISTERS k;
  MAP map(k.list("a"), k.list("x y z"), make_table({"0 100", "1 011"}));
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "a~ -> y~|z~");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 00", "1 11"}));
}

// If column 0 were refused, index 0 would keep a register that is no longer in
// the netlist, and no index could be removed.
TEST(NoFanoutPassesItsIndexAsAColumn, RegistersAreEliminatedOneByOneAndTheTableFollows) {
  REGISTERS k;
  HOST_LINES lines;
  MAP map(k.list("a"), k.list("x y z"), make_table({"0 100", "1 010", "1 001"}));
  EXPECT_TRUE(map.set_eliminated(k["x"], KPT_NO_FANOUT));
  EXPECT_TRUE(map.set_eliminated(k["y"], KPT_NO_FANOUT));
  EXPECT_EQ(text_of(map), "a~ -> z~");
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 0", "1 0", "1 1"}));
  EXPECT_TRUE(map.has_no_fanout());
  EXPECT_THAT(lines.debug(), testing::IsEmpty());
}

}  // namespace
