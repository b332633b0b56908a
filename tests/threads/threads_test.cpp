// Different databases in different threads at once. Every thread goes through a
// flow of its own, and comes to what the same flow comes to alone. Under
// ThreadSanitizer (scripts/threads) the same tests look for data races.
#include <gmock/gmock.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"
#include "tests/support/live_blocks.h"

namespace {

constexpr int THREADS = 8;
constexpr int ROUNDS = 3;

// Starts them together.
void in_threads(const std::function<void(int)>& work) {
  std::atomic<int> waiting = THREADS;
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (int k = 0; k < THREADS; ++k) {
    threads.emplace_back([&, k] {
      for (--waiting; waiting > 0;) {
        std::this_thread::yield();
      }
      work(k);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

class FOLDER {
 public:
  FOLDER() {
    std::string name = (std::filesystem::temp_directory_path() / "kpt-threads-XXXXXX").string();
    m_path = ::mkdtemp(name.data());
  }
  ~FOLDER() { std::filesystem::remove_all(m_path); }
  FOLDER(const FOLDER&) = delete;
  FOLDER& operator=(const FOLDER&) = delete;
  std::string file(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

void write_group(std::ostream& out, const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  for (std::size_t index = 0; index < map.get_number_of_indices(side); ++index) {
    for (const bool inverted : {false, true}) {
      for (const KPT_REGISTER_KEYPOINT keypoint : map.get_group(side, index, inverted)) {
        out << (inverted ? " ~" : " ") << std::string_view(keypoint.get_name());
      }
    }
    out << " |";
  }
}

// All that a database says but its ids, which the threads draw from one counter.
std::string text_of(const KPT_KEYPOINTS_DB& db) {
  std::ostringstream out;
  for (const KPT_KEYPOINT_SET& set : {db.get_reference_set(), db.get_transformed_set()}) {
    for (const KPT_REGISTER_KEYPOINT keypoint : set) {
      out << std::string_view(keypoint.get_name()) << ' ';
    }
    out << '\n';
  }
  for (const KPT_REGISTER_TRANSFORMATION map : db.get_transformation_set()) {
    out << map.get_elimination() << map.has_fsm() << map.get_number_of_states();
    write_group(out, map, KPT_REFERENCE_SET);
    out << " ->";
    write_group(out, map, KPT_TRANSFORMED_SET);
    out << '\n';
  }
  return out.str();
}

std::string numbered(const char* name, int k) { return name + std::to_string(k); }

// One stage from the registers of `r` to those of `t`: every kind of event.
void record(const KPT_KEYPOINTS_DB& db, const char* r, const char* t, int registers) {
  for (int k = 0; k < registers; ++k) {
    db.associate_registers_signal_to_signal(numbered(r, k), numbered(t, k));
  }
  db.associate_registers_instance_to_instance(r, "entity", "dff", t, "entity", "dff");
  KPT_STATE_TABLE table(2, 2, 1);
  table.set_reference_entry(1, 1, true);
  table.set_reference_entry(2, 2, true);
  table.set_transformed_entry(2, 1, true);
  const auto name = [](const char* side, const char* text) { return KPT_STRING(side) + text; };
  db.associate_registers_fsm_signals({name(r, "_high"), name(r, "_low")}, {name(t, "_state")}, table);
  const KPT_STRING r_group[] = {name(r, "_group"), name(r, "_inverse")};
  const KPT_STRING t_group = name(t, "_group");
  const auto group = [](const KPT_STRING& text) { return KPT_REGISTER_NAME(std::string_view(text)); };
  db.associate_groups({KPT_GROUPS{{group(r_group[0])}, {group(r_group[1])}}}, {KPT_GROUPS{{group(t_group)}, {}}});
  db.set_replicated_registers(numbered(t, 0), name(t, "_replica"));
  db.set_merged_registers(numbered(t, 1), numbered(t, 2));
  db.set_inverter_retimed_register(numbered(t, 3));
  db.set_eliminated_register_stuck_at_one(numbered(t, 4));
  db.set_eliminated_register_no_fanout(numbered(t, 5));
}

// Asks for every register by its name.
int answers(const KPT_KEYPOINTS_DB& db, const char* r, int registers) {
  int count = 0;
  for (int k = 0; k < registers; ++k) {
    const KPT_REGISTER_TRANSFORMATION map = db.get_reference_register_transformation(numbered(r, k));
    count += !map.is_null() && map.get_fate(0) != KPT_FATE_UNKNOWN ? 1 : 0;
  }
  return count;
}

// A file that only the XML parser reads.
void add_comment(const std::string& path) { std::ofstream(path, std::ios::app) << "<!-- read by the parser -->\n"; }

// Two stages of a flow: recorded, saved both ways, loaded both ways, composed and united.
std::string flow(const FOLDER& folder, int thread, int registers) {
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  const auto name = [&](const char* what) { return numbered(what, thread); };
  const auto path = [&](const char* what) { return folder.file(name(what) + ".xml"); };
  std::string text;

  const KPT_KEYPOINTS_DB* const first = manager.create_keypoints_db(name("first"));
  const KPT_KEYPOINTS_DB* const second = manager.create_keypoints_db(name("second"));
  record(*first, "a", "b", registers);
  record(*second, "b", "c", registers);
  text += text_of(*first) + std::to_string(answers(*first, "a", registers));

  EXPECT_TRUE(second->save(path("plain")));
  EXPECT_TRUE(second->save_atomically(path("whole")));
  EXPECT_TRUE(manager.destroy_keypoints_db(name("second")));
  add_comment(path("whole"));
  EXPECT_TRUE(manager.create_keypoints_db(name("third"))->save_atomically(path("third")));
  const KPT_KEYPOINTS_DB* const loaded = manager.load_db(path("plain"));
  const KPT_UNREGISTERED_DB parsed = KPT_UNREGISTERED_DB::load(path("whole"));
  if (loaded == nullptr || parsed.is_null()) {
    return "a file was not loaded";
  }
  EXPECT_EQ(text_of(*loaded), text_of(*parsed));
  EXPECT_EQ(manager.load_db(path("plain")), nullptr);
  EXPECT_FALSE(KPT_UNREGISTERED_DB::create("\x01").save_atomically(path("refused")));

  const KPT_UNREGISTERED_DB composed = KPT_UNREGISTERED_DB::create("composed");
  EXPECT_TRUE(composed->compose({*first, *loaded}));
  text += text_of(*composed);
  EXPECT_TRUE(first->unite(*loaded));
  text += text_of(*first);
  for (const char* what : {"first", "second", "third"}) {
    EXPECT_TRUE(manager.destroy_keypoints_db(name(what)));
  }
  return text;
}

class Threads : public testing::Test {
 protected:
  // Errors are expected, in any thread.
  Threads() {
    kpt_host::set_error_sink([this](const char*, const char*) { ++m_errors; });
  }
  ~Threads() override { kpt_host::set_error_sink({}); }

  std::atomic<int> m_errors = 0;
  FOLDER m_folder;
};

TEST_F(Threads, ComeToWhatEachComesToAlone) {
  std::vector<std::string> alone;
  alone.reserve(THREADS);
  std::vector<std::string> together(THREADS);
  for (int k = 0; k < THREADS; ++k) {
    alone.push_back(flow(m_folder, k, 20 + k));
  }
  EXPECT_THAT(alone.front(), testing::HasSubstr("a19"));
  for (int round = 0; round < ROUNDS; ++round) {
    in_threads([&](int k) { together[static_cast<std::size_t>(k)] = flow(m_folder, k, 20 + k); });
    EXPECT_EQ(together, alone);
  }
  EXPECT_EQ(m_errors, THREADS * (ROUNDS + 1));
}

TEST_F(Threads, GiveEachIdOnce) {
  constexpr int REGISTERS = 2000;
  std::vector<std::vector<long>> ids(THREADS);
  in_threads([&](int thread) {
    const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("d");
    for (int k = 0; k < REGISTERS; ++k) {
      db->associate_registers_signal_to_signal(numbered("a", k), numbered("b", k));
    }
    for (const KPT_REGISTER_KEYPOINT keypoint : db->get_reference_set()) {
      ids[static_cast<std::size_t>(thread)].push_back(keypoint.get_id());
    }
  });
  std::vector<long> all;
  for (const std::vector<long>& of_thread : ids) {
    EXPECT_TRUE(std::is_sorted(of_thread.begin(), of_thread.end()));
    all.insert(all.end(), of_thread.begin(), of_thread.end());
  }
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all.size(), std::size_t{THREADS} * REGISTERS);
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

// The accounts would keep what one thread took from another's change.
TEST_F(Threads, LeaveNothingInTheAccountsOfTheHost) {
  const unsigned long before = kpt_test::live_blocks();
  in_threads([&](int) {
    for (int k = 0; k < 200; ++k) {
      const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("d");
      record(*db, "a", "b", 10);
    }
  });
  EXPECT_EQ(kpt_test::live_blocks(), before);
}

TEST_F(Threads, FindInTheRegistryWhatEachPutThere) {
  kpt_test::allow_live_blocks();  // of databases that were deleted through their handle, dead entries stay
  in_threads([](int thread) {
    KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
    for (int k = 0; k < 200; ++k) {
      const std::string name = numbered("of thread ", thread);
      KPT_KEYPOINTS_DB* const db = manager.create_keypoints_db(name);
      EXPECT_EQ(manager.get_keypoints_db(name), db);
      const KPT_KEYPOINTS_DB* const recorded = manager.record_db(KPT_UNREGISTERED_DB::create(name + " too"));
      EXPECT_EQ(manager.get_keypoints_db(name + " too"), recorded);
      if (k % 2 == 0) {
        db->delete_keypoints_db();
        EXPECT_EQ(manager.get_keypoints_db(name), nullptr);
      } else {
        EXPECT_TRUE(manager.destroy_keypoints_db(name));
      }
      EXPECT_TRUE(manager.destroy_keypoints_db(name + " too"));
    }
  });
}

// One of them records it, the others find its name taken.
TEST_F(Threads, LoadOneFileIntoTheRegistryOnce) {
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  const std::string path = m_folder.file("one.xml");
  EXPECT_TRUE(KPT_UNREGISTERED_DB::create("one").save_atomically(path));
  for (int round = 0; round < 20; ++round) {
    std::atomic<int> loaded = 0;
    in_threads([&](int) { loaded += manager.load_db(path) != nullptr ? 1 : 0; });
    EXPECT_EQ(loaded, 1);
    EXPECT_TRUE(manager.destroy_keypoints_db("one"));
  }
}

}  // namespace
