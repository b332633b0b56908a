// A file of the library is the same after a load and a save.
#include <gmock/gmock.h>

#include <random>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "tests/format/databases.h"
#include "tests/support/seed.h"

namespace {

using namespace kpt_test;

// A database that no flow would make: any keypoint in any group, any status, and
// tables whose size need not fit their sides.
class RANDOM_DATABASE {
 public:
  explicit RANDOM_DATABASE(unsigned seed) : m_random(seed) {}

  DATABASE make() {
    DATABASE db = new_database("loaded");
    for (const KPT_SET_ENUM set : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
      m_keypoints[set].clear();
      const int count = below(12);
      for (int k = 0; k < count; ++k) {
        const long id = set == KPT_REFERENCE_SET ? db->get_next_r_id() : db->get_next_t_id();
        m_keypoints[set].push_back(below(3) == 0 ? db->add_to_register_set(set, id, name(k), text(), text())
                                                 : db->add_to_register_set(set, id, name(k)));
      }
    }
    for (int k = below(8); k > 0; --k) {
      const auto status = static_cast<KPT_ELIM_ENUM>(below(5));
      if (below(3) == 0) {
        db->add_to_transformation_set(side(KPT_REFERENCE_SET), side(KPT_TRANSFORMED_SET), table(), status);
      } else {
        db->add_to_transformation_set(side(KPT_REFERENCE_SET), side(KPT_TRANSFORMED_SET), status);
      }
    }
    return db;
  }

 private:
  int below(int end) { return std::uniform_int_distribution<>(0, end - 1)(m_random); }

  std::string text() {
    static constexpr std::string_view LETTERS = "ab[]/\\.$:>' ~`%;#0";
    std::string text;
    for (int k = below(30); k > 0; --k) {
      text += LETTERS[static_cast<std::size_t>(below(static_cast<int>(LETTERS.size())))];
    }
    return text.find("]]>") == std::string::npos ? text : "plain";
  }
  // All registers of a set have different names.
  std::string name(int k) { return text() + "#" + std::to_string(k); }

  KPT_KEYPOINT_LIST group(KPT_SET_ENUM set) {
    KPT_KEYPOINT_LIST keypoints;
    for (int k = m_keypoints[set].empty() ? 0 : below(4); k > 0; --k) {
      keypoints.push_back(m_keypoints[set][static_cast<std::size_t>(below(static_cast<int>(m_keypoints[set].size())))]);
    }
    return keypoints;
  }
  NI_PAIR_VECTOR side(KPT_SET_ENUM set) {
    NI_PAIR_VECTOR pairs;
    for (int k = below(4); k > 0; --k) {
      KPT_KEYPOINT_LIST n = group(set);
      pairs.push_back({std::move(n), group(set)});
    }
    return pairs;
  }
  KPT_STATE_TABLE_IMPL table() {
    const auto size = [&] { return static_cast<unsigned short>(below(6)); };
    KPT_STATE_TABLE_IMPL table(size(), size(), size());
    for (int k = 0; k < 40; ++k) {
      const auto place = [&](unsigned short count) {
        return static_cast<unsigned short>(1 + below(count > 0 ? count : 1));
      };
      if (table.get_num_states() > 0 && table.get_num_reference_registers() > 0) {
        table.set_reference_entry(place(table.get_num_states()), place(table.get_num_reference_registers()),
                                  below(2) == 0);
      }
      if (table.get_num_states() > 0 && table.get_num_transformed_registers() > 0) {
        table.set_transformed_entry(place(table.get_num_states()), place(table.get_num_transformed_registers()),
                                    below(2) == 0);
      }
    }
    return table;
  }

  std::mt19937 m_random;
  std::vector<KPT_KEYPOINT*> m_keypoints[2];
};

TEST(RoundTrip, GivesTheFileOfAnyDatabaseBack) {
  const COUNTERS counters(0, 0);
  const FOLDER folder;
  RANDOM_DATABASE random(seed());
  for (int step = 0; step < steps(300); ++step) {
    const DATABASE db = random.make();
    ASSERT_TRUE(db->save_atomically(folder.file("db.xml")));
    const std::string file = read_file(folder.file("db.xml"));
    const LOADED loaded = load(folder.file("db.xml"));
    ASSERT_TRUE(loaded.result) << "step " << step;
    ASSERT_EQ(saved(*loaded.db), file) << "step " << step;
    ASSERT_EQ(maps(*loaded.db), maps(*db)) << "step " << step;
  }
}

}  // namespace
