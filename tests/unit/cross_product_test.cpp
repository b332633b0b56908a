// The table of two state machines that are united into one map.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::make_table;
using kpt_test::REFUSED_R_WRITE;
using kpt_test::REFUSED_T_WRITE;
using kpt_test::STATES;
using kpt_test::states_of;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(CrossProduct, MultipliesStatesAndAddsColumns) {
  const KPT_STATE_TABLE_IMPL product = KPT_STATE_TABLE_IMPL(2, 1, 3).cross_product_table(KPT_STATE_TABLE_IMPL(3, 2, 4));
  EXPECT_EQ(product.get_num_states(), 6);
  EXPECT_EQ(product.get_num_reference_registers(), 3);
  EXPECT_EQ(product.get_num_transformed_registers(), 7);
}

TEST(CrossProduct, CountsAreTakenModulo65536) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL product =
      KPT_STATE_TABLE_IMPL(257, 0, 0).cross_product_table(KPT_STATE_TABLE_IMPL(256, 0, 0));
  EXPECT_EQ(product.get_num_states(), 256);  // 65,792
  const KPT_STATE_TABLE_IMPL wide =
      KPT_STATE_TABLE_IMPL(0, 65535, 40000).cross_product_table(KPT_STATE_TABLE_IMPL(0, 3, 40000));
  EXPECT_EQ(wide.get_num_reference_registers(), 2);
  EXPECT_EQ(wide.get_num_transformed_registers(), 14464);
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(CrossProduct, LeavesBothTablesAlone) {
  const KPT_STATE_TABLE_IMPL a = make_table({"01 1", "10 0"});
  const KPT_STATE_TABLE_IMPL b = make_table({"1 0", "0 1"});
  a.cross_product_table(b);
  EXPECT_EQ(states_of(a), (STATES{"01 1", "10 0"}));
  EXPECT_EQ(states_of(b), (STATES{"1 0", "0 1"}));
}

// States s and u share row s + u - 1, so the later one remains. With one row for
// every pair, rows 5 and 6 would be filled too, and every united table would
// compare unequal.
TEST(CrossProduct, CombinedStatesShareRowsAndTheRestStaysFalse) {
  const KPT_STATE_TABLE_IMPL a = make_table({"00 00", "10 10"});
  const KPT_STATE_TABLE_IMPL b = make_table({"10 10", "00 00", "10 10"});
  EXPECT_EQ(states_of(a.cross_product_table(b)), (STATES{
                                                     "0100 0100",  // s 1, u 1
                                                     "1100 1100",  // s 2, u 1 over s 1, u 2
                                                     "1000 1000",  // s 2, u 2 over s 1, u 3
                                                     "1100 1100",  // s 2, u 3
                                                     "0000 0000",
                                                     "0000 0000",
                                                 }));
}

// The other's first column replaces this table's last one. After the last one,
// the columns would not be those at which the maps expect their registers.
TEST(CrossProduct, OthersFirstColumnLandsOnThisTablesLast) {
  const KPT_STATE_TABLE_IMPL product = make_table({"11 11"}).cross_product_table(make_table({"01 00"}));
  EXPECT_EQ(states_of(product), (STATES{"1010 1000"}));
}

TEST(CrossProduct, LastColumnOfEachSideIsNeverWritten) {
  const KPT_STATE_TABLE_IMPL product = make_table({"1 1", "1 1"}).cross_product_table(make_table({"1 1", "1 1"}));
  EXPECT_EQ(states_of(product), (STATES{"10 10", "10 10", "10 10", "00 00"}));
}

TEST(CrossProduct, WithoutColumnsHereTheOthersFirstIsRefusedOncePerAttempt) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL product = make_table({" ", " "}).cross_product_table(make_table({"11 011", "11 011"}));
  EXPECT_EQ(states_of(product), (STATES{"10 110", "10 110", "10 110", "00 000"}));
  EXPECT_THAT(lines.debug(), ElementsAre(REFUSED_R_WRITE, REFUSED_R_WRITE, REFUSED_R_WRITE, REFUSED_R_WRITE,
                                         REFUSED_T_WRITE, REFUSED_T_WRITE, REFUSED_T_WRITE, REFUSED_T_WRITE));
}

TEST(CrossProduct, WithoutColumnsThereThisTablesColumnsStay) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL product = make_table({"11 01"}).cross_product_table(make_table({" ", " "}));
  EXPECT_EQ(states_of(product), (STATES{"11 01", "11 01"}));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(CrossProduct, WithATableWithoutStatesHasNone) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL product = make_table({"11 01"}).cross_product_table(KPT_STATE_TABLE_IMPL(0, 1, 1));
  EXPECT_TRUE(product == KPT_STATE_TABLE_IMPL(0, 3, 3));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST(CrossProduct, OfATableWithItselfIsAnOrdinaryProduct) {
  const KPT_STATE_TABLE_IMPL table = make_table({"01 1", "10 0"});
  EXPECT_TRUE(table.cross_product_table(table) == table.cross_product_table(KPT_STATE_TABLE_IMPL(table)));
}

// 257 * 256 states, modulo 65,536, give 256 rows; the combined states reach row 512.
TEST(CrossProduct, RowsBeyondTheWrappedCountAreRefusedOncePerAttempt) {
  const HOST_LINES lines;
  KPT_STATE_TABLE_IMPL a(257, 1, 0);
  a.set_reference_entry(3, 1, true);
  const KPT_STATE_TABLE_IMPL product = a.cross_product_table(KPT_STATE_TABLE_IMPL(256, 0, 0));
  std::size_t refused = 0;
  for (unsigned s = 1; s <= 257; ++s) {
    for (unsigned u = 1; u <= 256; ++u) {
      refused += s + u - 1 > 256 ? 1 : 0;
    }
  }
  EXPECT_THAT(lines.debug(), SizeIs(refused));
  EXPECT_THAT(lines.debug(), Each(REFUSED_R_WRITE));
  EXPECT_EQ(product.get_reference_entry(3, 1), 1);
  EXPECT_EQ(product.get_reference_entry(4, 1), 0);
}

// 65,535 + 3 columns, modulo 65,536, give two. The other's third column is column
// 65,537, which is written as column 1.
TEST(CrossProduct, ColumnsWrapIntoSixteenBits) {
  const HOST_LINES lines;
  const KPT_STATE_TABLE_IMPL product = KPT_STATE_TABLE_IMPL(1, 65535, 0).cross_product_table(make_table({"111 "}));
  EXPECT_EQ(states_of(product), (STATES{"10 "}));
  EXPECT_THAT(lines.debug(), SizeIs(65533 + 2));
}

TEST(CrossProduct, LargeTablesAreDoneByTheRow) {
  KPT_STATE_TABLE_IMPL a(250, 500, 500);
  a.set_reference_entry(250, 1, true);
  a.set_transformed_entry(250, 499, true);
  KPT_STATE_TABLE_IMPL b(250, 500, 500);
  b.set_transformed_entry(250, 500, true);
  const KPT_STATE_TABLE_IMPL product = a.cross_product_table(b);
  EXPECT_EQ(product.get_num_states(), 62500);
  EXPECT_EQ(product.get_reference_entry(250, 1), 1);
  EXPECT_EQ(product.get_reference_entry(499, 1), 1);
  EXPECT_EQ(product.get_reference_entry(249, 1), 0);
  EXPECT_EQ(product.get_transformed_entry(300, 499), 1);
  EXPECT_EQ(product.get_transformed_entry(499, 999), 1);
  EXPECT_EQ(product.get_transformed_entry(498, 999), 0);
}

}  // namespace
