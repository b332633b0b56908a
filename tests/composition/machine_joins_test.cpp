// How tables of several stages are joined: when they leave no state, when a table
// lists a register twice, and when the join would be too large.
#include <gtest/gtest.h>

#include <list>
#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace {

using namespace kpt_test;

std::string text(const KPT_STRING& string) { return std::string(std::string_view(string)); }

class MachineJoins : public testing::Test {
 protected:
  // A stage that keeps three registers, which only have the values that the states list.
  void add_stage(const STATES& states) {
    STATES both;
    for (const std::string& state : states) {
      both.push_back(state);
      both.back().append(" ").append(state);
    }
    add_machine({"a", "b", "c"}, {"a", "b", "c"}, KPT_STATE_TABLE(make_table(both)));
  }
  void add_machine(const KPT_STRING_VECTOR& r, const KPT_STRING_VECTOR& t, const KPT_STATE_TABLE& table) {
    m_stages.push_back(KPT_UNREGISTERED_DB::create("stage"));
    m_handles.push_back(*m_stages.back());
    ASSERT_TRUE(m_stages.back()->associate_registers_fsm_signals(r, t, table));
  }
  bool compose() { return all->compose(m_handles, {}, &report); }
  std::string error() const { return report.errors.empty() ? "" : text(report.errors.front()); }

  KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  KPT_COMPOSITION_REPORT report;

 private:
  std::list<KPT_UNREGISTERED_DB> m_stages;
  KPT_KEYPOINTS_DB_LIST m_handles;
};

constexpr char OF_ALL_THREE[] =
    " leave no state to the machine of \"a\" of netlist 1, \"b\" of netlist 1 and \"c\" of netlist 1";

// No register has a value that both tables know, but all three together have none.
TEST_F(MachineJoins, AreRefusedWhenNoStateIsInBothTables) {
  add_stage({"000", "011", "101", "110"});
  add_stage({"001", "010", "100", "111"});
  EXPECT_FALSE(compose());
  EXPECT_EQ(error(), std::string("stages 1 and 2") + OF_ALL_THREE);
}

// The first two leave 000 and 011, so a is 0 and b equals c, which the third does not allow.
TEST_F(MachineJoins, AreRefusedWhenTheStatesOfTwoTablesContradictAThird) {
  add_stage({"000", "011", "101", "110"});
  add_stage({"000", "011", "111", "010"});
  add_stage({"100", "111", "101", "010", "001"});
  EXPECT_FALSE(compose());
  EXPECT_EQ(error().substr(0, 27), "stages 1, 2 and 3 leave no ");
}

// A file can list a register at two indices of a machine.
class MachineOfARepeatedRegister : public testing::Test {
 protected:
  bool compose(const STATES& states) {
    stage.add_register_without_map(KPT_REFERENCE_SET, std::string_view("a"));
    KPT_KEYPOINT* const a = stage.get_reference_set()->get_register("a");
    KPT_REGISTER_KEYPOINT_IMPL* const t = stage.add_register_without_map(KPT_TRANSFORMED_SET, std::string_view("t"));
    stage.add_to_transformation_set({{{a}, {}}, {{a}, {}}}, {{{t}, {}}}, make_table(states), KPT_NOT_ELIMINATED);
    return all->compose({KPT_KEYPOINTS_DB(&stage)}, {}, &report);
  }

  KPT_KEYPOINTS_DB_IMPL stage{"stage"};
  KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  KPT_COMPOSITION_REPORT report;
};

TEST_F(MachineOfARepeatedRegister, HasOnlyTheStatesInWhichItEqualsItself) {
  ASSERT_TRUE(compose({"00 1", "01 1", "10 0", "11 0"}));
  const KPT_REGISTER_TRANSFORMATION map = all->get_reference_register_transformation("a");
  EXPECT_EQ(map, all->get_transformed_register_transformation("t"));
  EXPECT_FALSE(map.has_fsm());
  EXPECT_TRUE(map.is_negative_unate(0, 0));
}

TEST_F(MachineOfARepeatedRegister, IsRefusedWhenItNeverEqualsItself) {
  EXPECT_FALSE(compose({"01 1", "10 0"}));
  ASSERT_EQ(report.errors.size(), 1U);
  EXPECT_EQ(text(report.errors.front()).substr(0, 64),
            "the maps of stage 1 leave no state to the machine of \"a\" of netl");
}

// What an unknown keypoint of a group holds is not known, so the copies of the
// register may be more than the map shows.
TEST(MachineWithAnUnknownKeypoint, ShowsNotAllCopiesOfTheRegisterBesideIt) {
  KPT_KEYPOINTS_DB_IMPL stage("stage");
  KPT_KEYPOINT* const a = stage.add_register_without_map(KPT_REFERENCE_SET, std::string_view("a"));
  KPT_KEYPOINT* const t = stage.add_register_without_map(KPT_TRANSFORMED_SET, std::string_view("t"));
  stage.add_to_transformation_set({{{a}, {}}}, {{{t, nullptr}, {}}}, make_table({"0 0", "1 1"}), KPT_NOT_ELIMINATED);
  const KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  ASSERT_TRUE(all->compose({KPT_KEYPOINTS_DB(&stage)}));
  const KPT_REGISTER_TRANSFORMATION map = all->get_reference_register_transformation("a");
  EXPECT_EQ(text(map.get_transformed(0).get_name()), "t");
  EXPECT_EQ(text(map.get_attribute("partial")), "yes");
}

// ---- A join that is too large ----

constexpr unsigned short BITS = 8;
constexpr unsigned CODES = 200;  // for each value of the register that two machines share

// A table of that register and of the bits of a code, which is not the same for both values.
KPT_STATE_TABLE table_of_codes(unsigned factor, bool codes_are_transformed) {
  KPT_STATE_TABLE_IMPL table(2 * CODES, codes_are_transformed ? 1 : BITS + 1, codes_are_transformed ? BITS : 1);
  unsigned short row = 0;
  for (const bool shared : {false, true}) {
    for (unsigned number = 0; number < CODES; ++number) {
      const unsigned code = shared ? number * factor : number * (factor + 34) + 57;
      ++row;
      table.set_reference_entry(row, 1, shared);
      table.set_transformed_entry(row, 1, shared && !codes_are_transformed);
      for (unsigned short k = 0; k < BITS; ++k) {
        table.set_entry(codes_are_transformed ? KPT_TRANSFORMED_SET : KPT_REFERENCE_SET, row,
                        static_cast<unsigned short>(k + (codes_are_transformed ? 1 : 2)), (code >> k & 1U) != 0);
      }
    }
  }
  return KPT_STATE_TABLE(table);
}

// For each value of "q", 200 codes of the first machine and 200 of the second go
// together. A table with all pairs would have 80,000 rows.
TEST_F(MachineJoins, AreNotMadeWhenTheyAreTooLarge) {
  add_machine({"q", "a0", "a1", "a2", "a3", "a4", "a5", "a6", "a7"}, {"q"}, table_of_codes(37, false));
  add_machine({"q"}, {"t0", "t1", "t2", "t3", "t4", "t5", "t6", "t7"}, table_of_codes(91, true));
  ASSERT_TRUE(compose());
  ASSERT_EQ(report.warnings.size(), 1U);
  EXPECT_EQ(text(report.warnings.front()),
            "1 joins of machines have more than 65535 rows or columns and were not made: with \"q\" of netlist 1");
  const KPT_REGISTER_TRANSFORMATION map = all->get_reference_register_transformation("q");
  EXPECT_EQ(map, all->get_reference_register_transformation("a7"));
  EXPECT_EQ(map.get_number_of_states(), 2 * CODES);
  const KPT_REGISTER_TRANSFORMATION rest = all->get_transformed_register_transformation("t0");
  EXPECT_EQ(rest, all->get_transformed_register_transformation("t7"));
  EXPECT_EQ(rest.get_state_reference_size(), 0);
}

}  // namespace
