// A copied map starts without attributes.
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;

using MAP = KPT_TRANSFORMATION_IMPL;

TEST(AttributesAreNotCopied, ACopyHasEverythingButTheAttributes) {
  REGISTERS k;
  MAP map(k.side("a~b"), k.side("x~"), make_table({"0 0", "1 1"}), KPT_STUCK_AT_ONE);
  map.add_attribute("pass", "retime");
  const MAP copy(map);
  EXPECT_TRUE(copy == map);
  EXPECT_EQ(copy.get_elim_status(), KPT_STUCK_AT_ONE);
  EXPECT_EQ(copy.get_attribute("pass"), "");
  EXPECT_EQ(map.get_attribute("pass"), "retime");
}

// Attributes are a client's notes on one map of one database. Copied attributes
// would appear on the maps of a united database, and the client could not
// distinguish them from notes that it made there.
TEST(AttributesAreNotCopied, NotesOnACopyAndOnItsSourceStayApart) {
  REGISTERS k;
  MAP map(k["a"], k["x"]);
  map.add_attribute("seen", "1");
  MAP copy(map);
  EXPECT_FALSE(copy.remove_attribute("seen"));
  copy.add_attribute("checked", "1");
  EXPECT_EQ(map.get_attribute("checked"), "");
  EXPECT_EQ(MAP(copy).get_attribute("checked"), "");
}

}  // namespace
