// Three and more stages united one after another, with state machines,
// merges, inversions, replications and eliminations in each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/index_checker.h"
#include "tests/support/seed.h"
#include "tests/union/random_stage.h"
#include "tests/union/stages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace kpt_test;

TEST(Stages, ThreeWithEveryEventInEach) {
  KPT_KEYPOINTS_DB_IMPL db("flow");
  for (const char* name : {"keep", "twin1", "twin2", "flip", "fan", "zero", "idle", "f0", "f1"}) {
    db.associate_registers_signal_to_signal(name, name);
  }
  db.associate_registers_fsm_signals({"m0", "m1"}, {"m0", "m1"}, client_table({"00 01", "01 10", "11 11"}));
  db.set_inverter_retimed_register("flip");
  db.set_replicated_registers("fan", "fan_1");
  db.set_merged_registers("twin1", "twin2");
  db.set_eliminated_register_stuck_at_zero("zero");

  KPT_KEYPOINTS_DB_IMPL second("second");
  for (const char* name : {"keep", "twin1", "flip", "fan", "fan_1", "idle"}) {
    second.associate_registers_signal_to_signal(name, std::string(name) + "_s2");
  }
  second.associate_registers_fsm_signals({"f0", "f1"}, {"g0", "g1", "g2"},
                                         client_table({"00 100", "01 010", "10 001"}));
  second.set_inverter_retimed_register("keep_s2");
  second.set_replicated_registers("twin1_s2", "twin1_s2_1");
  second.set_eliminated_register_no_fanout("idle_s2");
  EXPECT_TRUE(db.unite_db(second));
  EXPECT_THAT(maps_of(db), ElementsAre("keep~ -> ~keep_s2", "twin1 twin2~ -> twin1_s2 twin1_s2_1~", "flip~ -> ~flip_s2",
                                       "fan~ -> fan_s2 fan_1_s2~", "zero~ -> ~ status 1", "idle~ -> ~ status 3",
                                       "m0~|m1~ -> m0~|m1~ fsm", "f0~|f1~ -> g0~|g1~|g2~ fsm"));
  EXPECT_THAT(faults_after_union(db), IsEmpty());

  KPT_KEYPOINTS_DB_IMPL third("third");
  for (const char* name : {"keep_s2", "twin1_s2", "twin1_s2_1", "flip_s2", "fan_s2", "fan_1_s2"}) {
    third.associate_registers_signal_to_signal(name, std::string(name) + "_s3");
  }
  third.associate_registers_fsm_signals({"h0"}, {"h0"}, client_table({"0 1", "1 0"}));
  third.set_inverter_retimed_register("keep_s2_s3");
  third.set_inverter_retimed_register("fan_1_s2_s3");
  third.set_merged_registers("flip_s2_s3", "twin1_s2_s3");
  third.set_eliminated_register_stuck_at_one("fan_s2_s3");
  EXPECT_TRUE(db.unite_db(third));
  EXPECT_THAT(faults_after_union(db), IsEmpty());
  EXPECT_EQ(line_of(*db.get_reference_register_transformation("keep")), "keep~ -> keep_s2_s3~");
  EXPECT_EQ(line_of(*db.get_reference_register_transformation("fan")), "fan~ -> ~fan_1_s2_s3");
  EXPECT_EQ(line_of(*db.get_transformed_register_transformation("h0")), "h0~ -> h0~ fsm");
  EXPECT_EQ(line_of(*db.get_reference_register_transformation("zero")), "zero~ -> ~ status 1");
  EXPECT_EQ(db.get_reference_register_transformation("twin1"), db.get_reference_register_transformation("flip"));
}

TEST(Stages, ARegisterKeepsItsMapThroughFiveOfThem) {
  KPT_KEYPOINTS_DB_IMPL db("flow");
  db.associate_registers_signal_to_signal("a", "a1");
  for (int stage = 2; stage <= 5; ++stage) {
    KPT_KEYPOINTS_DB_IMPL next("next");
    next.associate_registers_signal_to_signal("a" + std::to_string(stage - 1), "a" + std::to_string(stage));
    next.set_inverter_retimed_register("a" + std::to_string(stage));
    EXPECT_TRUE(db.unite_db(next));
  }
  EXPECT_THAT(maps_of(db), ElementsAre("a~ -> a5~"));
  EXPECT_EQ(names_of(db.get_transformed_set()), "a5");
}

TEST(Stages, ADatabaseThatWasUnitedIsItselfANextStage) {
  KPT_KEYPOINTS_DB_IMPL first("first");
  KPT_KEYPOINTS_DB_IMPL second("second");
  KPT_KEYPOINTS_DB_IMPL third("third");
  first.associate_registers_signal_to_signal("a", "x");
  second.associate_registers_signal_to_signal("x", "p");
  third.associate_registers_signal_to_signal("p", "z");
  EXPECT_TRUE(second.unite_db(third));
  EXPECT_TRUE(first.unite_db(second));
  EXPECT_THAT(maps_of(first), ElementsAre("a~ -> z~"));
}

// ---- Random stages ----

// The reference registers of plain maps that a state machine of the next stage
// may replace: their map feeds a machine, either itself or through maps with
// which it may be fused.
std::set<const KPT_KEYPOINT*> may_be_replaced(KPT_KEYPOINTS_DB_IMPL& db, KPT_KEYPOINTS_DB_IMPL& next) {
  using MAP = const KPT_TRANSFORMATION_IMPL*;
  std::map<MAP, MAP> up;
  const std::function<MAP(MAP)> find = [&](MAP map) {
    MAP& parent = up.try_emplace(map, map).first->second;
    return parent == map ? map : parent = find(parent);
  };
  const auto namesakes_map = [&](const KPT_KEYPOINT* keypoint) -> MAP {
    const auto& named = static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint);
    const KPT_KEYPOINT* in_db =
        named.register_is_signal()
            ? db.get_transformed_set()->get_register(named.get_element_name())
            : db.get_transformed_set()->get_register(named.get_element_name(), "", named.get_register_type());
    return db.get_transformation_set()->get_map_of_t_keypoint(in_db);
  };
  std::vector<MAP> machines;
  for (MAP map2 : next.get_transformation_set()->get_list_of_register_transformations()) {
    if (map2->map_has_fsm_transformation()) {
      machines.push_back(map2);
    }
    KPT_TRANSFORMATION_IMPL::for_each_keypoint(map2->r_vec(), [&](const KPT_KEYPOINT* k) {
      if (MAP map1 = namesakes_map(k)) {
        up[find(map1)] = find(map2);
      }
    });
  }
  std::set<MAP> replaced;
  for (MAP machine : machines) {
    replaced.insert(find(machine));
  }
  std::set<const KPT_KEYPOINT*> registers;
  for (MAP map1 : db.get_transformation_set()->get_list_of_register_transformations()) {
    if (replaced.contains(find(map1))) {
      KPT_TRANSFORMATION_IMPL::for_each_keypoint(map1->r_vec(), [&](const KPT_KEYPOINT* k) { registers.insert(k); });
    }
  }
  return registers;
}

// A flow of random stages, with the checks of its database after each stage.
class RANDOM_FLOW {
 public:
  explicit RANDOM_FLOW(std::mt19937& random) : m_random(random), m_db("flow") {
    RECORDER(m_db, m_random, 'a', 'b', m_renamed).record_passes();
    for (const KPT_KEYPOINT* r : m_db.get_reference_set()->get_list_of_keypoints()) {
      m_sought.insert(r);
    }
  }

  /// Unites the stage that starts from that netlist; false when two machines met.
  bool unite_stage(char netlist) {
    KPT_KEYPOINTS_DB_IMPL next("next");
    RECORDER(next, m_random, netlist, static_cast<char>(netlist + 1), m_renamed).record_passes();
    for (const KPT_KEYPOINT* r : may_be_replaced(m_db, next)) {
      replaced += static_cast<int>(m_sought.erase(r));
    }
    EXPLANATIONS facts;
    for (const KPT_KEYPOINT* between : m_db.get_transformed_set()->get_list_of_keypoints()) {
      facts.r.entered.insert(between);
      facts.t.erased.insert(between);
      facts.t.repointed.insert(between);
    }
    if (!m_db.unite_db(next)) {
      return false;
    }
    EXPECT_THAT(faults_after_union(m_db), IsEmpty());
    add_facts_after_union(facts);
    check_indexes(facts);
    find_sought();
    return true;
  }

  int replaced = 0;
  int found = 0;

 private:
  void add_facts_after_union(EXPLANATIONS& facts) {
    for (const KPT_KEYPOINT* t : m_db.get_transformed_set()->get_list_of_keypoints()) {
      facts.r.entered.insert(t);
      facts.t.repointed.insert(t);
    }
    // The registers between the stages that a machine lists are in no set.
    const KPT_KEYPOINT_LIST references = m_db.get_reference_set()->get_list_of_keypoints();
    for (const KPT_TRANSFORMATION_IMPL* map : m_db.get_transformation_set()->get_list_of_register_transformations()) {
      KPT_TRANSFORMATION_IMPL::for_each_keypoint(map->r_vec(), [&](const KPT_KEYPOINT* k) {
        if (std::find(references.begin(), references.end(), k) == references.end()) {
          facts.r.entered.insert(k);
          facts.r.repointed.insert(k);
          facts.r.erased.insert(k);
        }
      });
    }
    facts.r.dead = facts.t.dead = 1000;
  }

  void check_indexes(const EXPLANATIONS& facts) {
    for (const std::string& difference : index_differences(m_db, facts)) {
      // A name that was deleted between the stages and was added again is another keypoint.
      if (difference.find("the transformed index leads from") == std::string::npos ||
          difference.find(" to no map") == std::string::npos) {
        ADD_FAILURE() << difference;
      }
    }
  }

  void find_sought() {
    const KPT_KEYPOINT_SET_IMPL& references = *m_db.get_reference_set();
    for (const KPT_KEYPOINT* r : m_sought) {
      const auto& named = static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*r);
      const KPT_KEYPOINT* by_name = named.register_is_signal()
                                        ? references.get_register(r->get_element_name())
                                        : references.get_register(r->get_element_name(), "", named.get_register_type());
      EXPECT_NE(m_db.get_transformation_set()->get_map_of_r_keypoint(r), nullptr) << r->get_element_name();
      EXPECT_EQ(by_name, r) << r->get_element_name();
      ++found;
    }
  }

  std::mt19937& m_random;
  RENAMED m_renamed;
  KPT_KEYPOINTS_DB_IMPL m_db;
  std::set<const KPT_KEYPOINT*> m_sought;  // reference registers that must keep a map
};

TEST(Stages, LeaveNoRegisterWithoutAMapAndLoseNoneButToStateMachines) {
  std::mt19937 random(seed() + 1);
  const int rounds = steps(1500);
  int unions = 0;
  int found = 0;
  int replaced = 0;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    RANDOM_FLOW flow(random);
    for (const char netlist : {'b', 'c', 'd'}) {
      SCOPED_TRACE(netlist);
      if (!flow.unite_stage(netlist)) {
        break;
      }
      ++unions;
    }
    found += flow.found;
    replaced += flow.replaced;
  }
  std::cout << unions << " unions; reference registers found " << found << ", lost to machines " << replaced << "\n";
  EXPECT_GT(unions, rounds);
  EXPECT_GT(found, 10 * replaced / 4);
}

}  // namespace
