// The files that these databases are saved to, byte for byte: flows keep such
// files under version control and compare them.
#include <gmock/gmock.h>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/format/databases.h"

namespace {

using namespace kpt_test;

NI_PAIR pair_of(KPT_KEYPOINT_LIST n, KPT_KEYPOINT_LIST i = {}) { return {std::move(n), std::move(i)}; }

KPT_KEYPOINT* add(KPT_KEYPOINTS_DB_IMPL& db, KPT_SET_ENUM set, long id, std::string_view name) {
  return db.add_to_register_set(set, id, name);
}

TEST(GoldenFile, OfAnEmptyDatabase) {
  const DATABASE db = new_database("empty");
  EXPECT_EQ(saved(*db), read_file(data_file("empty.xml")));
}

TEST(GoldenFile, OfAKeptAnEliminatedAndAReEncodedRegister) {
  const DATABASE db = new_database("top");
  KPT_KEYPOINT* const q_a = db->add_to_register_set(KPT_REFERENCE_SET, 1, "q_a", "u1", "dff");
  KPT_KEYPOINT* const clk_en = add(*db, KPT_REFERENCE_SET, 2, "clk_en");
  KPT_KEYPOINT* const q_a_after = db->add_to_register_set(KPT_TRANSFORMED_SET, 1, "q_a", "u1", "dff");
  KPT_KEYPOINT* const s_0 = db->add_to_register_set(KPT_TRANSFORMED_SET, 3, "s_0", "u2", "dff");
  db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({q_a})}, NI_PAIR_VECTOR{pair_of({q_a_after})},
                                KPT_NOT_ELIMINATED);
  db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({clk_en})}, NI_PAIR_VECTOR{}, KPT_STUCK_AT_ZERO);
  KPT_STATE_TABLE_IMPL table(2, 0, 1);
  table.set_transformed_entry(2, 1, true);
  db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({})}, NI_PAIR_VECTOR{pair_of({s_0})}, table, KPT_NOT_ELIMINATED);
  EXPECT_EQ(saved(*db), read_file(data_file("three_maps.xml")));
}

TEST(GoldenFile, OfAStateMachine) {
  const DATABASE db = new_database("machine");
  NI_PAIR_VECTOR r;
  NI_PAIR_VECTOR t;
  for (const char* name : {"s0", "s1"}) {
    r.push_back(pair_of({add(*db, KPT_REFERENCE_SET, static_cast<long>(r.size()), name)}));
  }
  for (const char* name : {"h0", "h1", "h2"}) {
    t.push_back(pair_of({add(*db, KPT_TRANSFORMED_SET, static_cast<long>(t.size()), name)}));
  }
  KPT_STATE_TABLE_IMPL table(3, 2, 3);
  table.set_reference_entry(2, 2, true);
  table.set_reference_entry(3, 1, true);
  for (unsigned short row = 1; row <= 3; ++row) {
    table.set_transformed_entry(row, row, true);
  }
  db->add_to_transformation_set(r, t, table, KPT_NOT_ELIMINATED);
  EXPECT_EQ(saved(*db), read_file(data_file("state_machine.xml")));
}

TEST(GoldenFile, OfInvertingGroups) {
  const DATABASE db = new_database("inv");
  KPT_KEYPOINT* const a = add(*db, KPT_REFERENCE_SET, 0, "a");
  KPT_KEYPOINT* const b = add(*db, KPT_REFERENCE_SET, 1, "b");
  KPT_KEYPOINT* const x = add(*db, KPT_TRANSFORMED_SET, 0, "x");
  KPT_KEYPOINT* const y = add(*db, KPT_TRANSFORMED_SET, 1, "y");
  KPT_KEYPOINT* const z = add(*db, KPT_TRANSFORMED_SET, 2, "z");
  KPT_KEYPOINT* const w = add(*db, KPT_TRANSFORMED_SET, 3, "w");
  db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({a}, {b})}, NI_PAIR_VECTOR{pair_of({x, y}, {z})},
                                KPT_NOT_ELIMINATED);
  db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({b})}, NI_PAIR_VECTOR{pair_of({}, {w})}, KPT_NOT_ELIMINATED);
  EXPECT_EQ(saved(*db), read_file(data_file("inverting_groups.xml")));
}

TEST(GoldenFile, OfEveryEliminationWord) {
  const DATABASE db = new_database("gone");
  for (int status = KPT_NOT_ELIMINATED; status <= KPT_ELIMINATED; ++status) {
    KPT_KEYPOINT* const r = add(*db, KPT_REFERENCE_SET, status, "r" + std::to_string(status));
    db->add_to_transformation_set(NI_PAIR_VECTOR{pair_of({r})}, NI_PAIR_VECTOR{}, static_cast<KPT_ELIM_ENUM>(status));
  }
  EXPECT_EQ(saved(*db), read_file(data_file("elimination_words.xml")));
}

class GoldenFileRead : public testing::TestWithParam<const char*> {};

TEST_P(GoldenFileRead, SavesBackToItself) {
  const FOLDER folder;
  const std::string file = read_file(data_file(GetParam()));
  const LOADED loaded = load_data(GetParam());
  ASSERT_TRUE(loaded.result);
  std::string again = saved(*loaded.db);
  // A load without the manager uses the name of the database, not that of the file.
  again.replace(again.find("loaded"), 6, file.substr(14, file.find('"', 14) - 14));
  EXPECT_EQ(again, file);
}

INSTANTIATE_TEST_SUITE_P(, GoldenFileRead,
                         testing::Values("empty.xml", "three_maps.xml", "state_machine.xml", "inverting_groups.xml",
                                         "elimination_words.xml"));

}  // namespace
