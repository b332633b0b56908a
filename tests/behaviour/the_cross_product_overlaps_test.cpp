// In the product of two state tables, states s and u meet in row s + u - 1, and
// the second table's columns begin at the first one's last column.
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(TheCrossProductOverlaps, RowsAndColumnsOverlapAndTheRestStaysFalse) {
  REGISTERS k;
  MAP map(k.list("a b"), k.list("x y"), make_table({"11 11", "10 11", "11 10"}));
  EXPECT_TRUE(map.make_union(MAP(k["c"], k["z"])));
  EXPECT_EQ(text_of(map), "a~|b~|c~ -> x~|y~|z~");
  // Column 2 is that of the plain map: 0, then 1, from each row on. Column 3 is never written.
  EXPECT_EQ(states_of(map.get_register_state_table()),
            (STATES{"100 100", "100 100", "100 100", "110 110", "000 000", "000 000"}));
}

// A merge into a state machine removes the states in which the two registers
// differ. Flows compare the table that results from this layout. With all states
// side by side, the same merge would leave another encoding.
TEST(TheCrossProductOverlaps, AMergeIntoAStateMachineLeavesTheStatesOfThisPlacement) {
  REGISTERS k;
  MAP map(k.list("a"), k.list("x"), make_table({"0 0", "1 1", "0 1"}));
  EXPECT_TRUE(map.make_union(MAP(k["b"], k["y"])));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 00", "00 00", "00 00", "10 10", "00 00", "00 00"}));
  EXPECT_TRUE(map.update_state_table(1, map.get_num_transformed_registers()));
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"00 0", "00 0", "00 0", "00 0", "00 0"}));
}

}  // namespace
