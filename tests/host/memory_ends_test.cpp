// Every public operation when its n-th allocation fails, for every n: once when
// only that allocation fails, and once when all later ones fail as well.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_xml_reader.h"
#include "tests/host/failing_allocation.h"
#include "tests/host/own_host.h"

namespace {

using DB = KPT_KEYPOINTS_DB_IMPL;
using kpt_test::s_allocations_left;
using kpt_test::s_fails_for_good;
using kpt_test::s_has_failed;
using own_host::record;
using testing::HasSubstr;

KPT_KEYPOINTS_MANAGER& manager() { return *KPT_KEYPOINTS_MANAGER::get_instance(); }

std::string text_of_file(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The process's own, because several may run at a time.
std::string temporary(const char* name) {
  return testing::TempDir() + "memory_ends_" + std::to_string(::getpid()) + "_" + name + ".xml";
}

KPT_STATE_TABLE two_states() {
  KPT_STATE_TABLE table(2, 2, 2);
  for (unsigned short column = 1; column <= 2; ++column) {
    table.set_reference_entry(1, column, column == 1);
    table.set_transformed_entry(2, column, column == 2);
  }
  return table;
}

void fill(DB& db) {
  db.associate_registers_signal_to_signal("a register with a long name", "its successor with a long name");
  db.associate_registers_signal_to_signal("b", "y");
  db.associate_registers_signal_to_instance("c", "u1", "an entity with a long name", "a type with a long name");
  db.associate_registers_fsm_signals({"s[0]", "s[1]"}, {"h[0]", "h[1]"}, two_states());
}

std::unique_ptr<DB> s_first;   // of a composition
std::unique_ptr<DB> s_second;  // of a composition or a union

void forget_stages() {
  s_first.reset();
  s_second.reset();
}

// Registers whose entry leads to a map that does not list them.
std::string faults_of(const KPT_TRANSFORMATION_SET_IMPL& maps, const KPT_KEYPOINT_SET_IMPL& registers,
                      KPT_SET_ENUM side) {
  std::string faults;
  registers.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    const KPT_TRANSFORMATION_IMPL* map =
        side == KPT_REFERENCE_SET ? maps.get_map_of_r_keypoint(k) : maps.get_map_of_t_keypoint(k);
    bool listed = false;
    if (map != nullptr) {
      KPT_TRANSFORMATION_IMPL::for_each_keypoint(side == KPT_REFERENCE_SET ? map->r_vec() : map->t_vec(),
                                                 [&](const KPT_KEYPOINT* listed_one) { listed |= listed_one == k; });
    }
    if (map != nullptr && !listed) {
      faults += std::string(k->get_element_name()) + " leads to a map that does not list it\n";
    }
    return true;
  });
  return faults;
}

std::string faults_of(DB& db) {
  return faults_of(*db.get_transformation_set(), *db.get_reference_set(), KPT_REFERENCE_SET) +
         faults_of(*db.get_transformation_set(), *db.get_transformed_set(), KPT_TRANSFORMED_SET);
}

// Everything that can be seen of a database: its file, the entries of its registers, and the next ids.
std::string state_of(DB& db) {
  const std::string path = temporary("state");
  db.save(path);
  std::string state = text_of_file(path);
  const auto add = [&](const KPT_KEYPOINT_SET_IMPL& set, bool reference) {
    set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
      const KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
      state += maps.get_map_of_r_keypoint(k) == nullptr ? "-" : "r";
      state += maps.get_map_of_t_keypoint(k) == nullptr ? "-" : "t";
      return reference || true;
    });
  };
  add(*db.get_reference_set(), true);
  add(*db.get_transformed_set(), false);
  return state + " " + std::to_string(DB::s_r_id) + " " + std::to_string(DB::s_t_id);
}

struct OPERATION {
  const char* name;
  std::function<void(DB&)> prepare;
  std::function<bool(DB&)> act;
  bool all_or_nothing;
  long most_changes = std::numeric_limits<long>::max();  // of failures that may leave a change
};

void PrintTo(const OPERATION& operation, std::ostream* out) { *out << operation.name; }

std::unique_ptr<DB> prepared(const OPERATION& operation) {
  DB::s_r_id = 0;
  DB::s_t_id = 0;
  auto db = std::make_unique<DB>("top");
  operation.prepare(*db);
  return db;
}

// Whether the operation succeeded. It must throw only std::bad_alloc.
bool act_with(const OPERATION& operation, DB& db, long allocations) {
  s_has_failed = false;
  s_allocations_left = allocations;
  try {
    operation.act(db);
    s_allocations_left = -1;
    return true;
  } catch (const std::bad_alloc&) {
    s_allocations_left = -1;
    return false;
  }
}

class MemoryEnds : public testing::TestWithParam<OPERATION> {
 protected:
  void SetUp() override { record().debug = false; }
  void TearDown() override {
    for (const char* name : {"state", "saved", "atomic"}) {
      std::remove(temporary(name).c_str());
    }
  }

  // Every n, until all allocations of the operation succeed.
  void try_all() {
    const std::string done = state_behind(-1);
    long changed = 0;
    for (long n = 0;; ++n) {
      const long blocks = record().live_blocks;
      {
        const std::unique_ptr<DB> db = prepared(GetParam());
        const std::string before = state_of(*db);
        const bool finished = act_with(GetParam(), *db, n);
        ASSERT_EQ(faults_of(*db), "") << n;
        if (!s_has_failed) {
          EXPECT_LE(changed, GetParam().most_changes);
          std::printf("%-40s %4ld allocations, %ld of them with a change behind\n", GetParam().name, n, changed);
          forget_stages();
          return;
        }
        const std::string after = state_of(*db);
        changed += !finished && after != before ? 1 : 0;
        if (GetParam().all_or_nothing && !finished) {
          ASSERT_EQ(after, before) << n;
          ASSERT_TRUE(act_with(GetParam(), *db, -1)) << n;
          ASSERT_EQ(state_of(*db), done) << n;
        }
      }
      forget_stages();
      ASSERT_EQ(record().live_blocks, blocks) << n;
    }
  }

 private:
  static std::string state_behind(long allocations) {
    const std::unique_ptr<DB> db = prepared(GetParam());
    act_with(GetParam(), *db, allocations);
    std::string state = state_of(*db);
    forget_stages();
    return state;
  }
};

TEST_P(MemoryEnds, AtTheNthAllocationOnce) {
  s_fails_for_good = false;
  try_all();
}

TEST_P(MemoryEnds, FromTheNthAllocationOn) {
  s_fails_for_good = true;
  try_all();
}

void nothing(DB&) {}

void two_stages(DB& db) {
  fill(db);
  s_second = std::make_unique<DB>("second");
  s_second->associate_registers_signal_to_signal("its successor with a long name", "what it became in the end");
  s_second->associate_registers_signal_to_signal("y", "q");
  s_second->associate_registers_signal_to_signal("a register that the first stage lacks", "w");
  s_second->associate_registers_signal_to_signal("another that the first stage lacks", "v");
  s_second->set_merged_registers("q", "what it became in the end");
}

// The stages of a composition, whose result is to be empty.
void two_stages_apart(DB& db) {
  s_first = std::make_unique<DB>("first");
  two_stages(*s_first);
  static_cast<void>(db);
}

bool associate_groups(DB& db) {
  const auto group = [](const char* name) { return KPT_REGISTER_NAME(std::string_view(name)); };
  const KPT_GROUPS_SIDE r{KPT_GROUPS{{group("a register of a group")}, {group("its inverse with a long name")}}};
  const KPT_GROUPS_SIDE t{KPT_GROUPS{{KPT_REGISTER_NAME("an instance with a long name", "entity", "dff")}, {}}};
  return !KPT_KEYPOINTS_DB(&db).associate_groups(r, t).is_null();
}

bool associate_groups_of_a_machine(DB& db) {
  const auto bit = [](const char* name) { return KPT_GROUPS{{KPT_REGISTER_NAME(std::string_view(name))}, {}}; };
  const KPT_GROUPS_SIDE r{bit("the first bit of a machine"), bit("the second bit of a machine")};
  const KPT_GROUPS_SIDE t{bit("the first bit of its code"), bit("the second bit of its code")};
  return !KPT_KEYPOINTS_DB(&db).associate_groups(r, t, two_states()).is_null();
}

INSTANTIATE_TEST_SUITE_P(
    , MemoryEnds,
    testing::Values(
        OPERATION{"associate_the_first", nothing,
                  [](DB& db) { return db.associate_registers_signal_to_signal("a register with a name", "another"); },
                  true},
        OPERATION{"associate_one_more", fill,
                  [](DB& db) {
                    return db.associate_registers_instance_to_instance("a register with a name", "an entity of its own",
                                                                       "a type of its own", "u9", "e", "dff");
                  },
                  true},
        OPERATION{"associate_a_machine", fill,
                  [](DB& db) {
                    return db.associate_registers_fsm_signals({"m[0]", "m[1]", "m[1]"}, {"n[0]", "n[1]"}, two_states());
                  },
                  true},
        OPERATION{"associate_groups", fill, associate_groups, true},
        OPERATION{"associate_groups_of_a_machine", fill, associate_groups_of_a_machine, true},
        OPERATION{
            "compose", two_stages_apart,
            [](DB& db) {
              return KPT_KEYPOINTS_DB(&db).compose({KPT_KEYPOINTS_DB(s_first.get()), KPT_KEYPOINTS_DB(s_second.get())});
            },
            false},
        OPERATION{"add_attributes", fill,
                  [](DB& db) {
                    return db.get_reference_set()->get_register("b")->add_attribute("a name that is long", "a value") &&
                           db.get_reference_register_transformation("b")->add_attribute("another that is long", "v");
                  },
                  false},
        OPERATION{"replicate", fill,
                  [](DB& db) { return db.set_replicated_registers("y", "a replica with a long name"); }, true},
        OPERATION{"replicate_of_a_machine", fill, [](DB& db) { return db.set_replicated_registers("h[0]", "copy"); },
                  true},
        OPERATION{"merge", fill, [](DB& db) { return db.set_merged_registers("y", "its successor with a long name"); },
                  true},
        OPERATION{"merge_into_a_machine", fill, [](DB& db) { return db.set_merged_registers("h[0]", "y"); }, false, 1},
        OPERATION{"merge_a_machine", fill, [](DB& db) { return db.set_merged_registers("y", "h[0]"); }, false, 1},
        OPERATION{"retime", fill, [](DB& db) { return db.set_inverter_retimed_register("y"); }, true},
        OPERATION{"retime_of_a_machine", fill, [](DB& db) { return db.set_inverter_retimed_register("h[0]"); }, true},
        OPERATION{"eliminate_stuck_at_zero", fill,
                  [](DB& db) { return db.set_eliminated_register_stuck_at_zero("its successor with a long name"); },
                  true},
        OPERATION{"eliminate_no_fanout_of_a_machine", fill,
                  [](DB& db) { return db.set_eliminated_register_no_fanout("h[0]"); }, true},
        OPERATION{
            "add_register", fill,
            [](DB& db) { return db.add_to_register_set(KPT_REFERENCE_SET, 9, "b", "an entity", "dff") != nullptr; },
            true},
        OPERATION{"unite", two_stages, [](DB& db) { return db.unite_db(*s_second); }, false},
        OPERATION{"complete", two_stages, [](DB& db) { return db.make_complete_db(*s_second); }, false},
        OPERATION{"clean_up", fill, [](DB& db) { return db.cleanup_transformed_keypoint_set(); }, true},
        OPERATION{"ask", fill,
                  [](DB& db) {
                    const KPT_REGISTER_TRANSFORMATION map(db.get_reference_register_transformation("s[0]"));
                    map.get_transformed_equivalents(0);
                    const KPT_STATE_TABLE table = map.get_state_table();
                    return KPT_STATE_TABLE(table).get_number_of_states() == 2;
                  },
                  true},
        OPERATION{"save", fill, [](DB& db) { return db.save(temporary("saved")); }, true},
        OPERATION{"save_atomically", fill, [](DB& db) { return db.save_atomically(temporary("atomic")); }, true}),
    [](const testing::TestParamInfo<OPERATION>& p) { return p.param.name; });

// ---- Files and the registry ----

class MemoryEndsFor : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    record().debug = false;
    s_fails_for_good = GetParam();
    DB db("loaded");
    fill(db);
    db.save(m_path);
  }
  ~MemoryEndsFor() override {
    s_allocations_left = -1;
    std::remove(m_path.c_str());
  }

  // `act` answers whether it succeeded. It throws nothing, leaves no memory behind,
  // says when memory ran out, and succeeds when it is repeated.
  void fail_all(const char* what, const std::function<bool()>& act) {
    for (long n = 0;; n += step_behind(n)) {
      const long blocks = record().live_blocks;
      record().errors.clear();
      s_has_failed = false;
      s_allocations_left = n;
      const bool done = act();
      s_allocations_left = -1;
      if (!s_has_failed) {
        ASSERT_TRUE(done);
        std::printf("%-40s %4ld allocations\n", what, n);
        return;
      }
      if (!done && !s_fails_for_good) {
        ASSERT_THAT(record().errors, testing::Contains(HasSubstr("memory has run out"))) << n;
      }
      ASSERT_TRUE(act()) << n;
      ASSERT_EQ(record().live_blocks, blocks) << n;
    }
  }

  void load_all(const char* what) {
    fail_all(what, [&] {
      const bool loaded = manager().load_db(m_path) != nullptr;
      manager().destroy_keypoints_db("loaded");
      return loaded;
    });
  }

  // The file as only the parser reads it.
  void make_general() const {
    const std::string plain = text_of_file(m_path);
    std::ofstream(m_path) << "<!DOCTYPE kpt_db [<!ENTITY e 'x'>]>" << plain;
  }

  // `create` throws std::bad_alloc or makes a database. `destroy` answers whether there was one.
  static void create_all(const std::function<void()>& create, const std::function<bool()>& destroy) {
    for (long n = 0;; ++n) {
      const long blocks = record().live_blocks;
      s_has_failed = false;
      s_allocations_left = n;
      try {
        create();
      } catch (const std::bad_alloc&) {
      }
      s_allocations_left = -1;
      const bool was_made = destroy();
      ASSERT_EQ(record().live_blocks, blocks) << n;
      if (!s_has_failed) {
        ASSERT_TRUE(was_made);
        return;
      }
    }
  }

  // The parser makes thousands of allocations. All of them are tried only when
  // the environment variable KPT_EVERY_ALLOCATION is set.
  static long step_behind(long n) { return n < 100 || std::getenv("KPT_EVERY_ALLOCATION") != nullptr ? 1 : 7; }

  std::string m_path = temporary("file");
};

TEST_P(MemoryEndsFor, ALoadOfAPlainFile) { load_all("load a plain file"); }

TEST_P(MemoryEndsFor, ALoadThroughTheParser) {
  make_general();
  load_all("load through the parser");
}

TEST_P(MemoryEndsFor, ALoadOfADatabaseThatNobodyRegisters) {
  const auto load = [&] {
    KPT_LOAD_PROBLEM problem;
    const bool loaded = !KPT_UNREGISTERED_DB::load(m_path, &problem).is_null();
    EXPECT_EQ(problem.is_none(), loaded);
    return loaded;
  };
  fail_all("load a plain file by itself", load);
  fail_all("and without asking for the problem", [&] { return !KPT_UNREGISTERED_DB::load(m_path).is_null(); });
  make_general();
  fail_all("load by itself through the parser", load);
}

TEST_P(MemoryEndsFor, ALoadFromBytes) {
  const std::string text = text_of_file(m_path);
  fail_all("load from bytes", [&] {
    KPT_MEMORY_BYTES bytes(text);
    return !KPT_UNREGISTERED_DB::load(bytes, "bytes that are shown by a long name").is_null();
  });
}

TEST_P(MemoryEndsFor, ADocument) {
  fail_all("read the name in a document", [&] { return KPT_XML_READER().get_db_name(m_path) == "loaded"; });
  fail_all("load a document", [&] {
    const long left = std::exchange(s_allocations_left, -1);
    DB db("loaded");
    s_allocations_left = left;
    return KPT_XML_READER().load_kpt_xml(m_path, &db);
  });
}

TEST_P(MemoryEndsFor, ADatabaseThatIsCreated) {
  create_all([] { manager().create_keypoints_db("a database with a long name"); },
             [] { return manager().destroy_keypoints_db("a database with a long name"); });
}

TEST_P(MemoryEndsFor, ADatabaseThatNobodyRegisters) {
  KPT_UNREGISTERED_DB db;
  create_all([&] { db = KPT_UNREGISTERED_DB::create("a database with a long name"); }, [&] { return db.destroy(); });
}

INSTANTIATE_TEST_SUITE_P(, MemoryEndsFor, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& p) { return p.param ? "good" : "once"; });

}  // namespace
