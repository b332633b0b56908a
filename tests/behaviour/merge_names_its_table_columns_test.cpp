// Merging with a state machine updates the united table with two columns that
// are formed by rule: where the kept register's map brought the machine, its
// own index and the last column; where the absorbed map did, the first column
// and the one behind the merged register's index.
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

// The column in which the product keeps the merged register's values lies one
// before the one named, for the two tables overlap. Named instead, it would
// drop other states, and a database that is recorded anew from the same
// netlist would no longer be the one that was saved.
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

// The pairs stay as the union left them, one more than the table has columns:
// a merge updates the table alone, and consumers ask the map by its pairs.
TEST(MergeNamesItsTableColumns, ThePairsDoNotFollowTheTable) {
  const DATABASE db;
  ASSERT_TRUE(db->associate_registers_signal_to_signal("b", "z"));
  ASSERT_TRUE(db.fsm("a", "x y", {"0 01", "1 10"}));
  ASSERT_TRUE(db->set_merged_registers("z", "x"));
  EXPECT_EQ(db.t_map("z")->get_num_transformed_registers(), 3);
  EXPECT_EQ(db.t_map("z")->state_table().get_num_transformed_registers(), 2);
}

}  // namespace
