// What became of the reference registers of an index, in one word.
#include "db/kpt/kpt_fate.h"

#include "tests/support/map_fixture.h"

namespace {

using namespace kpt_test;

class Fate : public MAP_TEST {};

TEST_F(Fate, IsUnknownWithoutAMap) { EXPECT_EQ(kpt_fate(nullptr, 0), KPT_FATE_UNKNOWN); }

TEST_F(Fate, IsUnknownAtAnIndexThatTheMapDoesNotHave) {
  const MAP map = plain("a", "x");
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_MAPPED);
  EXPECT_EQ(kpt_fate(&map, 1), KPT_FATE_UNKNOWN);
}

TEST_F(Fate, IsConstantAtTheFirstIndexOfAStuckMapAlone) {
  const MAP map = plain("a|b|c", "x|y", KPT_STUCK_AT_ONE);
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_CONSTANT);
  EXPECT_EQ(kpt_fate(&map, 1), KPT_FATE_MAPPED);
  EXPECT_EQ(kpt_fate(&map, 2), KPT_FATE_UNKNOWN);
}

TEST_F(Fate, IsMappedBehindAnInversion) {
  const MAP map = plain("a", "~x");
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_MAPPED);
}

TEST_F(Fate, IsWithoutFanoutAtTheFirstIndexAlone) {
  const MAP map = plain("a|b", "", KPT_NO_FANOUT);
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_WITHOUT_FANOUT);
  EXPECT_EQ(kpt_fate(&map, 1), KPT_FATE_UNKNOWN);
}

// The unknown keypoint may be a register that is still there.
TEST_F(Fate, IsNotWithoutFanoutBesideAnUnknownKeypoint) {
  for (const char* t : {"null", "~null"}) {
    const MAP map = plain("a", t, KPT_NO_FANOUT);
    EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_UNKNOWN) << t;
  }
  const MAP map = plain("a", "~", KPT_NO_FANOUT);
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_WITHOUT_FANOUT);
}

TEST_F(Fate, IsNotWithoutFanoutWhenTheMapDoesNotShowAllCopies) {
  MAP map = plain("a", "", KPT_NO_FANOUT);
  map.add_attribute(KPT_PARTIAL, "yes");
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_UNKNOWN);
  map.remove_attribute(KPT_PARTIAL);
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_WITHOUT_FANOUT);
}

TEST_F(Fate, IsTheMachineWhenARegisterOfItIsLeft) {
  const MAP map = fsm("a", "x", {"0 0", "1 1"});
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_MACHINE);
  const MAP without = fsm("a", "null", {"0 0", "1 1"});
  EXPECT_EQ(kpt_fate(&without, 0), KPT_FATE_UNKNOWN);
}

TEST_F(Fate, IsConstantInAMachineWhoseTableAgreesWithItsStatus) {
  const MAP map = fsm("a|b", "x", {"10 0", "11 1"}, KPT_STUCK_AT_ONE);
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_CONSTANT);
  EXPECT_EQ(kpt_fate(&map, 1), KPT_FATE_MACHINE);
}

TEST_F(Fate, IsUnknownInAMachineWhoseTableHasAnotherSize) {
  for (const char* r : {"a", "a|b|c"}) {
    const MAP map = fsm(r, "x", {"00 0", "01 1"});
    EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_UNKNOWN) << r;
  }
  const MAP map = fsm("a|b", "x|y", {"00 0", "01 1"});
  EXPECT_EQ(kpt_fate(&map, 0), KPT_FATE_UNKNOWN);
}

TEST_F(Fate, HasAWord) {
  EXPECT_STREQ(kpt_fate_word(KPT_FATE_CONSTANT), "constant");
  EXPECT_STREQ(kpt_fate_word(KPT_FATE_MACHINE), "machine");
  EXPECT_STREQ(kpt_fate_word(KPT_FATE_MAPPED), "mapped");
  EXPECT_STREQ(kpt_fate_word(KPT_FATE_WITHOUT_FANOUT), "without fanout");
  EXPECT_STREQ(kpt_fate_word(KPT_FATE_UNKNOWN), "unknown");
}

TEST_F(Fate, HasTheWordUnknownForAnotherValue) {
  for (const int value : {-1, 5}) {
    EXPECT_STREQ(kpt_fate_word(static_cast<KPT_FATE_ENUM>(value)), "unknown") << value;
  }
}

}  // namespace
