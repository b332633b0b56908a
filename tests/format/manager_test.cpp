// Files through the manager: the databases that they become.
#include <gmock/gmock.h>

#include "db/kpt/kpt.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/live_blocks.h"

namespace {

using namespace kpt_test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// The manager, which every test leaves empty.
class ManagedFile : public testing::Test {
 protected:
  void TearDown() override {
    for (const char* name : {"top", "d", "empty"}) {
      while (m_manager->destroy_keypoints_db(name)) {
      }
    }
  }

  FOLDER m_folder;
  KPT_KEYPOINTS_MANAGER* const m_manager = KPT_KEYPOINTS_MANAGER::get_instance();
};

TEST_F(ManagedFile, BecomesADatabaseOfTheNameThatItCarries) {
  const KPT_KEYPOINTS_DB* const db = m_manager->load_db(data_file("three_maps.xml"));
  ASSERT_NE(db, nullptr);
  EXPECT_EQ(db->get_name(), "top");
  EXPECT_EQ(m_manager->get_keypoints_db("top"), db);
}

TEST_F(ManagedFile, SavesBackToItself) {
  ASSERT_NE(m_manager->load_db(data_file("three_maps.xml")), nullptr);
  EXPECT_TRUE(m_manager->save_db("top", m_folder.file("again.xml")));
  EXPECT_EQ(read_file(m_folder.file("again.xml")), read_file(data_file("three_maps.xml")));
}

TEST_F(ManagedFile, IsNotSavedInAFolderThatIsNotThere) {
  m_manager->create_keypoints_db("top");
  EXPECT_FALSE(m_manager->save_db("top", m_folder.file("missing/db.xml")));
}

TEST_F(ManagedFile, IsNotLoadedOverADatabaseOfItsName) {
  KPT_KEYPOINTS_DB* const earlier = m_manager->create_keypoints_db("top");
  const HOST_LINES lines;
  EXPECT_EQ(m_manager->load_db(data_file("three_maps.xml")), nullptr);
  EXPECT_THAT(lines.debug(), Contains("DB called top already exists\n"));
  EXPECT_EQ(m_manager->get_keypoints_db("top"), earlier);
  EXPECT_TRUE(m_manager->save_db("top", m_folder.file("db.xml")));
  EXPECT_THAT(registers(*load(m_folder.file("db.xml")).db->get_reference_set()), IsEmpty());
}

TEST_F(ManagedFile, IsNotLoadedWithoutAName) {
  EXPECT_EQ(m_manager->load_db(data_file("no_database_name.xml")), nullptr);
}

TEST_F(ManagedFile, IsNotLoadedWhenItDoesNotExist) {
  const HOST_LINES lines;
  EXPECT_EQ(m_manager->load_db(m_folder.file("missing.xml")), nullptr);
  EXPECT_EQ(lines.errors().size(), 1U);
}

TEST_F(ManagedFile, LeavesNoDatabaseWhenLoadingFailsHalfway) {
  EXPECT_EQ(m_manager->load_db(data_file("child_behind_transformations.xml")), nullptr);
  EXPECT_EQ(m_manager->get_keypoints_db("d"), nullptr);
}

TEST_F(ManagedFile, CanBeLoadedAgainOnceItsDatabaseIsGone) {
  ASSERT_NE(m_manager->load_db(data_file("empty.xml")), nullptr);
  EXPECT_EQ(m_manager->load_db(data_file("empty.xml")), nullptr);
  EXPECT_TRUE(m_manager->destroy_keypoints_db("empty"));
  EXPECT_NE(m_manager->load_db(data_file("empty.xml")), nullptr);
}

TEST_F(ManagedFile, CanBeLoadedOnceTheDatabaseOfItsNameWasDeletedThroughItsHandle) {
  allow_live_blocks();  // the empty entry stays until the process ends
  ASSERT_TRUE(m_manager->create_keypoints_db("empty")->delete_keypoints_db());
  EXPECT_NE(m_manager->load_db(data_file("empty.xml")), nullptr);
}

TEST_F(ManagedFile, IsNotSavedFromAnUnknownDatabase) {
  const HOST_LINES lines;
  EXPECT_FALSE(m_manager->save_db("unknown", m_folder.file("db.xml")));
  EXPECT_THAT(lines.debug(), ElementsAre("database named unknown doesn't exist"));
  EXPECT_THAT(m_folder.names(), IsEmpty());
}

}  // namespace
