#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::REFUSED_R_WRITE;
using kpt_test::REFUSED_READ;
using kpt_test::REFUSED_T_WRITE;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// --- flip_bits_of_t_column ---

TEST(FlipColumn, InvertsOneTransformedColumnCountedFromZero) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 010", "1 001", "0 111"});
  table.flip_bits_of_t_column(1);
  EXPECT_EQ(states_of(table), (STATES{"0 000", "1 011", "0 101"}));
}

TEST(FlipColumn, TwiceRestoresTheTable) {
  const KPT_STATE_TABLE_IMPL before = make_table({"0 010", "1 001", "0 111"});
  KPT_STATE_TABLE_IMPL table(before);
  table.flip_bits_of_t_column(2);
  EXPECT_FALSE(table == before);
  table.flip_bits_of_t_column(2);
  EXPECT_TRUE(table == before);
}

TEST(FlipColumn, LeavesATableWithoutRowsOrColumnsAlone) {
  KPT_STATE_TABLE_IMPL no_rows(0, 1, 2);
  no_rows.flip_bits_of_t_column(0);
  EXPECT_TRUE(no_rows == KPT_STATE_TABLE_IMPL(0, 1, 2));
  KPT_STATE_TABLE_IMPL no_columns(2, 1, 0);
  no_columns.flip_bits_of_t_column(0);
  EXPECT_TRUE(no_columns == KPT_STATE_TABLE_IMPL(2, 1, 0));
}

// The position is computed as for any column, so it is in the rows below. For the
// last row it is past the end, and nothing is inverted.
TEST(FlipColumn, ColumnBeyondTheCountInvertsTheRowsBelow) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 00", "0 00", "0 00"});
  table.flip_bits_of_t_column(3);
  EXPECT_EQ(states_of(table), (STATES{"0 00", "0 01", "0 01"}));
}

TEST(FlipColumn, ColumnPastTheWholeTableInvertsNothing) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table = make_table({"0 00", "0 00"});
  table.flip_bits_of_t_column(4);
  table.flip_bits_of_t_column(65535);
  EXPECT_TRUE(table == make_table({"0 00", "0 00"}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(FlipColumn, InvertsEveryOneOfTheMostRows) {
  KPT_STATE_TABLE_IMPL table(65535, 0, 3);
  table.set_transformed_entry(40000, 3, true);
  table.flip_bits_of_t_column(2);
  for (unsigned row = 1; row <= 65535; ++row) {
    ASSERT_EQ(table.get_transformed_entry(static_cast<unsigned short>(row), 2), 0);
    ASSERT_EQ(table.get_transformed_entry(static_cast<unsigned short>(row), 3), row == 40000 ? 0 : 1);
  }
}

// --- get_row_list ---

TEST(RowList, ListsTheRowsOfAValueFromZeroUpwards) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 00", "11 00", "10 00", "00 00"});
  EXPECT_THAT(table.get_row_list(0, true), ElementsAre(1, 2));
  EXPECT_THAT(table.get_row_list(0, false), ElementsAre(0, 3));
  EXPECT_THAT(table.get_row_list(1, true), ElementsAre(0, 1));
}

// Reference bits 100 010 001, read with a row length of one: positions 0, 1, 2.
// With the row length of the reference table, column 0 would give only row 0, and
// the other columns rows of other states.
TEST(RowList, StepsByTheTransformedColumnsThroughTheReferenceTable) {
  const KPT_STATE_TABLE_IMPL table = make_table({"100 0", "010 0", "001 0"});
  EXPECT_THAT(table.get_row_list(0, true), ElementsAre(0));
  EXPECT_THAT(table.get_row_list(0, false), ElementsAre(1, 2));
  EXPECT_THAT(table.get_row_list(3, true), ElementsAre(1));  // positions 3, 4, 5
  EXPECT_THAT(table.get_row_list(6, true), ElementsAre(2));  // positions 6, 7, 8
}

TEST(RowList, WithoutTransformedColumnsEveryRowReadsTheSameBit) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 ", "00 "});
  EXPECT_THAT(table.get_row_list(1, true), ElementsAre(0, 1));
  EXPECT_THAT(table.get_row_list(0, true), IsEmpty());
  EXPECT_THAT(table.get_row_list(0, false), ElementsAre(0, 1));
}

TEST(RowList, RowWhoseBitDoesNotExistIsListedForNeitherValue) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table = make_table({"1 000", "1 000", "1 000"});
  EXPECT_THAT(table.get_row_list(0, true), ElementsAre(0));  // positions 0, 3, 6 of 3
  EXPECT_THAT(table.get_row_list(0, false), IsEmpty());
  EXPECT_THAT(table.get_row_list(65535, false), IsEmpty());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(RowList, TableWithoutRowsHasNone) { EXPECT_THAT(KPT_STATE_TABLE_IMPL(0, 1, 1).get_row_list(0, false), IsEmpty()); }

TEST(RowList, ListsEveryOneOfTheMostRows) {
  const KPT_ROW_LIST rows = KPT_STATE_TABLE_IMPL(65535, 1, 1).get_row_list(0, false);
  ASSERT_THAT(rows, SizeIs(65535));
  EXPECT_EQ(rows.front(), 0);
  EXPECT_EQ(rows.back(), 65534);
}

// --- rows_are_gray ---

// Rows 1 and 2 read positions 0, 1, 2 and 0, 2, 4: bits a, b, c and a, c, e of
// abc def.
TEST(GrayRows, ComparesTheBitsAtRowTimesColumn) {
  const KPT_STATE_TABLE_IMPL differ_at_1 = make_table({"010 ", "000 "});  // b != c, c == e
  EXPECT_TRUE(differ_at_1.rows_are_gray(1, 2, 1));
  EXPECT_FALSE(differ_at_1.rows_are_gray(1, 2, 2));
  const KPT_STATE_TABLE_IMPL differ_at_2 = make_table({"000 ", "010 "});  // b == c, c != e
  EXPECT_TRUE(differ_at_2.rows_are_gray(1, 2, 2));
  EXPECT_FALSE(differ_at_2.rows_are_gray(1, 2, 1));
}

// These two states differ only in the second register, which a correct position
// would show. The positions are 0 and 0, 0 and 1.
TEST(GrayRows, StatesThatDifferInOneRegisterNeedNotBeGray) {
  EXPECT_FALSE(make_table({"00 ", "01 "}).rows_are_gray(0, 1, 1));
  EXPECT_TRUE(make_table({"01 ", "00 "}).rows_are_gray(0, 1, 1));
}

TEST(GrayRows, NeverInColumnZero) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 0", "10 1", "11 0"});
  for (unsigned short a = 0; a < 4; ++a) {
    for (unsigned short b = 0; b < 4; ++b) {
      EXPECT_FALSE(table.rows_are_gray(a, b, 0));
    }
  }
}

TEST(GrayRows, AlwaysWithoutReferenceColumns) {
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(2, 0, 1).rows_are_gray(0, 1, 0));
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(0, 0, 0).rows_are_gray(9, 9, 9));
}

TEST(GrayRows, ColumnBeyondTheCountAsksForEqualBitsOnly) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 ", "00 "});
  EXPECT_TRUE(table.rows_are_gray(1, 1, 2));
  EXPECT_FALSE(table.rows_are_gray(1, 2, 2));
}

TEST(GrayRows, BitThatDoesNotExistIsFalse) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table = make_table({"01 ", "11 "});
  EXPECT_TRUE(table.rows_are_gray(1, 65535, 1));   // bit 1 is true, bit 65,535 is none
  EXPECT_FALSE(table.rows_are_gray(4, 65535, 1));  // both none
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// --- unateness ---

TEST(Unateness, IsTrueForATableWhoseRegistersMoveTogether) {
  const KPT_STATE_TABLE_IMPL table = make_table({"0 0", "1 1"});
  EXPECT_TRUE(table.check_positive_unateness(0, 0));
  EXPECT_TRUE(table.check_negative_unateness(0, 0));
}

// Consumers take the registers of a state machine as related in both ways, and
// skip their own check. Another answer would make them do something else.
TEST(Unateness, IsTrueThoughTheTableSaysOtherwise) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 1", "00 0", "11 0", "10 1"});
  for (unsigned short r = 0; r < 3; ++r) {
    for (unsigned short t = 0; t < 3; ++t) {
      EXPECT_TRUE(table.check_positive_unateness(r, t));
      EXPECT_TRUE(table.check_negative_unateness(r, t));
    }
  }
}

TEST(Unateness, IsTrueForAnyColumnsAndAnyKind) {
  const KPT_STATE_TABLE_IMPL table(0, 0, 0);
  EXPECT_TRUE(table.check_unateness(65535, 65535, KPT_POSITIVE_UNATE));
  EXPECT_TRUE(table.check_unateness(0, 0, KPT_NEGATIVE_UNATE));
  EXPECT_TRUE(table.check_unateness(1, 2, static_cast<KPT_UNATE_ENUM>(7)));
}

TEST(Unateness, IsAnsweredWithoutWalkingPairsOfRows) {
  KPT_STATE_TABLE_IMPL table(65535, 2, 2);
  for (unsigned row = 1; row <= 65535; row += 2) {
    table.set_reference_entry(static_cast<unsigned short>(row), 2, true);
  }
  const auto start = std::chrono::steady_clock::now();
  for (int k = 0; k < 1000; ++k) {
    EXPECT_TRUE(table.check_positive_unateness(1, 1));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

// --- update_simple_table ---

TEST(SimpleTable, OfNoStatesIsTrueAndChangesNothing) {
  KPT_STATE_TABLE_IMPL table = make_table({"11 11"});
  EXPECT_TRUE(table.update_simple_table(0, 2));
  EXPECT_EQ(states_of(table), (STATES{"11 11"}));
}

// The value is whether the character's code is 1. If the digit "1" meant true,
// tables would be filled that every stage expects to be false.
TEST(SimpleTable, WritesFalseForEveryDigitOfTheStateNumber) {
  KPT_STATE_TABLE_IMPL table = make_table({"11 11", "11 11", "11 11", "11 11"});
  EXPECT_TRUE(table.update_simple_table(4, 2));  // 0, 1, 10, 11
  EXPECT_EQ(states_of(table), (STATES{"01 01", "01 01", "00 00", "00 00"}));
}

TEST(SimpleTable, BaseDecidesHowManyColumnsAreWritten) {
  KPT_STATE_TABLE_IMPL table = make_table({"111 111", "111 111", "111 111"});
  EXPECT_TRUE(table.update_simple_table(3, 10));
  EXPECT_EQ(states_of(table), (STATES{"011 011", "011 011", "011 011"}));
}

TEST(SimpleTable, ResultIsThatOfTheLastPairOfWrites) {
  HOST_LINES lines;
  KPT_STATE_TABLE_IMPL narrow(4, 1, 1);
  EXPECT_FALSE(narrow.update_simple_table(3, 2));  // "10" needs a second column
  EXPECT_THAT(lines.take_debug(), ElementsAre(REFUSED_R_WRITE));
  KPT_STATE_TABLE_IMPL wide(1, 2, 2);
  EXPECT_FALSE(wide.update_simple_table(2, 2));  // no second row
  EXPECT_THAT(lines.take_debug(), ElementsAre(REFUSED_R_WRITE));
}

TEST(SimpleTable, TransformedEntryIsTriedOnlyAfterTheReferenceEntry) {
  HOST_LINES lines;
  KPT_STATE_TABLE_IMPL no_reference = make_table({" 1"});
  EXPECT_FALSE(no_reference.update_simple_table(1, 10));
  EXPECT_EQ(states_of(no_reference), (STATES{" 1"}));
  EXPECT_THAT(lines.take_debug(), ElementsAre(REFUSED_R_WRITE));

  KPT_STATE_TABLE_IMPL no_transformed = make_table({"1 "});
  EXPECT_FALSE(no_transformed.update_simple_table(1, 10));
  EXPECT_EQ(states_of(no_transformed), (STATES{"0 "}));
  EXPECT_THAT(lines.take_debug(), ElementsAre(REFUSED_T_WRITE));
}

TEST(SimpleTable, FillsTheMostStates) {
  KPT_STATE_TABLE_IMPL table(65535, 16, 16);
  table.set_reference_entry(65535, 16, true);
  EXPECT_TRUE(table.update_simple_table(65535, 2));
  EXPECT_EQ(table.get_reference_entry(65535, 16), 0);
}

// --- remove_t_column ---

TEST(RemoveColumn, OthersKeepTheirOrder) {
  KPT_STATE_TABLE_IMPL table = make_table({"01 100", "10 011"});
  EXPECT_TRUE(table.remove_t_column(2));
  EXPECT_EQ(states_of(table), (STATES{"01 10", "10 01"}));
}

TEST(RemoveColumn, FirstAndLastCanGo) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 1001", "1 0110"});
  EXPECT_TRUE(table.remove_t_column(1));
  EXPECT_EQ(states_of(table), (STATES{"0 001", "1 110"}));
  EXPECT_TRUE(table.remove_t_column(3));
  EXPECT_EQ(states_of(table), (STATES{"0 00", "1 11"}));
}

TEST(RemoveColumn, OnlyColumnLeavesNone) {
  KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  EXPECT_TRUE(table.remove_t_column(1));
  EXPECT_EQ(table.get_num_transformed_registers(), 0);
  EXPECT_EQ(states_of(table), (STATES{"01 ", "10 "}));
}

TEST(RemoveColumn, IsRefusedWithoutTransformedColumns) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table = make_table({"01 "});
  EXPECT_FALSE(table.remove_t_column(1));
  EXPECT_FALSE(table.remove_t_column(0));
  EXPECT_EQ(states_of(table), (STATES{"01 "}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(RemoveColumn, ColumnZeroMeansTheFirst) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 100", "0 011"});
  EXPECT_TRUE(table.remove_t_column(0));
  EXPECT_EQ(states_of(table), (STATES{"0 00", "0 11"}));
}

TEST(RemoveColumn, ColumnBeyondTheCountMeansTheLast) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 100", "0 011"});
  EXPECT_TRUE(table.remove_t_column(4));
  EXPECT_EQ(states_of(table), (STATES{"0 10", "0 01"}));
  EXPECT_TRUE(table.remove_t_column(65535));
  EXPECT_EQ(states_of(table), (STATES{"0 1", "0 0"}));
}

TEST(RemoveColumn, TableWithoutStatesLosesAColumnToo) {
  KPT_STATE_TABLE_IMPL table(0, 1, 2);
  EXPECT_TRUE(table.remove_t_column(1));
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 1, 1));
}

TEST(RemoveColumn, RowsWiderThanAWordKeepEveryOtherColumn) {
  KPT_STATE_TABLE_IMPL table(50, 0, 200);
  for (unsigned short row = 1; row <= 50; ++row) {
    for (unsigned short column = 1; column <= 200; ++column) {
      table.set_transformed_entry(row, column, (row * 31 + column * 7) % 5 == 0);
    }
  }
  EXPECT_TRUE(table.remove_t_column(130));
  for (unsigned short row = 1; row <= 50; ++row) {
    for (unsigned short column = 1; column <= 199; ++column) {
      const int old_column = column < 130 ? column : column + 1;
      ASSERT_EQ(table.get_transformed_entry(row, column), (row * 31 + old_column * 7) % 5 == 0 ? 1 : 0);
    }
  }
}

TEST(RemoveColumn, WorksOnTheMostRows) {
  KPT_STATE_TABLE_IMPL table(65535, 0, 3);
  table.set_transformed_entry(65535, 3, true);
  EXPECT_TRUE(table.remove_t_column(1));
  EXPECT_EQ(table.get_transformed_entry(65535, 2), 1);
  EXPECT_EQ(table.get_transformed_entry(65534, 2), 0);
}

// --- remove_invalid_rows ---

TEST(RemoveInvalidRows, KeepsTheStatesWhereBothColumnsAgreeInTheirOrder) {
  KPT_STATE_TABLE_IMPL table = make_table({"00 001", "01 010", "10 110", "11 101"});
  EXPECT_TRUE(table.remove_invalid_rows(1, 2));
  EXPECT_EQ(table.get_num_states(), 2);
  EXPECT_EQ(states_of(table), (STATES{"00 001", "10 110"}));
}

TEST(RemoveInvalidRows, KeepsAllWhenAllAgree) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 11", "1 00"});
  EXPECT_TRUE(table.remove_invalid_rows(1, 2));
  EXPECT_EQ(states_of(table), (STATES{"0 11", "1 00"}));
}

TEST(RemoveInvalidRows, MayLeaveNoState) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 10", "1 01"});
  EXPECT_TRUE(table.remove_invalid_rows(1, 2));
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 1, 2));
}

TEST(RemoveInvalidRows, AColumnAgreesWithItself) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 10", "1 01"});
  EXPECT_TRUE(table.remove_invalid_rows(2, 2));
  EXPECT_EQ(states_of(table), (STATES{"0 10", "1 01"}));
}

TEST(RemoveInvalidRows, OnATableWithoutStatesIsTrue) {
  KPT_STATE_TABLE_IMPL table(0, 1, 2);
  EXPECT_TRUE(table.remove_invalid_rows(1, 2));
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 1, 2));
}

// Both reads give code 2, and equal codes count as equal.
TEST(RemoveInvalidRows, TwoColumnsOutOfBoundsAgreeAndSaySo) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table = make_table({"0 10"});
  EXPECT_TRUE(table.remove_invalid_rows(3, 0));
  EXPECT_EQ(states_of(table), (STATES{"0 10"}));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ));
}

TEST(RemoveInvalidRows, OneColumnOutOfBoundsNeverAgrees) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table = make_table({"0 10", "0 00"});
  EXPECT_TRUE(table.remove_invalid_rows(1, 0));
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 1, 2));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ));
}

// As for any read, a column beyond the count is one of the row below.
TEST(RemoveInvalidRows, ColumnBeyondTheCountIsReadFromTheRowBelow) {
  KPT_STATE_TABLE_IMPL table = make_table({"0 10", "1 10", "0 01"});
  EXPECT_TRUE(table.remove_invalid_rows(1, 3));  // row 1: 1 and 1; row 2: 1 and 0; row 3: 0 and code 2
  EXPECT_EQ(states_of(table), (STATES{"0 10"}));
}

TEST(RemoveInvalidRows, WorksOnTheMostRows) {
  KPT_STATE_TABLE_IMPL table(65535, 1, 2);
  for (unsigned row = 1; row <= 65535; row += 2) {
    table.set_transformed_entry(static_cast<unsigned short>(row), 1, true);
  }
  table.set_transformed_entry(65535, 2, true);
  table.set_reference_entry(65535, 1, true);
  EXPECT_TRUE(table.remove_invalid_rows(1, 2));
  EXPECT_EQ(table.get_num_states(), 32768);
  EXPECT_EQ(table.get_transformed_entry(32768, 1), 1);
  EXPECT_EQ(table.get_reference_entry(32768, 1), 1);
  EXPECT_EQ(table.get_transformed_entry(32767, 1), 0);
}

}  // namespace
