// Unites random databases and compares the result with a plain second
// implementation over standard containers: maps, indexes, registers, ids, results
// and every line that the host gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "host/kpt_host.h"
#include "tests/support/seed.h"
#include "tests/union/plain_union.h"
#include "tests/union/random_stage.h"
#include "tests/union/stages.h"

namespace {

using namespace kpt_test;
using namespace kpt_test::plain;

// ---- From a database to the model, and both to text ----

class IMPORT {
 public:
  IMPORT(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed, MODEL& to) : m_renamed(renamed), model(to) {
    const KPT_KEYPOINT_SET_IMPL* const sets[2] = {db.get_reference_set(), db.get_transformed_set()};
    for (const int side : {0, 1}) {
      for (const KPT_KEYPOINT* k : sets[side]->get_list_of_keypoints()) {
        model.sets[side].all.push_back(known(k, false));
      }
    }
    KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
    std::map<const KPT_TRANSFORMATION_IMPL*, MAP*> copies;
    for (const KPT_TRANSFORMATION_IMPL* map : maps.get_list_of_register_transformations()) {
      model.maps.push_back({{import_side(map->r_vec()), import_side(map->t_vec())},
                            map->map_has_fsm_transformation(),
                            map->get_elim_status(),
                            std::make_shared<KPT_STATE_TABLE_IMPL>(map->get_register_state_table())});
      copies[map] = &model.maps.back();
    }
    for (const auto& [k, copy] : m_known) {
      for (const int side : {0, 1}) {
        const KPT_TRANSFORMATION_IMPL* map = side == 0 ? maps.get_map_of_r_keypoint(k) : maps.get_map_of_t_keypoint(k);
        if (map != nullptr) {
          model.index[side][copy] = copies.at(map);
        }
      }
    }
  }

 private:
  KP* known(const KPT_KEYPOINT* keypoint, bool retired) {
    if (keypoint == nullptr) {
      return nullptr;
    }
    KP*& k = m_known[keypoint];
    if (k == nullptr) {
      const auto& named = static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint);
      const auto key = m_renamed.find(keypoint);
      const std::string name(named.get_element_name());
      model.keypoints.push_back({named.get_kpid(), name, named.register_is_signal(),
                                 std::string(named.get_entity_name()), std::string(named.get_register_type()),
                                 key == m_renamed.end() ? name : key->second, retired});
      k = &model.keypoints.back();
    }
    return k;
  }
  GROUP import_group(const KPT_KEYPOINT_LIST& group) {
    GROUP result;
    for (const KPT_KEYPOINT* k : group) {
      result.push_back(known(k, true));
    }
    return result;
  }
  SIDE import_side(const NI_PAIR_VECTOR& side) {
    SIDE result;
    for (const NI_PAIR& pair : side) {
      result.emplace_back(import_group(pair.first), import_group(pair.second));
    }
    return result;
  }

  const RENAMED& m_renamed;
  MODEL& model;
  std::map<const KPT_KEYPOINT*, KP*> m_known;
};

std::string line_of(const MAP& map) {
  std::string line = map.fsm ? "fsm " : "";
  line += "status " + std::to_string(map.elim) + " ";
  for (const SIDE& side : map.sides) {
    for (const auto& [n, i] : side) {
      line += join(n, text) + "~ " + join(i, text) + "| ";
    }
    line += "-> ";
  }
  if (map.fsm) {
    for (const std::string& state : states_of(*map.table)) {
      line += state + ", ";
    }
  }
  return line;
}

LINES describe(const MODEL& model) {
  LINES lines;
  for (const MAP& map : model.maps) {
    if (map.alive) {
      lines.push_back(line_of(map));
    }
  }
  for (const int side : {0, 1}) {
    for (const KP* k : model.sets[side].walk()) {
      const MAP* map = model.map_of(side, k);
      lines.push_back(text(k) + k->entity + k->type + " leads to " + (map == nullptr ? "none" : line_of(*map)));
    }
  }
  return lines;
}

LINES describe(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed) {
  MODEL model;
  const IMPORT import(db, renamed, model);
  return describe(model);
}

TEST(UnionModel, AgreesWithAPlainImplementationOnRandomStages) {
  std::mt19937 random(seed());
  HOST_LINES lines;
  int failed_unions = 0;
  const int rounds = steps(3000);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const bool copy_leftovers = random() % 4 == 0;
    kpt_host::set_switch(COPY_LEFTOVERS, copy_leftovers);
    set_next_ids(0, 0);
    RENAMED renamed;
    KPT_KEYPOINTS_DB_IMPL db1("first");
    RECORDER(db1, random, 'a', 'b', renamed).record_anything();
    // A third stage starts from whatever the first union left.
    for (const char netlist : {'b', 'c'}) {
      KPT_KEYPOINTS_DB_IMPL db2("second");
      RECORDER(db2, random, netlist, static_cast<char>(netlist + 1), renamed).record_anything();
      MODEL model1;
      MODEL model2;
      const IMPORT import1(db1, renamed, model1);
      const IMPORT import2(db2, renamed, model2);
      MODEL_UNION expected(model1, model2, copy_leftovers);
      expected.next_r_id = KPT_KEYPOINTS_DB_IMPL::s_r_id;
      expected.next_t_id = KPT_KEYPOINTS_DB_IMPL::s_t_id;
      const LINES before = describe(db2, renamed);
      const bool expected_result = expected.run();
      lines.clear();
      const bool result = db1.unite_db(db2);
      failed_unions += result ? 0 : 1;
      ASSERT_EQ(result, expected_result);
      ASSERT_EQ(masked(lines.debug()), expected.lines);
      ASSERT_EQ(lines.internal_errors().size(), static_cast<std::size_t>(expected.internal_errors));
      ASSERT_EQ(describe(db1, renamed), describe(model1));
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, expected.next_r_id);
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, expected.next_t_id);
      ASSERT_EQ(describe(db2, renamed), before);
    }
  }
  kpt_host::clear_switches();
  std::cout << rounds << " rounds of three stages, " << failed_unions << " unions that failed\n";
}

}  // namespace
