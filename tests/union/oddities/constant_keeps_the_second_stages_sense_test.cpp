// A constant that the second stage found is about the register between the
// stages. Where the first stage inverted, this is the opposite of the value of
// the reference register. The union takes the status unchanged.
#include <gtest/gtest.h>

#include "tests/union/stages.h"

namespace {

using namespace kpt_test;

// The first stage turns a into x, inverted or not. The second turns x into p and
// finds that it is stuck at zero.
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

// x holds the inverse of a and is stuck at zero, so a is stuck at one.
TEST(ConstantKeepsTheSecondStagesSense, BehindAnInversionOfTheFirst) {
  const UNITED united(true);
  EXPECT_TRUE(united.map_of_a().r_representative_is_stuck_at_zero());
  EXPECT_FALSE(united.map_of_a().r_representative_is_stuck_at_one());
}

// Nothing in the united map shows the inversion. A repair that inverts by the
// remaining groups would also invert this constant, which is right.
TEST(ConstantKeepsTheSecondStagesSense, AndTheMapIsThatOfAConstantWithoutAnInversion) {
  EXPECT_EQ(UNITED(true).maps(), UNITED(false).maps());
}

// One stage that records both has the constant that the pass reports.
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
