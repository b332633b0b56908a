// Moves a set of maps to the keypoints of another set, matched by names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

class Translate : public testing::Test {
 protected:
  KPT_KEYPOINT* target_signal(const char* name) { return target.add_register(++last_id, name); }
  KPT_KEYPOINT* target_instance(const char* name, const char* entity, const char* type) {
    return target.add_register(++last_id, name, entity, type);
  }
  bool translate() { return translated.translate_map_set(source, target); }
  const KPT_TRANSFORMATION_IMPL& front() { return *translated.get_list_of_register_transformations().front(); }

  HOST_LINES lines;
  REGISTERS registers;
  KPT_KEYPOINT_SET_IMPL target;
  SET source{registers};
  KPT_TRANSFORMATION_SET_IMPL translated;
  long last_id = 0;
};

TEST_F(Translate, OfAnEmptySetAddsNothingAndSucceeds) {
  EXPECT_TRUE(translate());
  EXPECT_THAT(maps_of(translated), IsEmpty());
}

TEST_F(Translate, ReplacesEveryRegisterByItsNamesake) {
  KPT_KEYPOINT* x = target_signal("x");
  KPT_KEYPOINT* p = target_signal("p");
  source.plain("x -> p");
  EXPECT_TRUE(translate());
  EXPECT_EQ(front().get_r_representative(0), x);
  EXPECT_EQ(front().get_t_representative(0), p);
}

TEST_F(Translate, PutsBothSidesOntoTheSameKeypoints) {
  KPT_KEYPOINT* q = target_signal("q");
  source.add_map(registers.another("q"), registers.another("q"));
  translate();
  EXPECT_EQ(front().get_r_representative(0), q);
  EXPECT_EQ(front().get_t_representative(0), q);
}

TEST_F(Translate, EntersTheNamesakesInBothIndexes) {
  KPT_KEYPOINT* x = target_signal("x");
  KPT_KEYPOINT* p = target_signal("p");
  source.plain("x -> p");
  translate();
  EXPECT_EQ(translated.get_map_of_r_keypoint(x), &front());
  EXPECT_EQ(translated.get_map_of_t_keypoint(p), &front());
  EXPECT_EQ(translated.get_map_of_r_keypoint(registers["x"]), nullptr);
}

TEST_F(Translate, MatchesBlockInstancesByNameAndTypeWhateverTheirEntity) {
  KPT_KEYPOINT* u = target_instance("u", "other_entity", "dff");
  source.add_map(registers.instance("u", "entity", "dff"), registers.instance("u", "entity", "latch"));
  translate();
  EXPECT_EQ(front().get_r_representative(0), u);
  EXPECT_EQ(text_of(front()), "u~ -> ~");
}

TEST_F(Translate, TakesNoBlockInstanceForASignalOfItsName) {
  target_instance("x", "e", "dff");
  source.plain("x -> x");
  translate();
  EXPECT_EQ(text_of(front()), "~ -> ~");
}

TEST_F(Translate, DropsARegisterWithoutANamesakeAndKeepsTheOrderOfTheRest) {
  target_signal("c");
  target_signal("a");
  target_signal("d");
  source.plain("a b c~d e -> a");
  translate();
  EXPECT_EQ(text_of(front()), "a c~d -> a~");
}

TEST_F(Translate, KeepsEveryIndexAlsoWhenNothingIsLeftInIt) {
  target_signal("c");
  source.plain("a|b~c|d -> e|f");
  translate();
  EXPECT_EQ(text_of(front()), "~|~c|~ -> ~|~");
}

TEST_F(Translate, DropsNullKeypoints) {
  target_signal("a");
  source.plain("null a~null -> null");
  translate();
  EXPECT_EQ(text_of(front()), "a~ -> ~");
}

TEST_F(Translate, DropsKeypointsThatAreNoRegisters) {
  target_signal("k");
  source.add_map(registers.no_register("k"), registers["k"]);
  translate();
  EXPECT_EQ(text_of(front()), "~ -> k~");
}

TEST_F(Translate, KeepsTheEliminationOfAPlainMap) {
  target_signal("a");
  source.plain("a -> ~", KPT_STUCK_AT_ONE);
  translate();
  EXPECT_THAT(maps_of(translated), ElementsAre("a~ -> ~ status 2"));
}

TEST_F(Translate, CopiesTheTableOfAStateMachineAndKeepsItsElimination) {
  target_signal("a");
  target_signal("x");
  source.fsm("a -> x", {"0 1", "1 0"}, KPT_NO_FANOUT);
  translate();
  EXPECT_THAT(maps_of(translated), ElementsAre("a~ -> x~ fsm status 3"));
  EXPECT_THAT(states_of(front().get_register_state_table()), ElementsAre("0 1", "1 0"));
}

TEST_F(Translate, ListsTheMapsInTheOrderOfTheSource) {
  for (const char* name : {"a", "b", "c", "x", "y", "z"}) {
    target_signal(name);
  }
  source.plain("c -> x");
  source.plain("a -> y");
  source.plain("b -> z");
  translate();
  EXPECT_THAT(maps_of(translated), ElementsAre("c~ -> x~", "a~ -> y~", "b~ -> z~"));
}

TEST_F(Translate, LeavesTheSourceAsItWas) {
  target_signal("x");
  KPT_TRANSFORMATION_IMPL* map = source.plain("x -> p");
  translate();
  EXPECT_THAT(maps_of(source), ElementsAre("x~ -> p~"));
  EXPECT_EQ(source.get_map_of_r_keypoint(registers["x"]), map);
}

TEST_F(Translate, LeavesTheAttributesOfTheMapsBehind) {
  target_signal("x");
  source.plain("x -> p")->add_attribute("note", "seen");
  translate();
  EXPECT_EQ(front().get_attribute("note"), "");
}

TEST_F(Translate, TwiceIntoOneSetAppendsEveryMapTwiceAndTheLaterEntriesWin) {
  KPT_KEYPOINT* x = target_signal("x");
  source.plain("x -> p");
  translate();
  EXPECT_TRUE(translate());
  EXPECT_THAT(maps_of(translated), ElementsAre("x~ -> ~", "x~ -> ~"));
  EXPECT_EQ(translated.get_map_of_r_keypoint(x), translated.get_list_of_register_transformations().back());
}

TEST_F(Translate, PrintsNothing) {
  source.plain("a|b -> x");
  source.fsm("c -> y", {"0 0"});
  translate();
  EXPECT_THAT(lines.debug(), IsEmpty());
}

// A register is looked up by its present name, not by the name with which it was recorded.
TEST_F(Translate, FollowsARegisterThatWasRenamed) {
  KPT_KEYPOINT* y = target_signal("y");
  target_signal("x");
  source.plain("x -> p");
  registers["x"]->set_element_name("y");
  translate();
  EXPECT_EQ(front().get_r_representative(0), y);
}

}  // namespace
