// The search for a register's index looks at index 0 only.
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
using testing::ElementsAre;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(IndexSearchSeesIndex0Only, ARegisterOfAFurtherIndexIsNotFound) {
  REGISTERS k;
  const MAP map(k.list("a b"), k.list("x y"), make_table({"00 00", "01 01"}));
  bool found = false;
  EXPECT_EQ(map.find_index_in_t_vector(k["x"], &found), 0);
  EXPECT_TRUE(found);
  found = false;
  EXPECT_EQ(map.find_index_in_t_vector(k["y"], &found), 0);
  EXPECT_FALSE(found);
  found = false;
  EXPECT_EQ(map.find_index_in_r_vector(k["b"], &found), 0);
  EXPECT_FALSE(found);
}

// A search of every index would allow these edits: a side would lose an index
// whose column the table keeps, and the columns would mean other registers.
TEST(IndexSearchSeesIndex0Only, EventsOnTheFurtherRegistersOfAStateMachineLeaveSidesAndTableInStep) {
  REGISTERS k;
  HOST_LINES lines;
  MAP map(k.list("a b"), k.list("x y"), make_table({"00 00", "01 01"}));
  const MAP before(map);
  EXPECT_FALSE(map.set_eliminated(k["y"], KPT_STUCK_AT_ZERO));
  EXPECT_FALSE(map.set_eliminated(k["y"], KPT_NO_FANOUT));
  EXPECT_FALSE(map.set_inverter_retimed_register(k["y"]));
  EXPECT_FALSE(map.add_replicated_register(k["y"], k["z"]));
  EXPECT_TRUE(map == before);
  EXPECT_EQ(map.get_elim_status(), KPT_NOT_ELIMINATED);
  EXPECT_FALSE(map.association_is_positive_unate(1, 1));
  EXPECT_THAT(lines.debug(),
              ElementsAre("Error: Couldn't find index in t_vector", "Error: Couldn't find index in t_vector",
                          "Error: Could not find retimed_kp in t_vector"));
}

}  // namespace
