// A merge with a state machine updates the united table with two columns, which a
// rule determines. When the kept register's map has the machine, they are its own
// index and the last column. When the absorbed map has it, they are the first
// column and the one after the merged register's index.
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/databases.h"

namespace {

using kpt_test::DATABASE;
using kpt_test::make_table;
using kpt_test::STATES;
using kpt_test::states_of;

// The table of the united map before the merge updates it.
KPT_STATE_TABLE_IMPL product(const STATES& kept, const STATES& absorbed) {
  return make_table(kept).cross_product_table(make_table(absorbed));
}

STATES updated(KPT_STATE_TABLE_IMPL table, unsigned short a, unsigned short b) {
  table.remove_invalid_rows(a, b);
  table.remove_t_column(b);
  return states_of(table);
}

const STATES PLAIN = {"0 0", "1 1"};

TEST(MergeNamesItsTableColumns, MachineKeptNamesItsIndexAndTheLastColumn) {
  const STATES machine = {"0 01", "1 10", "1 11"};
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", machine));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  ASSERT_TRUE(db->set_merged_registers("x", "z"));
  EXPECT_EQ(db.of_t("x"), "a~|b~ -> x~|y~|~");
  EXPECT_EQ(states_of(db.t_map("x")->state_table()), updated(product(machine, PLAIN), 1, 3));
}

TEST(MergeNamesItsTableColumns, MachineAbsorbedNamesTheFirstColumnAndTheOneBehindTheMerged) {
  const STATES machine = {"0 01", "1 10", "1 11"};
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  ASSERT_TRUE(db.fsm("a", "x y", machine));
  ASSERT_TRUE(db->set_merged_registers("z", "x"));
  EXPECT_EQ(db.of_t("z"), "b~|a~ -> z~|~|y~");
  EXPECT_EQ(states_of(db.t_map("z")->state_table()), updated(product(PLAIN, machine), 1, 2));
}

// The tables overlap, so the product has the values of the merged register one
// column before the column that the rule names. With that column, the merge would
// drop other states, and flows that compare their databases would see another
// one.
TEST(MergeNamesItsTableColumns, TheMergedRegistersOwnColumnWouldKeepOtherStates) {
  const STATES machine = {"0 01", "1 10", "1 11"};
  const DATABASE db;
  ASSERT_TRUE(db.fsm("a", "x y", machine));
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  ASSERT_TRUE(db->set_merged_registers("x", "z"));
  const STATES kept = states_of(db.t_map("x")->state_table());
  EXPECT_NE(kept, updated(product(machine, PLAIN), 1, 2));
  EXPECT_EQ(db.t_map("x")->get_number_of_states(), kept.size());
}

// The pairs stay as the union made them, one more than the table has columns: a
// merge updates only the table, and consumers ask the map by its pairs.
TEST(MergeNamesItsTableColumns, ThePairsDoNotFollowTheTable) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  ASSERT_TRUE(db.fsm("a", "x y", {"0 01", "1 10"}));
  ASSERT_TRUE(db->set_merged_registers("z", "x"));
  EXPECT_EQ(db.t_map("z")->get_num_transformed_registers(), 3);
  EXPECT_EQ(db.t_map("z")->state_table().get_num_transformed_registers(), 2);
}

}  // namespace
