// The manager of the process. It outlives every test, so each test leaves it empty.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/live_blocks.h"

namespace {

using kpt_test::HOST_LINES;
using testing::ElementsAre;
using testing::IsEmpty;

class Manager : public testing::Test {
 protected:
  ~Manager() override {
    for (const char* name : {"a", "b", "c", "A", ""}) {
      while (manager->destroy_keypoints_db(name)) {
      }
    }
  }

  KPT_KEYPOINTS_MANAGER* manager = KPT_KEYPOINTS_MANAGER::get_instance();
  HOST_LINES lines;
};

TEST_F(Manager, IsOne) { EXPECT_EQ(KPT_KEYPOINTS_MANAGER::get_instance(), manager); }

TEST_F(Manager, FindsNothingWhenEmpty) {
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  EXPECT_EQ(manager->get_keypoints_db(""), nullptr);
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
  EXPECT_THAT(lines.debug(), IsEmpty());
}

TEST_F(Manager, CreatedDatabaseIsFoundUnderItsName) {
  KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("a");
  ASSERT_NE(db, nullptr);
  EXPECT_EQ(db->get_name(), "a");
  EXPECT_EQ(manager->get_keypoints_db("a"), db);
}

TEST_F(Manager, NamesAreComparedByteForByte) {
  KPT_KEYPOINTS_DB* lower = manager->create_keypoints_db("a");
  EXPECT_EQ(manager->get_keypoints_db("A"), nullptr);
  EXPECT_EQ(manager->get_keypoints_db("a "), nullptr);
  EXPECT_EQ(manager->get_keypoints_db(std::string("a\0", 2)), nullptr);
  KPT_KEYPOINTS_DB* upper = manager->create_keypoints_db("A");
  EXPECT_NE(upper, lower);
  EXPECT_EQ(manager->get_keypoints_db("A"), upper);
}

TEST_F(Manager, EmptyNameIsAName) {
  KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("");
  ASSERT_NE(db, nullptr);
  EXPECT_EQ(manager->get_keypoints_db(""), db);
}

TEST_F(Manager, PointersOutliveOtherDatabases) {
  KPT_KEYPOINTS_DB* a = manager->create_keypoints_db("a");
  KPT_KEYPOINTS_DB* b = manager->create_keypoints_db("b");
  KPT_KEYPOINTS_DB* c = manager->create_keypoints_db("c");
  EXPECT_TRUE(manager->destroy_keypoints_db("b"));
  EXPECT_NE(a, b);
  EXPECT_EQ(manager->get_keypoints_db("a"), a);
  EXPECT_EQ(manager->get_keypoints_db("c"), c);
  EXPECT_EQ(c->get_name(), "c");
  EXPECT_EQ(manager->get_keypoints_db("b"), nullptr);
}

// Flows that open their database twice get the first one both times. The second
// database exists after it in the list.
TEST_F(Manager, SecondCreateOfANameGivesTheFirstDatabase) {
  KPT_KEYPOINTS_DB* first = manager->create_keypoints_db("a");
  ASSERT_TRUE(first->associate_registers_signal_to_signal("r", "x"));
  EXPECT_EQ(manager->create_keypoints_db("a"), first);
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
  KPT_KEYPOINTS_DB* second = manager->get_keypoints_db("a");
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(second->get_reference_set().get_list_of_registers().empty());
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
}

TEST_F(Manager, DatabasesOfOneNameAreFoundAndDestroyedInOrderOfCreation) {
  for (const char* name : {"r1", "r2", "r3"}) {
    KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
    db->associate_registers_signal_to_signal(name, "x");
    manager->record_new_db(db);
    manager->create_keypoints_db("b");
  }
  for (const char* name : {"r1", "r2", "r3"}) {
    const KPT_KEYPOINTS_DB* db = manager->get_keypoints_db("a");
    ASSERT_NE(db, nullptr);
    EXPECT_FALSE(db->get_reference_register_transformation(name).is_null());
    EXPECT_TRUE(manager->destroy_keypoints_db("a"));
  }
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
}

TEST_F(Manager, HandleStaysGoodUntilItsOwnEntryGoes) {
  KPT_KEYPOINTS_DB* handle = manager->create_keypoints_db("a");
  const KPT_KEYPOINTS_DB copy = *handle;
  for (int k = 0; k < 1000; ++k) {
    manager->create_keypoints_db(k % 2 == 0 ? "a" : "b");
  }
  while (manager->destroy_keypoints_db("b")) {
  }
  EXPECT_TRUE(handle->associate_registers_signal_to_signal("r", "x"));
  EXPECT_FALSE(copy.get_reference_register_transformation("r").is_null());
  EXPECT_EQ(manager->get_keypoints_db("a"), handle);
}

TEST_F(Manager, UnrecordedDatabaseIsNotFound) {
  KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
  EXPECT_EQ(db->get_db_name(), "a");
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  delete db;
}

TEST_F(Manager, RecordedDatabaseIsFoundAndDestroyed) {
  KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
  EXPECT_TRUE(manager->record_new_db(db));
  KPT_KEYPOINTS_DB* handle = manager->get_keypoints_db("a");
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(&handle->get_name(), &db->get_db_name());
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
}

TEST_F(Manager, NullIsNotRecorded) {
  EXPECT_FALSE(manager->record_new_db(nullptr));
  EXPECT_EQ(manager->get_keypoints_db(""), nullptr);
}

TEST_F(Manager, DatabaseRecordedTwiceIsDestroyedOnce) {
  kpt_test::allow_live_blocks();
  KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
  EXPECT_TRUE(manager->record_new_db(db));
  EXPECT_TRUE(manager->record_new_db(db));
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
}

TEST_F(Manager, SavingAnUnknownNameIsRefusedWithALine) {
  EXPECT_FALSE(manager->save_db("a", "never_written.xml"));
  EXPECT_THAT(lines.debug(), ElementsAre("database named a doesn't exist"));
}

// --- dead entries: databases that were not destroyed through the manager ---

TEST_F(Manager, DatabaseDeletedThroughItsHandleIsFoundNoMore) {
  kpt_test::allow_live_blocks();  // the entry stays in the list until the process ends
  KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("a");
  EXPECT_TRUE(db->delete_keypoints_db());
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
  EXPECT_FALSE(manager->save_db("a", "never_written.xml"));
}

TEST_F(Manager, DatabaseDeletedThroughACopyIsFoundNoMore) {
  kpt_test::allow_live_blocks();
  KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("a");
  KPT_KEYPOINTS_DB copy = *db;
  EXPECT_TRUE(copy.delete_keypoints_db());
  EXPECT_TRUE(db->is_null());
  EXPECT_FALSE(db->delete_keypoints_db());
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
}

TEST_F(Manager, DatabaseDeletedAsSuchIsFoundNoMore) {
  kpt_test::allow_live_blocks();
  KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
  ASSERT_TRUE(manager->record_new_db(db));
  delete db;
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
  EXPECT_FALSE(manager->destroy_keypoints_db("a"));
}

TEST_F(Manager, DatabaseRecordedTwiceAndDeletedLeavesTwoDeadEntries) {
  kpt_test::allow_live_blocks();
  KPT_KEYPOINTS_DB_IMPL* db = manager->create_keypoints_db_impl("a");
  manager->record_new_db(db);
  manager->record_new_db(db);
  KPT_KEYPOINTS_DB handle(db);
  EXPECT_TRUE(handle.delete_keypoints_db());
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
}

TEST_F(Manager, NameOfADeadEntryIsFreeForTheNextDatabase) {
  kpt_test::allow_live_blocks();
  KPT_KEYPOINTS_DB copy = *manager->create_keypoints_db("a");
  copy.delete_keypoints_db();
  KPT_KEYPOINTS_DB* db = manager->create_keypoints_db("a");
  ASSERT_NE(db, nullptr);
  EXPECT_FALSE(db->is_null());
  EXPECT_EQ(manager->get_keypoints_db("a"), db);
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
  EXPECT_EQ(manager->get_keypoints_db("a"), nullptr);
}

TEST_F(Manager, DeadEntryIsPassedOverOnTheWayToOthers) {
  kpt_test::allow_live_blocks();
  manager->create_keypoints_db("a");
  KPT_KEYPOINTS_DB copy = *manager->create_keypoints_db("b");
  KPT_KEYPOINTS_DB* c = manager->create_keypoints_db("c");
  copy.delete_keypoints_db();
  EXPECT_EQ(manager->get_keypoints_db("c"), c);
  EXPECT_TRUE(manager->destroy_keypoints_db("c"));
  EXPECT_TRUE(manager->destroy_keypoints_db("a"));
}

}  // namespace
