// A value that owns a database outside the manager's registry.
#include "db/kpt/kpt_unregistered_db.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "db/kpt/kpt.h"
#include "tests/support/host_lines.h"
#include "tests/support/live_blocks.h"

namespace {

using testing::HasSubstr;

class UnregisteredDb : public testing::Test {
 protected:
  UnregisteredDb() { std::filesystem::create_directory(folder); }
  ~UnregisteredDb() override { std::filesystem::remove_all(folder); }

  std::string file(const std::string& name) const { return (folder / name).string(); }
  std::string write(const std::string& text) const {
    std::ofstream(folder / "written.xml") << text;
    return file("written.xml");
  }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("kpt_unregistered_" + std::to_string(::getpid()));
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  kpt_test::HOST_LINES lines;
};

KPT_UNREGISTERED_DB example() {
  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("d");
  db->associate_registers_signal_to_signal("a", "x");
  return db;
}

TEST_F(UnregisteredDb, IsUnknownToTheManager) {
  const KPT_UNREGISTERED_DB db = example();
  EXPECT_FALSE(db.is_null());
  EXPECT_EQ(db->get_name(), "d");
  EXPECT_EQ(manager.get_keypoints_db("d"), nullptr);
}

TEST_F(UnregisteredDb, OwnsNothingAtFirst) {
  KPT_UNREGISTERED_DB db;
  EXPECT_TRUE(db.is_null());
  EXPECT_TRUE(db.get().is_null());
  EXPECT_FALSE(db.save(file("d.xml")));
  EXPECT_FALSE(db.save_atomically(file("d.xml")));
  EXPECT_FALSE(db.destroy());
  EXPECT_FALSE(std::filesystem::exists(file("d.xml")));
}

TEST_F(UnregisteredDb, DestroysItsDatabase) {
  const auto before = kpt_test::live_blocks();
  {
    KPT_UNREGISTERED_DB first = example();
    KPT_UNREGISTERED_DB second = example();
    EXPECT_TRUE(second.destroy());
    EXPECT_TRUE(second.is_null());
    EXPECT_GT(kpt_test::live_blocks(), before);
  }
  EXPECT_EQ(kpt_test::live_blocks(), before);
}

TEST_F(UnregisteredDb, MovesWithItsDatabase) {
  KPT_UNREGISTERED_DB db = example();
  const KPT_KEYPOINTS_DB handle = db.get();
  KPT_UNREGISTERED_DB moved = std::move(db);
  EXPECT_TRUE(db.is_null());  // NOLINT(bugprone-use-after-move)
  EXPECT_FALSE(moved.is_null());
  EXPECT_EQ(handle.get_name(), "d");
  moved = KPT_UNREGISTERED_DB::create("e");
  EXPECT_EQ(moved->get_name(), "e");
  KPT_UNREGISTERED_DB& same = moved;
  moved = std::move(same);
  EXPECT_EQ(moved->get_name(), "e");
}

TEST_F(UnregisteredDb, IsSavedAndLoadedBesideOthersOfItsName) {
  const KPT_UNREGISTERED_DB db = example();
  ASSERT_TRUE(db.save_atomically(file("atomic.xml")));
  ASSERT_TRUE(db.save(file("plain.xml")));
  for (const char* name : {"atomic.xml", "plain.xml"}) {
    KPT_LOAD_PROBLEM problem;
    const KPT_UNREGISTERED_DB loaded = KPT_UNREGISTERED_DB::load(file(name), &problem);
    ASSERT_FALSE(loaded.is_null());
    EXPECT_TRUE(problem.is_none());
    EXPECT_EQ(loaded->get_name(), "d");
    EXPECT_EQ(loaded->get_reference_register_transformation("a").get_transformed(0).get_name(), "x");
  }
  EXPECT_EQ(manager.get_keypoints_db("d"), nullptr);
}

TEST_F(UnregisteredDb, IsNotSavedInAFolderThatIsNotThere) {
  const KPT_UNREGISTERED_DB db = example();
  EXPECT_FALSE(db.save(file("missing/d.xml")));
  EXPECT_FALSE(db.save_atomically(file("missing/d.xml")));
}

TEST_F(UnregisteredDb, BecomesTheManagersByRecording) {
  KPT_UNREGISTERED_DB db = example();
  KPT_KEYPOINTS_DB* recorded = manager.record_db(std::move(db));
  EXPECT_TRUE(db.is_null());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(manager.get_keypoints_db("d"), recorded);
  EXPECT_EQ(recorded->get_reference_set().size(), 1U);
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
  EXPECT_EQ(manager.record_db(KPT_UNREGISTERED_DB()), nullptr);
}

TEST_F(UnregisteredDb, IsRecordedAfterAnotherOfItsName) {
  KPT_KEYPOINTS_DB* first = manager.create_keypoints_db("d");
  KPT_KEYPOINTS_DB* second = manager.record_db(example());
  EXPECT_NE(first, second);
  EXPECT_EQ(manager.get_keypoints_db("d"), first);
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
  EXPECT_EQ(manager.get_keypoints_db("d"), second);
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
}

// ---- why a load failed ----

TEST_F(UnregisteredDb, TellsWhereAFileIsNotWellFormed) {
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(write("<kpt_db name=\"d\">\n</kpt_bd>\n"), &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
  EXPECT_EQ(problem.line, 2);
  EXPECT_GT(problem.column, 1);
  ASSERT_EQ(lines.errors().size(), 1U);
  EXPECT_THAT(lines.errors()[0], HasSubstr(std::string(problem.message)));
}

TEST_F(UnregisteredDb, TellsThatAFileCannotBeRead) {
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(file("absent.xml"), &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
  EXPECT_FALSE(problem.message.empty());
}

TEST_F(UnregisteredDb, TellsThatADatabaseHasNoName) {
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(write("<kpt_db></kpt_db>"), &problem).is_null());
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NO_NAME);
  EXPECT_EQ(problem.message, "the database has no name");
}

TEST_F(UnregisteredDb, TellsThatSomethingFollowsTheTransformations) {
  for (const char* declaration : {"", "<!DOCTYPE kpt_db>"}) {
    KPT_LOAD_PROBLEM problem;
    const std::string text = "<kpt_db name=\"d\"><transformations_set></transformations_set><more/></kpt_db>";
    EXPECT_TRUE(KPT_UNREGISTERED_DB::load(write(declaration + text), &problem).is_null());
    EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_COMPLETE);
    EXPECT_EQ(problem.message, "something follows the transformations");
  }
}

TEST_F(UnregisteredDb, LoadsWithoutAskingForTheProblem) {
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(file("absent.xml")).is_null());
}

TEST_F(UnregisteredDb, ManagerTellsThatANameIsTaken) {
  ASSERT_TRUE(example().save_atomically(file("d.xml")));
  manager.create_keypoints_db("d");
  KPT_LOAD_PROBLEM problem;
  EXPECT_EQ(manager.load_db(file("d.xml"), problem), nullptr);
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NAME_IS_TAKEN);
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
  EXPECT_NE(manager.load_db(file("d.xml"), problem), nullptr);
  EXPECT_TRUE(problem.is_none());
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
}

// ---- who sees the elements ----

// What a visitor is shown, one word a call.
class SEEN : public KPT_FILE_VISITOR {
 public:
  void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) override {
    all += std::string(name) + std::string(attributes.value("id")) + "@" + std::to_string(line) + " ";
  }
  void end(std::size_t line) override { all += "/@" + std::to_string(line) + " "; }
  void text(std::string_view piece) override {
    for (const char c : piece) {
      all += c == '\n' || c == ' ' ? "" : std::string(1, c) + " ";
    }
  }
  void start_reference() override { all += "( "; }
  void end_reference() override { all += ") "; }

  std::string all;
};

std::string seen_of(std::string_view text) {
  KPT_MEMORY_BYTES bytes(text);
  SEEN seen;
  KPT_UNREGISTERED_DB::load(bytes, "bytes", nullptr, &seen);
  return seen.all;
}

TEST_F(UnregisteredDb, ShowsEveryElementWithItsLineWhicheverSourceReadsIt) {
  const std::string body =
      "<kpt_db name=\"d\">\r\n<key_points_set\n type=\"reference\">\r<key_point id=\"7\" type=\"register\">"
      "<name>x&#65;</name>\n</key_point></key_points_set>\n<transformations_set/>\n</kpt_db>\n";
  const std::string expected =
      "kpt_db@1 key_points_set@3 key_point7@4 name@4 x A /@4 /@5 /@5 transformations_set@6 /@6 /@7 ";
  EXPECT_EQ(seen_of(body), expected);
  EXPECT_EQ(seen_of("<?xml version=\"1.0\"?>" + body), expected);
}

TEST_F(UnregisteredDb, CountsLinesOverThePiecesInWhichAFileIsRead) {
  std::string text = "<kpt_db name=\"d\">";
  for (int k = 0; k < 5000; ++k) {
    text += k % 2 == 0 ? "\r\n<a  />" : "\r<a b=\"" + std::string(static_cast<std::size_t>(k % 97), 'x') + "\"\n/>";
  }
  const std::string plain = seen_of(text + "</kpt_db>");
  EXPECT_EQ(plain, seen_of("<?xml version=\"1.0\"?>" + text + "</kpt_db>"));
  EXPECT_THAT(plain, testing::EndsWith("a@7501 /@7501 /@7501 "));
}

TEST_F(UnregisteredDb, ShowsWhatAnEntityStandsForAsThat) {
  EXPECT_EQ(seen_of("<!DOCTYPE kpt_db [<!ENTITY k \"<a/>\">]><kpt_db name=\"d\">&k;</kpt_db>"),
            "kpt_db@1 ( a@1 /@1 ) /@1 ");
}

TEST_F(UnregisteredDb, ShowsTheElementsOfAFileThatIsRefused) {
  EXPECT_EQ(seen_of("<kpt_db>\n<a/></kpt_db>"), "kpt_db@1 a@2 /@2 /@2 ");
  EXPECT_EQ(seen_of("<kpt_db>\n<a/></kpt_d>"), "kpt_db@1 a@2 /@2 ");
}

// ---- the manager's atomic save ----

TEST_F(UnregisteredDb, ManagerSavesAtomicallyByName) {
  manager.create_keypoints_db("d")->associate_registers_signal_to_signal("a", "x");
  EXPECT_TRUE(manager.save_db_atomically("d", file("d.xml")));
  EXPECT_FALSE(KPT_UNREGISTERED_DB::load(file("d.xml")).is_null());
  manager.get_keypoints_db("d")->associate_registers_signal_to_signal("\x01", "x1");
  EXPECT_FALSE(manager.save_db_atomically("d", file("other.xml")));
  EXPECT_FALSE(std::filesystem::exists(file("other.xml")));
  EXPECT_TRUE(manager.destroy_keypoints_db("d"));
}

TEST_F(UnregisteredDb, ManagerTellsOfAnUnknownNameToSave) {
  EXPECT_FALSE(manager.save_db_atomically("absent", file("d.xml")));
  EXPECT_THAT(lines.debug(), testing::ElementsAre("database named absent doesn't exist"));
}

}  // namespace
