// Unites random databases and compares the result with a plain second
// implementation over standard containers: maps, indexes, registers, ids, results
// and every line that the host gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "host/kpt_host.h"
#include "tests/support/plain_database.h"
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
  IMPORT(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed, plain::DATABASE& to) : m_renamed(renamed), model(to) {
    const KPT_KEYPOINT_SET_IMPL* const sets[2] = {db.get_reference_set(), db.get_transformed_set()};
    for (const SIDE side : {R, T}) {
      for (const KPT_KEYPOINT* k : sets[side]->get_list_of_keypoints()) {
        model.sets[side].push_back(known(k, true));
      }
    }
    KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
    std::map<const KPT_TRANSFORMATION_IMPL*, std::size_t> numbers;
    for (const KPT_TRANSFORMATION_IMPL* map : maps.get_list_of_register_transformations()) {
      numbers[map] = model.add_map({{import_side(map->r_vec()), import_side(map->t_vec())},
                                    map->map_has_fsm_transformation(),
                                    plain_table(map->get_register_state_table()),
                                    map->get_elim_status()});
    }
    for (const SIDE side : {R, T}) {
      model.index[side].clear();  // entries may lead elsewhere
      for (const auto& [k, number] : m_known) {
        const KPT_TRANSFORMATION_IMPL* map = side == R ? maps.get_map_of_r_keypoint(k) : maps.get_map_of_t_keypoint(k);
        if (map != nullptr) {
          model.index[side][number] = numbers.at(map);
        }
      }
    }
  }

 private:
  std::size_t known(const KPT_KEYPOINT* keypoint, bool in_set) {
    if (keypoint == nullptr) {
      return NONE;
    }
    const auto [entry, is_new] = m_known.emplace(keypoint, model.registers.size());
    if (is_new) {
      const auto& named = static_cast<const KPT_REGISTER_KEYPOINT_IMPL&>(*keypoint);
      const auto entered_as = m_renamed.find(keypoint);
      const std::string name(named.get_element_name());
      model.registers.push_back({{named.register_is_signal(), name, std::string(named.get_entity_name()),
                                  std::string(named.get_register_type())},
                                 named.get_kpid(),
                                 entered_as == m_renamed.end() ? name : entered_as->second,
                                 in_set});
    }
    return entry->second;
  }
  GROUP import_group(const KPT_KEYPOINT_LIST& group) {
    GROUP result;
    for (const KPT_KEYPOINT* k : group) {
      result.push_back(known(k, false));
    }
    return result;
  }
  PAIRS import_side(const NI_PAIR_VECTOR& side) {
    PAIRS result;
    for (const NI_PAIR& pair : side) {
      result.push_back({import_group(pair.first), import_group(pair.second)});
    }
    return result;
  }

  const RENAMED& m_renamed;
  plain::DATABASE& model;
  std::map<const KPT_KEYPOINT*, std::size_t> m_known;
};

std::string text(const plain::DATABASE& model, std::size_t k) {
  return k == NONE ? "null" : model.registers[k].key.name + "#" + std::to_string(model.registers[k].id);
}

std::string text(const plain::DATABASE& model, const GROUP& group) {
  std::string joined;
  for (const std::size_t k : group) {
    joined += text(model, k) + " ";
  }
  return joined;
}

std::string line_of(const plain::DATABASE& model, const MAP& map) {
  std::ostringstream line;
  line << (map.fsm ? "fsm " : "") << "status " << map.status << " ";
  for (const PAIRS& pairs : map.sides) {
    for (const PAIR& pair : pairs) {
      line << text(model, pair.n) << "~ " << text(model, pair.i) << "| ";
    }
    line << "-> ";
  }
  if (map.fsm) {
    line << map.table;
  }
  return line.str();
}

LINES describe(const plain::DATABASE& model) {
  LINES lines;
  for (const auto& [number, map] : model.maps) {
    lines.push_back(line_of(model, map));
  }
  for (const SIDE side : {R, T}) {
    for (const std::size_t k : model.walk(side)) {
      const MAP* map = model.map_of(side, k);
      const KEY& key = model.registers[k].key;
      lines.push_back(text(model, k) + key.entity + key.type + " leads to " +
                      (map == nullptr ? "none" : line_of(model, *map)));
    }
  }
  return lines;
}

LINES describe(KPT_KEYPOINTS_DB_IMPL& db, const RENAMED& renamed) {
  plain::DATABASE model;
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
      plain::DATABASE model1;
      plain::DATABASE model2;
      const IMPORT import1(db1, renamed, model1);
      const IMPORT import2(db2, renamed, model2);
      UNION expected(model1, model2, copy_leftovers);
      model1.next_id[R] = KPT_KEYPOINTS_DB_IMPL::s_r_id;
      model1.next_id[T] = KPT_KEYPOINTS_DB_IMPL::s_t_id;
      const LINES before = describe(db2, renamed);
      const bool expected_result = expected.run();
      lines.clear();
      const bool result = db1.unite_db(db2);
      failed_unions += result ? 0 : 1;
      ASSERT_EQ(result, expected_result);
      ASSERT_EQ(masked(lines.debug()), expected.lines);
      ASSERT_EQ(lines.internal_errors().size(), static_cast<std::size_t>(expected.internal_errors));
      ASSERT_EQ(describe(db1, renamed), describe(model1));
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, model1.next_id[R]);
      ASSERT_EQ(KPT_KEYPOINTS_DB_IMPL::s_t_id, model1.next_id[T]);
      ASSERT_EQ(describe(db2, renamed), before);
    }
  }
  kpt_host::clear_switches();
  std::cout << rounds << " rounds of three stages, " << failed_unions << " unions that failed\n";
}

}  // namespace
