// A constant that the second stage found is said of the register between the
// stages. Where the first stage inverted, it is the opposite of what the
// reference register holds, and is taken over as it stands.
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using namespace kpt_test;

// a became x in the first stage, inverted or not, and x became p in the second,
// which found that it stays at zero.
class UNITED {
 public:
  explicit UNITED(bool inverted) {
    m_first.associate_registers_signal_to_signal("a", "x");
    if (inverted) {
      m_first.set_inverter_retimed_register("x");
    }
    m_second.associate_registers_signal_to_signal("x", "p");
    m_second.set_eliminated_register_stuck_at_zero("p");
    EXPECT_TRUE(m_first.unite_db(m_second));
  }
  const KPT_TRANSFORMATION_IMPL& map_of_a() const { return *m_first.get_reference_register_transformation("a"); }
  LINES maps() { return maps_of(m_first); }

 private:
  KPT_KEYPOINTS_DB_IMPL m_first{"first"};
  KPT_KEYPOINTS_DB_IMPL m_second{"second"};
};

// x holds the inverse of a and stays at zero, so a stays at one.
TEST(ConstantKeepsTheSecondStagesSense, BehindAnInversionOfTheFirst) {
  const UNITED united(true);
  EXPECT_TRUE(united.map_of_a().r_representative_is_stuck_at_zero());
  EXPECT_FALSE(united.map_of_a().r_representative_is_stuck_at_one());
}

// Nothing in the united map tells of the inversion: who turned the sense by
// the groups that are left would turn this constant, which is right, as well.
TEST(ConstantKeepsTheSecondStagesSense, AndTheMapIsThatOfAConstantWithoutAnInversion) {
  EXPECT_EQ(UNITED(true).maps(), UNITED(false).maps());
}

// One stage that holds both has the sense that a pass gives it.
TEST(ConstantKeepsTheSecondStagesSense, WhileOneStageTakesTheSenseThatIsRecorded) {
  KPT_KEYPOINTS_DB_IMPL first("first");
  first.associate_registers_signal_to_signal("a", "x");
  first.set_inverter_retimed_register("x");
  first.set_eliminated_register_stuck_at_one("x");
  KPT_KEYPOINTS_DB_IMPL second("second");
  second.associate_registers_signal_to_signal("x", "p");
  ASSERT_TRUE(first.unite_db(second));
  EXPECT_TRUE(first.get_reference_register_transformation("a")->r_representative_is_stuck_at_one());
}

}  // namespace
