#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>

#include "tests/support/host_lines.h"
#include "tests/support/map_fixture.h"

namespace {

using kpt_test::HOST_LINES;
using kpt_test::STATES;
using kpt_test::states_of;
using kpt_test::text_of;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char EMPTY_R[] = "Info: R side of map seems to be empty";
constexpr char EMPTY_T[] = "Info: T side of map seems to be empty";

class TransformationQueries : public kpt_test::MAP_TEST {};

// --- equivalents ---

TEST_F(TransformationQueries, OneToOneMapHasNoEquivalents) {
  const HOST_LINES lines;
  const MAP map(k["r"], k["t"]);
  EXPECT_THAT(map.get_r_representative_equivalents(0), IsEmpty());
  EXPECT_THAT(map.get_t_representative_equivalents(0), IsEmpty());
  EXPECT_THAT(map.get_r_representative_inverted_equivalents(0), IsEmpty());
  EXPECT_THAT(map.get_t_representative_inverted_equivalents(0), IsEmpty());
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationQueries, EquivalentsAreTheOtherMembersOfTheRepresentativesGroup) {
  const MAP map = plain("a b c~d e|~f g", "~x y|u v~w");
  EXPECT_EQ(text_of(map.get_r_representative_equivalents(0)), "b c");
  EXPECT_EQ(text_of(map.get_r_representative_inverted_equivalents(0)), "d e");
  EXPECT_EQ(text_of(map.get_r_representative_equivalents(1)), "g");
  EXPECT_EQ(text_of(map.get_r_representative_inverted_equivalents(1)), "");
  EXPECT_EQ(text_of(map.get_t_representative_equivalents(0)), "y");
  EXPECT_EQ(text_of(map.get_t_representative_inverted_equivalents(0)), "");
  EXPECT_EQ(text_of(map.get_t_representative_equivalents(1)), "v");
  EXPECT_EQ(text_of(map.get_t_representative_inverted_equivalents(1)), "w");
}

TEST_F(TransformationQueries, EveryRepeatOfTheRepresentativeIsLeftOutOthersKeepTheirRepeats) {
  const MAP map = plain("a b a c b~a d d a", "a b a~");
  EXPECT_EQ(text_of(map.get_t_representative_equivalents(0)), "b");
  EXPECT_EQ(text_of(map.get_r_representative_equivalents(0)), "b c b");
  EXPECT_EQ(text_of(map.get_r_representative_inverted_equivalents(0)), "d d");
  EXPECT_EQ(text_of(map.get_r_registers_at_index(0)), "a b c b d d");
}

TEST_F(TransformationQueries, AnEmptyIndexGivesEmptyListsAndTheLineOfItsSide) {
  HOST_LINES lines;
  const MAP map = plain("~|a~", "~|x~");
  EXPECT_THAT(map.get_r_representative_equivalents(0), IsEmpty());
  EXPECT_THAT(map.get_r_representative_inverted_equivalents(0), IsEmpty());
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_R, EMPTY_R));
  EXPECT_THAT(map.get_t_representative_equivalents(0), IsEmpty());
  EXPECT_THAT(map.get_t_representative_inverted_equivalents(0), IsEmpty());
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_T, EMPTY_T));
}

TEST_F(TransformationQueries, AnIndexBeyondTheSideReadsAsAnEmptyOne) {
  HOST_LINES lines;
  for (const char* side : {"a~b", ""}) {
    const MAP map = plain(side, side);
    for (const unsigned short index : std::initializer_list<unsigned short>{1, 2, 65535}) {
      EXPECT_THAT(map.get_r_representative_equivalents(index), IsEmpty());
      EXPECT_THAT(map.get_t_representative_equivalents(index), IsEmpty());
      EXPECT_THAT(map.get_r_representative_inverted_equivalents(index), IsEmpty());
      EXPECT_THAT(map.get_t_representative_inverted_equivalents(index), IsEmpty());
      EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_R, EMPTY_T, EMPTY_R, EMPTY_T));
    }
  }
}

TEST_F(TransformationQueries, ANullRepresentativeHasEquivalentsAndNullIsLeftOutOfThem) {
  const MAP map = plain("null a null b~null c", "a null~null");
  EXPECT_EQ(text_of(map.get_r_representative_equivalents(0)), "a b");
  EXPECT_EQ(text_of(map.get_r_representative_inverted_equivalents(0)), "c");
  EXPECT_EQ(text_of(map.get_r_registers_at_index(0)), "null a b c");
  EXPECT_EQ(text_of(map.get_t_representative_equivalents(0)), "null");
  EXPECT_EQ(text_of(map.get_t_representative_inverted_equivalents(0)), "null");
}

// --- registers at an index ---

TEST_F(TransformationQueries, RegistersAtAnIndexAreRepresentativeEquivalentsInvertedEquivalents) {
  const HOST_LINES lines;
  const MAP map = plain("a b~c|~d e", "~x|y~z");
  EXPECT_EQ(text_of(map.get_r_registers_at_index(0)), "a b c");
  EXPECT_EQ(text_of(map.get_r_registers_at_index(1)), "d e");
  EXPECT_EQ(text_of(map.get_t_registers_at_index(0)), "x");
  EXPECT_EQ(text_of(map.get_t_registers_at_index(1)), "y z");
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(TransformationQueries, RegistersAtAnEmptyIndexAreNoneAndTheLineComesTwice) {
  HOST_LINES lines;
  const MAP map = plain("~", "");
  EXPECT_THAT(map.get_r_registers_at_index(0), IsEmpty());
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_R, EMPTY_R));
  EXPECT_THAT(map.get_t_registers_at_index(0), IsEmpty());
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_T, EMPTY_T));
  EXPECT_THAT(map.get_r_registers_at_index(65535), IsEmpty());
  EXPECT_THAT(lines.take_debug(), ElementsAre(EMPTY_R, EMPTY_R));
}

TEST_F(TransformationQueries, TheWalksVisitWhatTheListsHoldAndIssueTheSameLines) {
  HOST_LINES lines;
  const MAP map = plain("a b a~c|~|~d|null~", "x~|~y z y");
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    const bool r = side == KPT_REFERENCE_SET;
    for (const unsigned short index : std::initializer_list<unsigned short>{0, 1, 2, 3, 4}) {
      KPT_KEYPOINT_LIST walked;
      const auto visit = [&](KPT_KEYPOINT* keypoint) { walked.push_back(keypoint); };

      map.for_each_register_at_index(side, index, visit);
      const std::vector<std::string> of_registers = lines.take_debug();
      EXPECT_EQ(walked, r ? map.get_r_registers_at_index(index) : map.get_t_registers_at_index(index));
      EXPECT_EQ(lines.take_debug(), of_registers);

      walked.clear();
      map.for_each_equivalent(side, index, visit);
      const std::vector<std::string> of_equivalents = lines.take_debug();
      EXPECT_EQ(walked, r ? map.get_r_representative_equivalents(index) : map.get_t_representative_equivalents(index));
      EXPECT_EQ(lines.take_debug(), of_equivalents);

      walked.clear();
      map.for_each_inverted_equivalent(side, index, visit);
      const std::vector<std::string> of_inverted = lines.take_debug();
      EXPECT_EQ(walked, r ? map.get_r_representative_inverted_equivalents(index)
                          : map.get_t_representative_inverted_equivalents(index));
      EXPECT_EQ(lines.take_debug(), of_inverted);
    }
  }
}

TEST_F(TransformationQueries, AWalkTakesAVisitorWithAStateOfItsOwn) {
  const MAP map = plain("a b~c d", "x~");
  struct COUNTER {
    unsigned count = 0;
    void operator()(KPT_KEYPOINT*) { ++count; }
  } counter;
  map.for_each_register_at_index(KPT_REFERENCE_SET, 0, counter);
  EXPECT_EQ(counter.count, 4U);
}

// --- unateness ---

TEST_F(TransformationQueries, OneToOneMapIsPositiveUnate) {
  const MAP map(k["r"], k["t"]);
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
  EXPECT_FALSE(map.association_is_negative_unate(0, 0));
}

TEST_F(TransformationQueries, UnatenessFollowsTheGroupsOfTheRepresentatives) {
  const struct {
    const char* r;
    const char* t;
    bool positive;
  } maps[] = {{"a~", "x~", true},   {"~a", "~x", true},    {"a~", "~x", false},
              {"~a", "x~", false},  {"a~b", "x~y", true},  {"a~b", "~y", false},
              {"~b", "x~y", false}, {"a~", "x y~z", true}, {"~a b", "~x y", true}};
  for (const auto& sides : maps) {
    const MAP map = plain(sides.r, sides.t);
    EXPECT_EQ(map.association_is_positive_unate(0, 0), sides.positive) << sides.r << " " << sides.t;
    EXPECT_EQ(map.association_is_negative_unate(0, 0), !sides.positive) << sides.r << " " << sides.t;
  }
}

TEST_F(TransformationQueries, AfterAnInverterIsRetimedThroughTheOnlyRegisterTheMapIsNegativeUnate) {
  MAP map(k["r"], k["t"]);
  ASSERT_TRUE(map.set_inverter_retimed_register(k["t"]));
  EXPECT_TRUE(map.association_is_negative_unate(0, 0));
  EXPECT_FALSE(map.association_is_positive_unate(0, 0));
  EXPECT_THAT(map.get_t_representative_inverted_equivalents(0), IsEmpty());
}

TEST_F(TransformationQueries, AfterAnInverterIsRetimedPastAnEquivalentThatOneIsTheRepresentative) {
  MAP map = plain("r~", "t u~");
  ASSERT_TRUE(map.set_inverter_retimed_register(k["t"]));
  EXPECT_EQ(map.get_t_representative(0), k["u"]);
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
  EXPECT_EQ(text_of(map.get_t_representative_inverted_equivalents(0)), "t");
}

TEST_F(TransformationQueries, AnUnknownUnatenessIsFalseForPlainMapsAndTrueForStateMachines) {
  const auto unknown = static_cast<KPT_UNATE_ENUM>(5);
  EXPECT_FALSE(plain("a~", "x~").register_association_is_unate(0, 0, unknown));
  EXPECT_FALSE(plain("a~", "~x").register_association_is_unate(0, 0, unknown));
  EXPECT_TRUE(fsm("a~", "x~", {"0 0"}).register_association_is_unate(0, 0, unknown));
}

TEST_F(TransformationQueries, RegistersOfAStateMachineAreBothPositiveAndNegativeUnate) {
  for (const STATES& states : {STATES{"0 0", "1 1"}, STATES{"0 1", "1 0"}, STATES{"1 1"}}) {
    const MAP map = fsm("a~", "~x", states);
    EXPECT_TRUE(map.association_is_positive_unate(0, 0));
    EXPECT_TRUE(map.association_is_negative_unate(0, 0));
  }
}

TEST_F(TransformationQueries, RepresentativesThatTheSearchDoesNotFindAreNotUnate) {
  const MAP map = fsm("a~|b~", "x~|y~", {"00 00", "11 11"});
  for (const KPT_UNATE_ENUM unate : {KPT_POSITIVE_UNATE, KPT_NEGATIVE_UNATE}) {
    EXPECT_TRUE(map.register_association_is_unate(0, 0, unate));
    EXPECT_FALSE(map.register_association_is_unate(1, 0, unate));
    EXPECT_FALSE(map.register_association_is_unate(0, 1, unate));
    EXPECT_FALSE(map.register_association_is_unate(1, 1, unate));
    EXPECT_FALSE(map.register_association_is_unate(2, 0, unate));
    EXPECT_FALSE(map.register_association_is_unate(0, 65536, unate));
  }
}

TEST_F(TransformationQueries, ARepresentativeOfAFurtherIndexThatIsListedAtIndex0IsAskedByItsOwnGroups) {
  const MAP map = plain("a~|~a", "x~");
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
  EXPECT_FALSE(map.association_is_positive_unate(1, 0));
  EXPECT_TRUE(map.association_is_negative_unate(1, 0));
}

TEST_F(TransformationQueries, EmptyIndicesAreNotUnateUnlessANullIsListed) {
  for (const KPT_UNATE_ENUM unate : {KPT_POSITIVE_UNATE, KPT_NEGATIVE_UNATE}) {
    EXPECT_FALSE(plain("~", "~").register_association_is_unate(0, 0, unate));
    EXPECT_FALSE(plain("", "").register_association_is_unate(0, 0, unate));
  }
  EXPECT_TRUE(plain("null~", "null~").association_is_positive_unate(0, 0));
  // Index 1 is empty: its null is in neither group, though the search finds the null of index 0.
  EXPECT_TRUE(plain("null~|~", "null~|~").association_is_negative_unate(1, 1));
  EXPECT_FALSE(plain("null~|~", "null~|~").association_is_positive_unate(1, 1));
}

TEST_F(TransformationQueries, UnatenessOfAStateMachineWhoseTableHasNoRowsOrColumns) {
  MAP map(k.side("a~"), k.side("x~"), KPT_STATE_TABLE_IMPL(0, 0, 0), KPT_NOT_ELIMINATED);
  EXPECT_TRUE(map.association_is_positive_unate(0, 0));
  EXPECT_TRUE(map.association_is_negative_unate(0, 0));
}

// --- elimination status and table ---

TEST_F(TransformationQueries, EachStatusIsNamedByItsOwnQuery) {
  for (const int status : {-1, 0, 1, 2, 3, 4, 5}) {
    const MAP map(k.side("a~"), k.side("x~"), static_cast<KPT_ELIM_ENUM>(status));
    EXPECT_EQ(map.get_elim_status(), status);
    EXPECT_EQ(map.r_representative_is_stuck_at_zero(), status == 1);
    EXPECT_EQ(map.r_representative_is_stuck_at_one(), status == 2);
    EXPECT_EQ(map.has_no_fanout(), status == 3);
    EXPECT_EQ(map.r_representative_is_eliminated(), status == 0);
  }
}

TEST_F(TransformationQueries, TheTableIsACopy) {
  const MAP map = fsm("a~", "x~", {"0 1", "1 0"});
  KPT_STATE_TABLE_IMPL table = map.get_register_state_table();
  table.set_reference_entry(1, 1, true);
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 1", "1 0"}));
  KPT_STATE_TABLE_IMPL shared = plain("a~", "x~").get_register_state_table();
  shared.set_reference_entry(1, 1, true);
  EXPECT_EQ(states_of(plain("b~", "y~").get_register_state_table()), (STATES{"0 0", "1 1"}));
}

TEST_F(TransformationQueries, AMapThatBecamePlainKeepsTheTableThatIsStored) {
  MAP map = fsm("a~", "x~", {"0 1", "1 0", "1 1"});
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  ASSERT_TRUE(map.update_transformations(plain("x~", "p~"), entered, left));
  EXPECT_FALSE(map.map_has_fsm_transformation());
  EXPECT_EQ(map.get_number_of_states(), 2);
  EXPECT_EQ(states_of(map.get_register_state_table()), (STATES{"0 1", "1 0", "1 1"}));
}

}  // namespace
