// r_representative_is_eliminated returns true for the status "not eliminated".
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "db/kpt/kpt_transformation_impl.h"
#include "tests/support/maps.h"

namespace {

using kpt_test::REGISTERS;
using testing::ElementsAre;

using MAP = KPT_TRANSFORMATION_IMPL;

constexpr KPT_ELIM_ENUM ALL[] = {KPT_NOT_ELIMINATED, KPT_STUCK_AT_ZERO, KPT_STUCK_AT_ONE, KPT_NO_FANOUT,
                                 KPT_ELIMINATED};

TEST(IsEliminatedMeansStillThere, TrueForNotEliminatedAndForNothingElse) {
  REGISTERS k;
  for (const KPT_ELIM_ENUM status : ALL) {
    EXPECT_EQ(MAP(k.side("a~"), k.side("x~"), status).r_representative_is_eliminated(), status == KPT_NOT_ELIMINATED);
  }
}

// A consumer selects the registers that it has to compare by this answer. If the
// answer meant what its name says, it would compare those that are gone.
TEST(IsEliminatedMeansStillThere, AConsumerPicksTheRegistersThatAreThereByIt) {
  REGISTERS k;
  std::vector<KPT_ELIM_ENUM> picked;
  for (const KPT_ELIM_ENUM status : ALL) {
    const MAP map(k.side("a~"), k.side("x~"), status);
    if (map.r_representative_is_eliminated()) {
      picked.push_back(map.get_elim_status());
    }
  }
  EXPECT_THAT(picked, ElementsAre(KPT_NOT_ELIMINATED));
}

}  // namespace
