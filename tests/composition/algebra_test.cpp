// Compares compositions with the plain join over full tables.
#include <gtest/gtest.h>

#include "db/kpt/kpt_composition.h"
#include "db/kpt/kpt_fate.h"
#include "tests/composition/random_database.h"
#include "tests/support/seed.h"

namespace {

using namespace kpt_test;

const KPT_COMPOSITION_OPTIONS ANY_SHARE{0.0, false};

DATABASE composed(std::vector<KPT_KEYPOINTS_DB_IMPL*> stages) {
  auto result = std::make_unique<KPT_KEYPOINTS_DB_IMPL>("all");
  KPT_COMPOSITION composition(KPT_COMPOSITION::STAGES(stages.begin(), stages.end()), ANY_SHARE);
  if (!composition.compose(*result)) {
    EXPECT_TRUE(result->get_reference_set()->is_empty());
    EXPECT_EQ(composition.report().errors.size(), 1U);
    return nullptr;
  }
  EXPECT_TRUE(composition.report().errors.empty());
  return result;
}

std::vector<KPT_KEYPOINTS_DB_IMPL*> all_of(const RANDOM_FLOW& flow) {
  std::vector<KPT_KEYPOINTS_DB_IMPL*> stages;
  for (const DATABASE& stage : flow.stages) {
    stages.push_back(stage.get());
  }
  return stages;
}

// The index of a register in its map, or -1.
int index_of(const NI_PAIR_VECTOR& side, const std::string& name) {
  for (std::size_t k = 0; k < side.size(); ++k) {
    for (const KPT_KEYPOINT_LIST* group : {&side[k].first, &side[k].second}) {
      for (const KPT_KEYPOINT* keypoint : *group) {
        if (keypoint->get_element_name().c_str() == name) {
          return static_cast<int>(k);
        }
      }
    }
  }
  return -1;
}

KPT_FATE_ENUM fate(KPT_KEYPOINTS_DB_IMPL& db, const std::string& name) {
  const KPT_TRANSFORMATION_IMPL* map = db.get_reference_register_transformation(name);
  return map == nullptr ? KPT_FATE_UNKNOWN : kpt_fate(map, static_cast<unsigned long>(index_of(map->r_vec(), name)));
}

TEST(Composition, SaysWhatTheStagesSayTogetherAndNothingElse) {
  std::mt19937 random(seed());
  int said = 0;
  const int rounds = steps(300);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 1 + static_cast<unsigned>(random() % 4), 5);
    const PLAIN_RELATION expected = flow.relation();
    const DATABASE all = composed(all_of(flow));
    ASSERT_EQ(all == nullptr, expected.empty());
    if (all != nullptr) {
      ++said;
      EXPECT_TRUE(said_by(*all, expected.from, expected.to) == expected);
    }
  }
  EXPECT_GT(said, rounds / 4);
}

TEST(Composition, CountsARegisterAsConstantOrRelatedAsTheRelationHasIt) {
  std::mt19937 random(seed() + 1);
  const int rounds = steps(60);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 1 + static_cast<unsigned>(random() % 3), 4);
    const PLAIN_RELATION relation = flow.relation();
    const DATABASE all = composed(all_of(flow));
    for (unsigned k = 0; all != nullptr && k < relation.from.size(); ++k) {
      const KPT_FATE_ENUM word = fate(*all, relation.from[k]);
      const unsigned part = part_of(relation, k);
      if (constant(relation, k) != 2) {
        EXPECT_EQ(word, KPT_FATE_CONSTANT) << relation.from[k];
      } else if (part >> relation.from.size() != 0) {
        EXPECT_TRUE(word == KPT_FATE_MACHINE || word == KPT_FATE_MAPPED) << relation.from[k];
      } else {
        EXPECT_TRUE(word == KPT_FATE_WITHOUT_FANOUT || word == KPT_FATE_UNKNOWN) << relation.from[k];
      }
    }
  }
}

TEST(Composition, SaysEqualRegistersAsGroupsAlsoWhenATableIsWhatSaysIt) {
  std::mt19937 random(seed() + 2);
  const int rounds = steps(300);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 1 + static_cast<unsigned>(random() % 3), 4);
    const PLAIN_RELATION relation = flow.relation();
    const DATABASE all = composed(all_of(flow));
    const auto of_r = static_cast<unsigned>(relation.from.size());
    const auto registers = static_cast<unsigned>(relation.from.size() + relation.to.size());
    for (unsigned a = 0; all != nullptr && a < registers; ++a) {
      for (unsigned b = a + 1; b < registers; ++b) {
        if (constant(relation, a) != 2 || twins(relation, a, b) == 2) {
          continue;
        }
        const auto map_of = [&](unsigned k) {
          return k < of_r ? all->get_reference_register_transformation(relation.from[k])
                          : all->get_transformed_register_transformation(relation.to[k - of_r]);
        };
        const KPT_TRANSFORMATION_IMPL* map = map_of(a);
        ASSERT_NE(map, nullptr);
        ASSERT_EQ(map, map_of(b));
        const auto index = [&](unsigned k) {
          return k < of_r ? index_of(map->r_vec(), relation.from[k]) : index_of(map->t_vec(), relation.to[k - of_r]);
        };
        if ((a < of_r) == (b < of_r) || !map->map_has_fsm_transformation()) {
          EXPECT_EQ(index(a), index(b));
        }
      }
    }
  }
}

// Compares two compositions: their relations and the words of their registers.
void expect_same(KPT_KEYPOINTS_DB_IMPL& a, KPT_KEYPOINTS_DB_IMPL& b, const RANDOM_FLOW& flow) {
  const NAMES& from = flow.netlists.front();
  const NAMES& to = flow.netlists.back();
  EXPECT_TRUE(said_by(a, from, to) == said_by(b, from, to));
  for (const std::string& name : from) {
    EXPECT_STREQ(kpt_fate_word(fate(a, name)), kpt_fate_word(fate(b, name))) << name;
  }
}

TEST(Composition, IsAssociative) {
  std::mt19937 random(seed() + 3);
  const int rounds = steps(300);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 3, 4);
    const std::vector<KPT_KEYPOINTS_DB_IMPL*> stages = all_of(flow);
    const DATABASE all = composed(stages);
    const DATABASE front = composed({stages[0], stages[1]});
    const DATABASE back = composed({stages[1], stages[2]});
    if (all == nullptr) {
      continue;
    }
    ASSERT_NE(front, nullptr);
    ASSERT_NE(back, nullptr);
    const DATABASE left = composed({front.get(), stages[2]});
    const DATABASE right = composed({stages[0], back.get()});
    ASSERT_NE(left, nullptr);
    ASSERT_NE(right, nullptr);
    expect_same(*all, *left, flow);
    expect_same(*all, *right, flow);
  }
}

// A stage in which nothing happens to these registers.
DATABASE identity(const NAMES& names) {
  auto db = std::make_unique<KPT_KEYPOINTS_DB_IMPL>("identity");
  for (const std::string& name : names) {
    EXPECT_TRUE(db->associate_registers_signal_to_signal(name, name));
  }
  return db;
}

TEST(Composition, TakesAStageInWhichNothingHappensForNeutral) {
  std::mt19937 random(seed() + 4);
  const int rounds = steps(300);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 2, 4);
    const std::vector<KPT_KEYPOINTS_DB_IMPL*> stages = all_of(flow);
    const DATABASE all = composed(stages);
    const DATABASE before = identity(flow.netlists.front());
    const DATABASE behind = identity(flow.netlists.back());
    if (all != nullptr) {
      const DATABASE wider = composed({before.get(), stages[0], stages[1], behind.get()});
      ASSERT_NE(wider, nullptr);
      expect_same(*all, *wider, flow);
    }
  }
}

// A composition writes its normal form: composed alone, the result says the same in the same number of maps.
TEST(Composition, SaysTheSameWhenItIsComposedAlone) {
  std::mt19937 random(seed() + 5);
  const int rounds = steps(300);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const RANDOM_FLOW flow(random, 1 + static_cast<unsigned>(random() % 3), 4);
    const DATABASE all = composed(all_of(flow));
    if (all == nullptr) {
      continue;
    }
    const DATABASE again = composed({all.get()});
    ASSERT_NE(again, nullptr);
    expect_same(*all, *again, flow);
    EXPECT_EQ(all->get_transformation_set()->get_list_of_register_transformations().size(),
              again->get_transformation_set()->get_list_of_register_transformations().size());
  }
}

}  // namespace
