#include "db/kpt/kpt_state_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "tests/support/host_lines.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::REFUSED_R_WRITE;
using kpt_test::REFUSED_READ;
using kpt_test::REFUSED_T_WRITE;
using testing::ElementsAre;

TEST(StateTable, NewTableHasTheDeclaredSizesAndIsAllFalse) {
  const KPT_STATE_TABLE table(2, 3, 1);
  EXPECT_EQ(table.get_number_of_states(), 2);
  EXPECT_EQ(table.get_state_reference_size(), 3);
  EXPECT_EQ(table.get_state_transformed_size(), 1);
  for (unsigned short row = 1; row <= 2; ++row) {
    for (unsigned short column = 1; column <= 3; ++column) {
      EXPECT_EQ(table.get_reference_entry(row, column), 0);
    }
    EXPECT_EQ(table.get_transformed_entry(row, 1), 0);
  }
}

TEST(StateTable, WrittenEntriesAreRead) {
  KPT_STATE_TABLE table(2, 2, 2);
  EXPECT_TRUE(table.set_reference_entry(2, 1, true));
  EXPECT_TRUE(table.set_transformed_entry(1, 2, true));
  EXPECT_EQ(table.get_reference_entry(2, 1), 1);
  EXPECT_EQ(table.get_transformed_entry(2, 1), 0);
  EXPECT_EQ(table.get_transformed_entry(1, 2), 1);
}

TEST(StateTable, WriteBeyondTheLastRowIsRefusedWithTheReferenceMessage) {
  const HOST_LINES lines;
  KPT_STATE_TABLE table(2, 1, 1);
  EXPECT_FALSE(table.set_reference_entry(3, 1, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE));
}

TEST(StateTable, WriteOutsideTheTransformedSideIsRefusedWithTheTransformedMessage) {
  const HOST_LINES lines;
  KPT_STATE_TABLE table(2, 1, 0);
  EXPECT_FALSE(table.set_transformed_entry(1, 1, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_T_WRITE));
}

TEST(StateTable, ReadOutOfBoundsIsPassedOnAsCodeTwo) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE table(1, 1, 1);
  EXPECT_EQ(table.get_reference_entry(2, 1), 2);
  EXPECT_EQ(table.get_transformed_entry(1, 2), 2);
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ));
}

TEST(StateTable, TableMadeFromAnImplementationHasItsEntries) {
  const KPT_STATE_TABLE table(make_table({"01 1", "11 0"}));
  EXPECT_EQ(table.get_number_of_states(), 2);
  EXPECT_EQ(table.get_state_reference_size(), 2);
  EXPECT_EQ(table.get_state_transformed_size(), 1);
  EXPECT_EQ(table.get_reference_entry(1, 1), 0);
  EXPECT_EQ(table.get_reference_entry(1, 2), 1);
  EXPECT_EQ(table.get_reference_entry(2, 1), 1);
  EXPECT_EQ(table.get_transformed_entry(1, 1), 1);
  EXPECT_EQ(table.get_transformed_entry(2, 1), 0);
}

TEST(StateTable, WritingNeverReachesTheImplementationItWasMadeFrom) {
  const KPT_STATE_TABLE_IMPL source = make_table({"0 0"});
  KPT_STATE_TABLE table(source);
  table.set_reference_entry(1, 1, true);
  table.set_transformed_entry(1, 1, true);
  EXPECT_TRUE(source == make_table({"0 0"}));
}

TEST(StateTable, CopyIsIndependentOfItsSource) {
  KPT_STATE_TABLE table(make_table({"01 1"}));
  KPT_STATE_TABLE copy(table);
  EXPECT_EQ(copy.get_reference_entry(1, 2), 1);
  copy.set_reference_entry(1, 1, true);
  EXPECT_EQ(table.get_reference_entry(1, 1), 0);
  table.set_transformed_entry(1, 1, false);
  EXPECT_EQ(copy.get_transformed_entry(1, 1), 1);
}

TEST(StateTable, CopyOutlivesItsSource) {
  auto table = std::make_unique<KPT_STATE_TABLE>(make_table({"01 1"}));
  const KPT_STATE_TABLE copy(*table);
  table.reset();
  EXPECT_EQ(copy.get_reference_entry(1, 2), 1);
}

TEST(StateTable, TemporaryLeavesNoEmptyTableBehind) {
  KPT_STATE_TABLE table(make_table({"01 1"}));
  const KPT_STATE_TABLE taken(static_cast<KPT_STATE_TABLE&&>(table));
  EXPECT_EQ(taken.get_reference_entry(1, 2), 1);
  EXPECT_EQ(table.get_reference_entry(1, 2), 1);
}

TEST(StateTable, CannotBeAssigned) {
  EXPECT_FALSE(std::is_copy_assignable_v<KPT_STATE_TABLE>);
  EXPECT_FALSE(std::is_move_assignable_v<KPT_STATE_TABLE>);
}

TEST(StateTable, CopyOfTheMostRowsIsEntryByEntryTheSame) {
  KPT_STATE_TABLE table(65535, 1, 2);
  for (unsigned row = 1; row <= 65535; row += 3) {
    table.set_reference_entry(static_cast<unsigned short>(row), 1, true);
    table.set_transformed_entry(static_cast<unsigned short>(row), 2, true);
  }
  const KPT_STATE_TABLE copy(table);
  for (unsigned row = 1; row <= 65535; ++row) {
    const int expected = row % 3 == 1 ? 1 : 0;
    ASSERT_EQ(copy.get_reference_entry(static_cast<unsigned short>(row), 1), expected);
    ASSERT_EQ(copy.get_transformed_entry(static_cast<unsigned short>(row), 1), 0);
    ASSERT_EQ(copy.get_transformed_entry(static_cast<unsigned short>(row), 2), expected);
  }
}

}  // namespace
