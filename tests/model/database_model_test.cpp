// Random events on whole databases with few names, so that names collide often.
// After every step the database is compared with the plain one: the result, the
// debug lines, the registers, the maps, the entry of every register, and what a
// client learns of a map. The index checker runs as well.
#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/model/database_comparison.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/plain_database.h"
#include "tests/support/seed.h"

namespace {

using kpt_test::DATABASE_COMPARISON;
using kpt_test::LINES;
using kpt_test::plain::KEY;
using kpt_test::plain::MAP;
using kpt_test::plain::NONE;
using kpt_test::plain::PAIR;
using kpt_test::plain::R;
using kpt_test::plain::SIDE;
using kpt_test::plain::T;
using kpt_test::plain::TABLE;

using PLAIN_DATABASE = kpt_test::plain::DATABASE;

unsigned short narrow(unsigned long number) { return static_cast<unsigned short>(number); }

const std::vector<std::string> R_NAMES = {"a", "b", "c", "d", "e", "f", "g", "h", "k", "m", "n", "o"};
const std::vector<std::string> T_NAMES = {"p", "q", "r", "s", "t", "u", "v", "w"};
const std::vector<std::string> TEXTS = {"E", "F"};
constexpr int STEPS_PER_DATABASE = 100;

class DatabaseModel : public testing::Test {
 protected:
  void start_database() {
    m_db = std::make_unique<kpt_test::DATABASE>();
    const std::map<std::string, int> seen = m_model.seen;
    m_model = PLAIN_DATABASE();
    m_model.seen = seen;
    m_model.next_id[R] = KPT_KEYPOINTS_DB_IMPL::s_r_id;
    m_model.next_id[T] = KPT_KEYPOINTS_DB_IMPL::s_t_id;
    m_comparison.emplace(*m_db, m_model, m_lines, R_NAMES, T_NAMES);
    m_steps = 0;
  }

  unsigned long below(unsigned long bound) { return m_random() % bound; }
  const std::string& any(const std::vector<std::string>& of) { return of[below(of.size())]; }
  KEY any_key(SIDE side, bool is_signal) {
    const std::string& name = any(side == R ? R_NAMES : T_NAMES);
    return is_signal ? KEY{true, name, "", ""} : KEY{false, name, any(TEXTS), any(TEXTS)};
  }

  // Mostly names that are in use, so that more events are accepted than refused.
  std::string known_t_name() {
    std::string name = any(T_NAMES);
    for (int n = 0; n < 4 && m_model.signal(T, name) == NONE && below(20) != 0; ++n) {
      name = any(T_NAMES);
    }
    return name;
  }
  std::string free_name(SIDE side) {
    const std::vector<std::string>& of = side == R ? R_NAMES : T_NAMES;
    std::string name = any(of);
    for (int n = 0; n < 6 && m_model.signal(side, name) != NONE && below(20) != 0; ++n) {
      name = any(of);
    }
    return name;
  }

  void step() {
    if (m_db == nullptr || m_steps++ == STEPS_PER_DATABASE) {
      start_database();
    }
    const unsigned long operation = below(100);
    if (operation < 5) {
      associate("signal to signal", true, true);
    } else if (operation < 9) {
      associate("signal to instance", true, false);
    } else if (operation < 13) {
      associate("instance to signal", false, true);
    } else if (operation < 16) {
      associate("instance to instance", false, false);
    } else if (operation < 24) {
      associate_fsm();
    } else if (operation < 36) {
      const std::string name = known_t_name();
      const std::string replica = free_name(T);
      finish("replication", (*m_db)->set_replicated_registers(name, replica),
             m_model.replicate(name, replica, m_expected));
    } else if (operation < 52) {
      merge();
    } else if (operation < 64) {
      const std::string name = known_t_name();
      finish("retiming", (*m_db)->set_inverter_retimed_register(name), m_model.retime(name, m_expected));
    } else if (operation < 80) {
      eliminate();
    } else if (operation < 84) {
      add_any_map();
    } else if (operation < 86) {
      delete_any_map();
    } else {
      query();
    }
  }

  void finish(const std::string& kind, bool result, bool expected) {
    m_what = kind;
    ASSERT_EQ(result, expected) << kind;
    m_accepted[kind] += result ? 1 : 0;
    ASSERT_EQ(m_lines.take_debug(), m_expected) << kind;
    for (const std::string& line : m_expected) {
      ++m_said[line];
    }
    m_expected.clear();
  }

  void associate(const char* kind, bool r_signal, bool t_signal) {
    KEY r = any_key(R, r_signal);
    KEY t = any_key(T, t_signal);
    for (int n = 0; n < 4 && m_model.find(R, r) != NONE; ++n) {
      r = any_key(R, r_signal);
    }
    for (int n = 0; n < 4 && m_model.find(T, t) != NONE; ++n) {
      t = any_key(T, t_signal);
    }
    const kpt_test::DATABASE& db = *m_db;
    bool result = false;
    if (r_signal && t_signal) {
      result = db->associate_registers_signal_to_signal(r.name, t.name);
    } else if (r_signal) {
      result = db->associate_registers_signal_to_instance(r.name, t.name, t.entity, t.type);
    } else if (t_signal) {
      result = db->associate_registers_instance_to_signal(r.name, r.entity, r.type, t.name);
    } else {
      result = db->associate_registers_instance_to_instance(r.name, r.entity, r.type, t.name, t.entity, t.type);
    }
    finish(kind, result, m_model.associate(r, t));
  }

  void associate_fsm() {
    std::vector<std::string> names[2];
    KPT_STRING_VECTOR given[2];
    for (const SIDE side : {R, T}) {
      const unsigned long count = below(8) == 0 ? 0 : 1 + below(3);
      for (unsigned long n = 0; n < count; ++n) {
        names[side].push_back(free_name(side));
        given[side].emplace_back(names[side].back());
      }
    }
    TABLE table(below(5), below(6) == 0 ? below(4) : names[R].size(), below(6) == 0 ? below(4) : names[T].size());
    KPT_STATE_TABLE client(narrow(table.rows), narrow(table.columns[R]), narrow(table.columns[T]));
    for (const SIDE side : {R, T}) {
      for (unsigned long at = 0; at < table.bits[side].size(); ++at) {
        table.bits[side][at] = below(2) != 0;
        const unsigned short row = narrow(at / table.columns[side] + 1);
        const unsigned short column = narrow(at % table.columns[side] + 1);
        if (side == R) {
          client.set_reference_entry(row, column, table.bits[side][at]);
        } else {
          client.set_transformed_entry(row, column, table.bits[side][at]);
        }
      }
    }
    finish("state machine", (*m_db)->associate_registers_fsm_signals(given[R], given[T], client),
           m_model.associate_fsm(names[R], names[T], table));
  }

  // Tables multiply. Those that are too large to compare are not merged.
  bool too_large(const std::string& kept, const std::string& merged) {
    const MAP* a = m_model.map_of(T, m_model.signal(T, kept));
    const MAP* b = m_model.map_of(T, m_model.signal(T, merged));
    return a != nullptr && b != nullptr && a != b && a->fsm != b->fsm && a->table.rows * b->table.rows > 64;
  }

  void merge() {
    const std::string kept = known_t_name();
    const std::string merged = known_t_name();
    if (too_large(kept, merged)) {
      return;
    }
    finish("merge", (*m_db)->set_merged_registers(kept, merged), m_model.merge(kept, merged, m_expected));
  }

  void eliminate() {
    const std::string name = known_t_name();
    const kpt_test::DATABASE& db = *m_db;
    switch (below(7)) {
      case 0:
      case 1:
        finish("stuck at zero", db->set_eliminated_register_stuck_at_zero(name),
               m_model.eliminate(name, KPT_STUCK_AT_ZERO, m_expected));
        break;
      case 2:
      case 3:
        finish("stuck at one", db->set_eliminated_register_stuck_at_one(name),
               m_model.eliminate(name, KPT_STUCK_AT_ONE, m_expected));
        break;
      case 4:
      case 5:
        finish("no fanout", db->set_eliminated_register_no_fanout(name),
               m_model.eliminate(name, KPT_NO_FANOUT, m_expected));
        break;
      default: {
        m_accepted["without reason"] += m_model.map_of(T, m_model.signal(T, name)) != nullptr ? 1 : 0;
        finish("refusal", db->set_eliminated_register(name), m_model.eliminate(name, KPT_ELIMINATED, m_expected));
      }
    }
  }

  // A map as a loaded file or a union may make it: any registers, in any groups,
  // also registers that other maps list or that have left their set.
  void add_any_map() {
    MAP map;
    NI_PAIR_VECTOR real[2];
    for (const SIDE side : {R, T}) {
      const unsigned long pairs = below(6) == 0 ? 0 : 1 + below(2);
      for (unsigned long p = 0; p < pairs; ++p) {
        add_any_index(side, map, real[side]);
      }
    }
    map.status = static_cast<KPT_ELIM_ENUM>(below(5));
    m_model.add_map(map);
    const bool added =
        m_db->impl().add_to_transformation_set(std::move(real[R]), std::move(real[T]), map.status) != nullptr;
    finish("any map", added, true);
  }

  void add_any_index(SIDE side, MAP& map, NI_PAIR_VECTOR& real) {
    const kpt_test::plain::GROUP& registers = m_model.sets[side];
    PAIR pair;
    NI_PAIR real_pair;
    const unsigned long count = registers.empty() ? 0 : below(4);
    for (unsigned long n = 0; n < count; ++n) {
      const std::size_t k = registers[below(registers.size())];
      const bool inverted = below(3) == 0;
      pair.group(inverted).push_back(k);
      (inverted ? real_pair.second : real_pair.first).push_back(m_comparison->keypoint(k));
    }
    map.sides[side].push_back(pair);
    real.push_back(real_pair);
  }

  void delete_any_map() {
    if (m_model.maps.empty()) {
      return;
    }
    const std::size_t which = below(m_model.maps.size());
    KPT_TRANSFORMATION_IMPL* real = m_comparison->maps()[which];
    m_model.delete_map(std::next(m_model.maps.begin(), static_cast<long>(which))->first, m_expected);
    finish("deletion", m_db->set().delete_map(real), true);
  }

  void query() {
    m_what = "query";
    const SIDE side = below(2) == 0 ? R : T;
    const std::string& name = any(side == R ? R_NAMES : T_NAMES);
    m_accepted["query"] += m_model.map_of(side, m_model.signal(side, name)) != nullptr ? 1 : 0;
    m_comparison->check_answers(side, name);
  }

  std::mt19937 m_random{kpt_test::seed()};
  kpt_test::HOST_LINES m_lines;
  LINES m_expected;
  std::unique_ptr<kpt_test::DATABASE> m_db;
  PLAIN_DATABASE m_model;
  std::optional<DATABASE_COMPARISON> m_comparison;
  int m_steps = 0;
  std::string m_what;
  std::map<std::string, int> m_accepted;
  std::map<std::string, int> m_said;
};

TEST_F(DatabaseModel, EveryStepIsThatOfAPlainDatabase) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  const int steps = kpt_test::steps(100000);
  for (int n = 0; n < steps; ++n) {
    step();
    if (HasFatalFailure()) {
      FAIL() << "step " << n;
    }
    m_comparison->check();
    if (HasFatalFailure()) {
      FAIL() << "step " << n << ", after " << m_what;
    }
  }
  for (const std::map<std::string, int>* counts : {&m_accepted, &m_model.seen}) {
    for (const auto& [kind, count] : *counts) {
      std::cout << kind << ": " << count << "\n";
    }
  }
  if (steps < 100000) {
    return;
  }
  for (const char* kind : {"signal to signal", "signal to instance", "instance to signal", "instance to instance",
                           "state machine", "replication", "merge", "retiming", "stuck at zero", "stuck at one",
                           "no fanout", "without reason", "any map", "deletion", "query"}) {
    EXPECT_GE(m_accepted[kind], 1000) << kind;
  }
  for (const char* kind : {"merge within a map", "merge of plain maps", "merge into a machine", "merge of a machine",
                           "merge of opposite polarities"}) {
    EXPECT_GE(m_model.seen[kind], 100) << kind;
  }
  for (const char* line : {kpt_test::MERGE_OF_TWO_MACHINES, kpt_test::MERGE_OF_INVERSES, kpt_test::NOT_FOUND_TO_RETIME,
                           kpt_test::NOT_FOUND_TO_ELIMINATE, kpt_test::EMPTY_R_SIDE, kpt_test::EMPTY_T_SIDE,
                           kpt_test::REFUSED_READ, kpt_test::REFUSED_R_WRITE, kpt_test::REFUSED_T_WRITE}) {
    EXPECT_GE(m_said[line], 10) << line;
  }
}

}  // namespace
