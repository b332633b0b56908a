#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "db/kpt/kpt_state_table_impl.h"
#include "host/kpt_host.h"
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
using kpt_test::UNKNOWN_SIDE;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto UNKNOWN = static_cast<KPT_SET_ENUM>(5);
constexpr auto NEGATIVE = static_cast<KPT_SET_ENUM>(-1);

unsigned long live_bytes() {
  unsigned long bytes = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    bytes += tracker.live_bytes;
  }
  return bytes;
}

TEST(StateTableImpl, NewTableHasTheDeclaredCounts) {
  const KPT_STATE_TABLE_IMPL table(3, 1, 2);
  EXPECT_EQ(table.get_num_states(), 3);
  EXPECT_EQ(table.get_num_reference_registers(), 1);
  EXPECT_EQ(table.get_num_transformed_registers(), 2);
}

TEST(StateTableImpl, NewTableIsAllFalse) {
  EXPECT_EQ(states_of(KPT_STATE_TABLE_IMPL(3, 1, 2)), (STATES{"0 00", "0 00", "0 00"}));
}

TEST(StateTableImpl, TableWithoutStatesOrColumnsIsAnOrdinaryTable) {
  EXPECT_THAT(states_of(KPT_STATE_TABLE_IMPL(0, 2, 2)), IsEmpty());
  EXPECT_EQ(states_of(KPT_STATE_TABLE_IMPL(2, 0, 0)), (STATES{" ", " "}));
}

// --- writing ---

TEST(StateTableImpl, EveryEntryOfBothSidesHoldsItsOwnValue) {
  const STATES states{"011 1", "100 0", "010 1", "001 1"};
  EXPECT_EQ(states_of(make_table(states)), states);
}

TEST(StateTableImpl, EntryCanBeWrittenBackToFalse) {
  KPT_STATE_TABLE_IMPL table = make_table({"11 1", "11 1"});
  EXPECT_TRUE(table.set_reference_entry(1, 2, false));
  EXPECT_TRUE(table.set_transformed_entry(2, 1, false));
  EXPECT_EQ(states_of(table), (STATES{"10 1", "11 0"}));
}

TEST(StateTableImpl, SetEntryWritesTheSideItIsGiven) {
  KPT_STATE_TABLE_IMPL table(1, 1, 1);
  EXPECT_TRUE(table.set_entry(KPT_REFERENCE_SET, 1, 1, true));
  EXPECT_EQ(states_of(table), (STATES{"1 0"}));
  EXPECT_TRUE(table.set_entry(KPT_TRANSFORMED_SET, 1, 1, true));
  EXPECT_EQ(states_of(table), (STATES{"1 1"}));
}

TEST(StateTableImpl, AcceptedWriteSaysNothing) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(2, 1, 1);
  EXPECT_TRUE(table.set_reference_entry(2, 1, true));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(StateTableImpl, WriteBeyondTheLastRowIsRefusedWithTheReferenceMessage) {
  HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(2, 1, 1);
  EXPECT_FALSE(table.set_reference_entry(3, 1, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
  EXPECT_EQ(states_of(table), (STATES{"0 0", "0 0"}));
}

TEST(StateTableImpl, WriteToRowZeroIsRefusedWithTheReferenceMessage) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(2, 1, 1);
  EXPECT_FALSE(table.set_reference_entry(0, 1, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE));
  EXPECT_EQ(states_of(table), (STATES{"0 0", "0 0"}));
}

TEST(StateTableImpl, WriteToColumnZeroIsRefused) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(2, 2, 2);
  EXPECT_FALSE(table.set_reference_entry(2, 0, true));
  EXPECT_FALSE(table.set_transformed_entry(2, 0, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE, REFUSED_T_WRITE));
  EXPECT_EQ(states_of(table), (STATES{"00 00", "00 00"}));
}

// A read of that position returns an entry of the row below. A write there would
// change another state.
TEST(StateTableImpl, WriteBeyondTheLastColumnIsRefusedThoughAReadIsNot) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table = make_table({"00 00", "10 10"});
  EXPECT_FALSE(table.set_reference_entry(1, 3, false));
  EXPECT_FALSE(table.set_transformed_entry(1, 3, false));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE, REFUSED_T_WRITE));
  EXPECT_EQ(table.get_reference_entry(1, 3), 1);
  EXPECT_EQ(table.get_transformed_entry(1, 3), 1);
}

TEST(StateTableImpl, EachSideIsBoundedByItsOwnColumnCount) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(1, 1, 3);
  EXPECT_TRUE(table.set_transformed_entry(1, 3, true));
  EXPECT_FALSE(table.set_reference_entry(1, 3, true));
  EXPECT_FALSE(table.set_transformed_entry(1, 4, true));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE, REFUSED_T_WRITE));
}

TEST(StateTableImpl, WriteToASideWithoutRegistersIsAlwaysRefused) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(2, 1, 0);
  EXPECT_FALSE(table.set_transformed_entry(1, 1, true));
  EXPECT_FALSE(table.set_transformed_entry(1, 0, false));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_T_WRITE, REFUSED_T_WRITE));
}

TEST(StateTableImpl, WriteToAnUnknownSideIsRefusedWithItsOwnMessage) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL table(1, 1, 1);
  EXPECT_FALSE(table.set_entry(UNKNOWN, 1, 1, true));
  EXPECT_FALSE(table.set_entry(NEGATIVE, 9, 9, true));
  EXPECT_THAT(lines.debug(), ElementsAre(UNKNOWN_SIDE, UNKNOWN_SIDE));
  EXPECT_EQ(states_of(table), (STATES{"0 0"}));
}

// --- reading ---

TEST(StateTableImpl, ReadWithinTheTableSaysNothing) {
  const HOST_LINES lines;
  EXPECT_EQ(make_table({"01 1"}).get_entry(KPT_REFERENCE_SET, 1, 2), 1);
  EXPECT_EQ(make_table({"01 1"}).get_entry(KPT_TRANSFORMED_SET, 1, 1), 1);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(StateTableImpl, ReadBeyondTheReferenceTableIsCodeTwoWithTheMessage) {
  const HOST_LINES lines;
  EXPECT_EQ(KPT_STATE_TABLE_IMPL(2, 2, 2).get_reference_entry(3, 2), 2);
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ));
  EXPECT_THAT(lines.tags(), ElementsAre("KPT"));
}

// People search logs for this one line; another letter for the transformed table
// would hide half of the cases.
TEST(StateTableImpl, ReadBeyondTheTransformedTableNamesTheReferenceTable) {
  const HOST_LINES lines;
  EXPECT_EQ(KPT_STATE_TABLE_IMPL(2, 2, 2).get_transformed_entry(3, 2), 2);
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ));
}

TEST(StateTableImpl, ReadOfAnUnknownSideIsCodeThreeAndSilent) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table(1, 1, 1);
  EXPECT_EQ(table.get_entry(UNKNOWN, 1, 1), 3);
  EXPECT_EQ(table.get_entry(NEGATIVE, 0, 9), 3);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// Clients that read past the last column get the registers of the next state.
// With a strict check they would get code 2.
TEST(StateTableImpl, ReadOfAColumnBeyondTheCountReadsOnIntoTheNextRow) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table = make_table({"000 00", "010 01"});
  EXPECT_EQ(table.get_reference_entry(1, 4), 0);
  EXPECT_EQ(table.get_reference_entry(1, 5), 1);
  EXPECT_EQ(table.get_transformed_entry(1, 4), 1);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(StateTableImpl, ReadIsRefusedByTheProductThoughItsPositionExists) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table = make_table({"000 0", "000 0", "111 1"});
  EXPECT_EQ(table.get_reference_entry(2, 5), 2);  // position 7 of 9, product 10
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ));
}

TEST(StateTableImpl, ReadThatPassesTheProductButDoesNotExistIsCodeTwo) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table(2, 3, 0);
  EXPECT_EQ(table.get_reference_entry(3, 1), 2);  // product 3 of 6, position 6
  EXPECT_EQ(table.get_reference_entry(6, 1), 2);
  EXPECT_EQ(table.get_transformed_entry(256, 256), 2);  // product 0 of 0
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ, REFUSED_READ));
}

TEST(StateTableImpl, ProductOfAReadIsTakenModulo65536) {
  KPT_STATE_TABLE_IMPL table(600, 1, 0);
  table.set_reference_entry(511, 1, true);
  const HOST_LINES lines;
  EXPECT_EQ(table.get_reference_entry(256, 256), 1);  // product 0, position 510
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_EQ(table.get_reference_entry(255, 256), 2);  // product 65,280
  EXPECT_THAT(lines.debug(), SizeIs(1));
}

TEST(StateTableImpl, ProductNeverRefusesInATableOfMoreThan65535Entries) {
  KPT_STATE_TABLE_IMPL table(300, 300, 0);
  table.set_reference_entry(220, 135, true);
  const HOST_LINES lines;
  EXPECT_EQ(table.get_reference_entry(2, 65535), 1);  // 300 + 65,534 = 219 * 300 + 134
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// By the formula, row 2, column 0 would be the last entry of row 1.
TEST(StateTableImpl, RowZeroAndColumnZeroReadAsOutOfBoundsEvenWhereABitExists) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL table = make_table({"11 11", "11 11"});
  EXPECT_EQ(table.get_reference_entry(0, 1), 2);
  EXPECT_EQ(table.get_reference_entry(0, 4), 2);
  EXPECT_EQ(table.get_reference_entry(2, 0), 2);
  EXPECT_EQ(table.get_transformed_entry(0, 0), 2);
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_READ, REFUSED_READ, REFUSED_READ, REFUSED_READ));
}

// --- equality ---

TEST(StateTableImpl, TablesOfSameCountsAndEntriesAreEqual) {
  EXPECT_TRUE(make_table({"01 1", "10 0"}) == make_table({"01 1", "10 0"}));
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(0, 0, 0) == KPT_STATE_TABLE_IMPL(0, 0, 0));
}

TEST(StateTableImpl, OneDifferentEntryMakesTablesUnequal) {
  EXPECT_FALSE(make_table({"01 1", "10 0"}) == make_table({"01 1", "11 0"}));
  EXPECT_FALSE(make_table({"01 1", "10 0"}) == make_table({"01 1", "10 1"}));
}

TEST(StateTableImpl, TablesOfTheSameBitsInAnotherShapeAreUnequal) {
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(2, 3, 0) == KPT_STATE_TABLE_IMPL(3, 2, 0));
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(2, 0, 3) == KPT_STATE_TABLE_IMPL(3, 0, 2));
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(0, 1, 1) == KPT_STATE_TABLE_IMPL(0, 1, 2));
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(0, 1, 1) == KPT_STATE_TABLE_IMPL(0, 2, 1));
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(1, 0, 0) == KPT_STATE_TABLE_IMPL(2, 0, 0));
}

TEST(StateTableImpl, EntriesThatWereTrueOnceDoNotCount) {
  KPT_STATE_TABLE_IMPL table(1000, 1, 1);
  table.set_reference_entry(1000, 1, true);
  table.set_reference_entry(1000, 1, false);
  const KPT_STATE_TABLE_IMPL fresh(1000, 1, 1);
  EXPECT_TRUE(table == fresh);
  EXPECT_TRUE(fresh == table);
  table.set_reference_entry(999, 1, true);
  EXPECT_FALSE(table == fresh);
  EXPECT_FALSE(fresh == table);
}

// --- copies and moves ---

TEST(StateTableImpl, CopyHasTheSameEntries) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  const KPT_STATE_TABLE_IMPL copy(table);  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_TRUE(copy == table);
}

TEST(StateTableImpl, WritingIntoACopyLeavesTheSourceAlone) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  KPT_STATE_TABLE_IMPL copy(table);
  copy.set_reference_entry(1, 1, true);
  copy.set_transformed_entry(2, 1, true);
  EXPECT_EQ(states_of(table), (STATES{"01 1", "10 0"}));
  EXPECT_EQ(states_of(copy), (STATES{"11 1", "10 1"}));
}

TEST(StateTableImpl, AssignmentReplacesCountsAndEntries) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  KPT_STATE_TABLE_IMPL other = make_table({"1 111"});
  other = table;
  EXPECT_TRUE(other == table);
  other.set_reference_entry(1, 1, true);
  EXPECT_EQ(states_of(table), (STATES{"01 1", "10 0"}));
}

TEST(StateTableImpl, AssignmentToItselfChangesNothing) {
  KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  KPT_STATE_TABLE_IMPL& same = table;
  table = same;
  EXPECT_EQ(states_of(table), (STATES{"01 1", "10 0"}));
  table = std::move(same);
  EXPECT_EQ(states_of(table), (STATES{"01 1", "10 0"}));
}

TEST(StateTableImpl, MovedFromTableIsTheEmptyOne) {
  KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  KPT_STATE_TABLE_IMPL target(std::move(table));
  EXPECT_EQ(states_of(target), (STATES{"01 1", "10 0"}));
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 0, 0));  // NOLINT(bugprone-use-after-move)

  KPT_STATE_TABLE_IMPL assigned(1, 1, 1);
  assigned = std::move(target);
  EXPECT_EQ(states_of(assigned), (STATES{"01 1", "10 0"}));
  EXPECT_TRUE(target == KPT_STATE_TABLE_IMPL(0, 0, 0));  // NOLINT(bugprone-use-after-move)
}

TEST(StateTableImpl, MovesCannotThrow) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<KPT_STATE_TABLE_IMPL>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<KPT_STATE_TABLE_IMPL>);
}

TEST(StateTableImpl, NewGivesZeroFilledMemoryAndDeleteTakesItBack) {
  void* const block = KPT_STATE_TABLE_IMPL::operator new(sizeof(KPT_STATE_TABLE_IMPL));
  const unsigned char zeros[sizeof(KPT_STATE_TABLE_IMPL)] = {};
  EXPECT_EQ(std::memcmp(block, zeros, sizeof zeros), 0);
  KPT_STATE_TABLE_IMPL::operator delete(block);

  const std::unique_ptr<KPT_STATE_TABLE_IMPL> table(new KPT_STATE_TABLE_IMPL(2, 1, 1));
  EXPECT_EQ(table->get_num_states(), 2);
}

TEST(StateTableImpl, TableCanBeBuiltInPlace) {
  alignas(KPT_STATE_TABLE_IMPL) unsigned char place[sizeof(KPT_STATE_TABLE_IMPL)];
  auto* const table = new (place) KPT_STATE_TABLE_IMPL(200, 1, 1);
  EXPECT_TRUE(table->set_reference_entry(200, 1, true));
  table->~KPT_STATE_TABLE_IMPL();
}

// --- canonical form ---

TEST(StateTableImpl, ColumnsThatDifferInSomeStatesAndAgreeInOthersAreCanonical) {
  EXPECT_TRUE(make_table({"00 0", "01 0", "10 0", "11 0"}).is_r_table_in_canonical_form());
  EXPECT_TRUE(make_table({"0 00", "0 01"}).is_t_table_in_canonical_form());
}

TEST(StateTableImpl, TwoEqualColumnsAreNotCanonical) {
  EXPECT_FALSE(make_table({"00 0", "11 0", "00 0"}).is_r_table_in_canonical_form());
  EXPECT_FALSE(make_table({"0 00", "0 11", "0 00"}).is_t_table_in_canonical_form());
}

TEST(StateTableImpl, TwoOppositeColumnsAreNotCanonical) {
  EXPECT_FALSE(make_table({"01 0", "10 0", "01 0"}).is_r_table_in_canonical_form());
  EXPECT_FALSE(make_table({"0 01", "0 10", "0 01"}).is_t_table_in_canonical_form());
}

TEST(StateTableImpl, OneBadPairAmongManyColumnsIsFound) {
  EXPECT_TRUE(make_table({"000 0", "001 0", "011 0"}).is_r_table_in_canonical_form());
  EXPECT_FALSE(make_table({"0001 0", "0010 0", "0110 0"}).is_r_table_in_canonical_form());  // third and fourth
  EXPECT_FALSE(make_table({"0000 0", "0011 0", "1101 0", "1110 0"}).is_r_table_in_canonical_form());  // first, second
}

TEST(StateTableImpl, EachSideIsJudgedByItself) {
  const KPT_STATE_TABLE_IMPL table = make_table({"00 00", "01 11", "11 00"});
  EXPECT_TRUE(table.is_table_in_canonical_form(KPT_REFERENCE_SET));
  EXPECT_FALSE(table.is_table_in_canonical_form(KPT_TRANSFORMED_SET));
}

TEST(StateTableImpl, FewerThanTwoColumnsAreAlwaysCanonical) {
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(0, 0, 1).is_r_table_in_canonical_form());
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(0, 0, 1).is_t_table_in_canonical_form());
  EXPECT_TRUE(KPT_STATE_TABLE_IMPL(7, 1, 0).is_r_table_in_canonical_form());
}

// No state distinguishes the columns of such a table. If it were canonical, a map
// whose states are not filled yet would hide its redundant registers.
TEST(StateTableImpl, SeveralColumnsWithoutAStateAreNotCanonical) {
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(0, 2, 0).is_r_table_in_canonical_form());
  EXPECT_FALSE(KPT_STATE_TABLE_IMPL(0, 0, 3).is_t_table_in_canonical_form());
}

TEST(StateTableImpl, SeveralColumnsInOneStateAreNeverCanonical) {
  EXPECT_FALSE(make_table({"01 00"}).is_r_table_in_canonical_form());
  EXPECT_FALSE(make_table({"01 00"}).is_t_table_in_canonical_form());
}

// Every read of an unknown side is code 3, so all of its columns are equal.
TEST(StateTableImpl, UnknownSideIsCanonicalOnlyBelowTwoTransformedColumns) {
  const HOST_LINES lines;
  EXPECT_FALSE(make_table({"0 00", "0 01"}).is_table_in_canonical_form(UNKNOWN));
  EXPECT_TRUE(make_table({"00 0", "00 1"}).is_table_in_canonical_form(UNKNOWN));
  EXPECT_TRUE(make_table({"00 ", "00 "}).is_table_in_canonical_form(NEGATIVE));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// --- sizes ---

TEST(StateTableImpl, TableWithTheMostRowsHoldsEveryEntry) {
  KPT_STATE_TABLE_IMPL table(65535, 3, 1);
  for (unsigned row = 1; row <= 65535; ++row) {
    for (unsigned column = 1; column <= 3; ++column) {
      ASSERT_TRUE(table.set_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column),
                                            (row * 7 + column) % 3 == 0));
    }
  }
  for (unsigned row = 1; row <= 65535; ++row) {
    for (unsigned column = 1; column <= 3; ++column) {
      ASSERT_EQ(table.get_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column)),
                (row * 7 + column) % 3 == 0 ? 1 : 0);
    }
  }
  EXPECT_TRUE(table == KPT_STATE_TABLE_IMPL(table));
}

TEST(StateTableImpl, LargestDeclaredTableCostsOnlyWhatItHolds) {
  const unsigned long before = live_bytes();
  KPT_STATE_TABLE_IMPL table(65535, 65535, 65535);
  KPT_STATE_TABLE_IMPL copy(table);
  EXPECT_TRUE(table == copy);
  EXPECT_EQ(table.get_reference_entry(65535, 65535), 0);
  EXPECT_TRUE(table.set_transformed_entry(65535, 65535, false));
  EXPECT_FALSE(table.is_r_table_in_canonical_form());
  EXPECT_EQ(live_bytes(), before);

  EXPECT_TRUE(table.set_transformed_entry(3, 65535, true));
  EXPECT_EQ(table.get_transformed_entry(3, 65535), 1);
  EXPECT_EQ(table.get_transformed_entry(2, 65535), 0);
  EXPECT_FALSE(table == copy);
  EXPECT_LT(live_bytes(), before + 65536);
}

TEST(StateTableImpl, CanonicalFormOfManyColumnsIsFoundAtOnce) {
  KPT_STATE_TABLE_IMPL table(16, 32768, 0);
  for (unsigned column = 1; column <= 32768; ++column) {
    for (unsigned bit = 0; bit < 15; ++bit) {
      if (((column - 1) >> bit & 1U) != 0) {
        table.set_reference_entry(static_cast<unsigned short>(bit + 2), static_cast<unsigned short>(column), true);
      }
    }
  }
  EXPECT_TRUE(table.is_r_table_in_canonical_form());
  table.set_reference_entry(16, 32768, false);  // now as column 16,384
  EXPECT_FALSE(table.is_r_table_in_canonical_form());
}

}  // namespace
