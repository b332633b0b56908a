// The wrong answers of a union, and what the stages say together: the first table
// of docs/behaviours.md, row by row.
#include <gtest/gtest.h>

#include <string>

#include "db/kpt/kpt.h"
#include "tests/composition/machine_tables.h"

namespace {

std::string text(const KPT_STRING& string) { return std::string(std::string_view(string)); }

class UnionAndComposition : public testing::Test {
 protected:
  // Composes first, because a union changes its first database.
  void join() {
    composed = all->compose({*first, *second}, {}, &report);
    united = first->unite(*second);
  }
  KPT_REGISTER_TRANSFORMATION in_union(std::string_view name) const {
    return first->get_reference_register_transformation(name);
  }
  KPT_REGISTER_TRANSFORMATION in_composition(std::string_view name) const {
    return all->get_reference_register_transformation(name);
  }
  static std::string transformed(const KPT_REGISTER_TRANSFORMATION& map) {
    return text(map.get_transformed(0).get_name());
  }

  KPT_UNREGISTERED_DB first = KPT_UNREGISTERED_DB::create("first");
  KPT_UNREGISTERED_DB second = KPT_UNREGISTERED_DB::create("second");
  KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  KPT_COMPOSITION_REPORT report;
  bool composed = false;
  bool united = false;
};

TEST_F(UnionAndComposition, OfAnInvertedRegisterThatIsMergedDifferInTheInversion) {
  first->associate_registers_signal_to_signal("p", "p");
  first->associate_registers_signal_to_signal("q", "q");
  first->set_inverter_retimed_register("q");
  second->associate_registers_signal_to_signal("p", "x");
  second->associate_registers_signal_to_signal("q", "q");
  ASSERT_TRUE(second->set_merged_registers("x", "q"));
  join();
  ASSERT_TRUE(united && composed);
  // Both are in one group, so they count as equal, though one is the inverse of the other.
  EXPECT_EQ(in_union("p").get_reference_inverted_equivalents(0).size(), 0U);
  EXPECT_EQ(in_union("p").get_reference_equivalents(0).size(), 1U);
  EXPECT_EQ(in_composition("p").get_reference_inverted_equivalents(0).size(), 1U);
  EXPECT_EQ(in_composition("p"), in_composition("q"));
}

TEST_F(UnionAndComposition, OfAConstantBehindAnInversionDifferInItsValue) {
  first->associate_registers_signal_to_signal("q", "q");
  first->set_inverter_retimed_register("q");
  second->associate_registers_signal_to_signal("q", "q");
  second->set_eliminated_register_stuck_at_zero("q");
  join();
  ASSERT_TRUE(united && composed);
  EXPECT_TRUE(in_union("q").is_stuck_at_zero());
  EXPECT_TRUE(in_composition("q").is_stuck_at_one());
}

TEST_F(UnionAndComposition, OfAMachineWhoseBitsAreRenamedDifferInTheLastNetlist) {
  ASSERT_TRUE(first->associate_registers_fsm_signals({"r1", "r2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  second->associate_registers_signal_to_signal("s1", "last1");
  second->associate_registers_signal_to_signal("s2", "last2");
  join();
  ASSERT_TRUE(united && composed);
  EXPECT_EQ(transformed(in_union("r1")), "s1");
  EXPECT_EQ(all->get_transformed_register_transformation("last1"), in_composition("r1"));
  EXPECT_EQ(all->get_transformed_set().size(), 2U);
}

TEST_F(UnionAndComposition, OfAMachineOfRenamedRegistersDifferInTheFirstNetlist) {
  first->associate_registers_signal_to_signal("q1", "r1");
  first->associate_registers_signal_to_signal("q2", "r2");
  ASSERT_TRUE(second->associate_registers_fsm_signals({"r1", "r2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  join();
  ASSERT_TRUE(united && composed);
  const KPT_REGISTER_TRANSFORMATION machine = first->get_transformed_register_transformation("s1");
  EXPECT_EQ(text(machine.get_reference(0).get_name()), "r1");
  EXPECT_TRUE(in_union("q1").is_null());
  EXPECT_EQ(text(all->get_transformed_register_transformation("s1").get_reference(0).get_name()), "q1");
}

TEST_F(UnionAndComposition, OfALostSuccessorDifferInWhetherItIsKnown) {
  first->associate_registers_signal_to_signal("p", "p");
  first->associate_registers_signal_to_signal("q", "q1");
  second->associate_registers_signal_to_signal("p", "p");
  join();
  ASSERT_TRUE(united && composed);
  EXPECT_EQ(in_union("q").get_fate(0), KPT_FATE_MAPPED);
  EXPECT_EQ(transformed(in_union("q")), "q1");
  EXPECT_TRUE(in_composition("q").is_null());
}

TEST_F(UnionAndComposition, OfAConstantWhoseMapIsFusedDifferInWhetherItLives) {
  first->associate_registers_signal_to_signal("p", "a");
  first->set_replicated_registers("a", "a2");
  first->set_eliminated_register_stuck_at_one("a");
  first->associate_registers_signal_to_signal("q", "b");
  second->associate_registers_signal_to_signal("a2", "x");
  second->associate_registers_signal_to_signal("b", "y");
  ASSERT_TRUE(second->set_merged_registers("x", "y"));
  join();
  ASSERT_TRUE(united && composed);
  EXPECT_EQ(in_union("p").get_fate(0), KPT_FATE_MAPPED);
  EXPECT_TRUE(in_composition("p").is_stuck_at_one());
  EXPECT_TRUE(in_composition("q").is_stuck_at_one());
}

TEST_F(UnionAndComposition, OfTwoMachinesThatShareARegisterDifferInThatTheUnionFails) {
  ASSERT_TRUE(first->associate_registers_fsm_signals({"m1", "m2"}, {"s1", "s2"}, kpt_test::count_to_three()));
  ASSERT_TRUE(first->associate_registers_fsm_signals({"n1", "n2"}, {"v1", "v2"}, kpt_test::count_to_three()));
  for (const char* const name : {"s1", "s2", "v1", "v2"}) {
    second->associate_registers_signal_to_signal(name, name);
  }
  ASSERT_TRUE(second->set_merged_registers("s1", "v1"));
  join();
  EXPECT_FALSE(united);
  ASSERT_TRUE(composed);
  // Either both are in their first state, or neither is.
  EXPECT_EQ(in_composition("m1").get_fate(0), KPT_FATE_MACHINE);
  EXPECT_EQ(in_composition("m1"), in_composition("n1"));
  EXPECT_EQ(in_composition("m1").get_number_of_states(), 5);
}

TEST_F(UnionAndComposition, OfStagesInTheWrongOrderDifferInThatTheCompositionIsRefused) {
  first->associate_registers_signal_to_signal("b", "c");
  second->associate_registers_signal_to_signal("a", "b");
  join();
  EXPECT_TRUE(united);
  EXPECT_FALSE(composed);
  ASSERT_EQ(report.errors.size(), 1U);
  EXPECT_EQ(text(report.errors[0]),
            "stage 2 does not follow stage 1: stage 2 starts from 1 registers, 0 of them known to stage 1");
}

}  // namespace
