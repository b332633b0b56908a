// Files made to do harm, and files that are no databases. None may end the process, read
// another file or take more memory than its size explains. The manager stays usable.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include "db/kpt/kpt.h"
#include "db/kpt/kpt_xml_reader.h"
#include "host/kpt_host.h"
#include "tests/format/databases.h"
#include "tests/format/system_calls.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"
#include "tests/support/seed.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;
using testing::StartsWith;

std::string repeated(std::size_t count, const std::string& text) {
  std::string all;
  all.reserve(count * text.size());
  for (std::size_t k = 0; k < count; ++k) {
    all += text;
  }
  return all;
}

std::string database_of(const std::string& content) { return "<kpt_db name='hostile'>" + content + "</kpt_db>"; }

class HostileFile : public testing::Test {
 protected:
  ~HostileFile() override {
    m_manager->destroy_keypoints_db("hostile");
    EXPECT_NE(m_manager->load_db(data_file("three_maps.xml")), nullptr) << "the manager no longer works";
    EXPECT_TRUE(m_manager->destroy_keypoints_db("top"));
  }

  // A hostile file gives the same result whichever way it is read.
  static void expect_agreement(const std::string& path) {
    const LOAD_OUTCOME general = load_outcome(path, LOAD_WAY::GENERAL_SOURCE);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::SCANNER_FIRST), general);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::DOCUMENT), general);
  }

  void expect_refused(const std::string& path) {
    expect_agreement(path);
    expect_error(path);
  }

  void expect_error(const std::string& path) {
    const HOST_LINES lines;
    EXPECT_EQ(m_manager->load_db(path), nullptr);
    EXPECT_THAT(lines.errors(), ElementsAre(StartsWith("Syntax error in XML Keypoint Database " + path + " at line")));
  }

  const KPT_KEYPOINTS_DB* expect_loaded(std::string_view file) {
    constexpr std::size_t LARGE = 1000000;
    const std::string path = m_folder.file_of(file);
    if (file.size() < LARGE) {
      expect_agreement(path);
    }
    const HOST_LINES lines;
    const KPT_KEYPOINTS_DB* const db = m_manager->load_db(path);
    EXPECT_NE(db, nullptr);
    EXPECT_TRUE(lines.errors().empty());
    return db;
  }

  const KPT_XML_READER m_reader;  // so that the parser starts only once
  FOLDER m_folder;
  KPT_KEYPOINTS_MANAGER* const m_manager = KPT_KEYPOINTS_MANAGER::get_instance();
};

TEST_F(HostileFile, ThatIsCutOffAnywhere) {
  const std::string file = read_file(data_file("three_maps.xml"));
  for (std::size_t size = 0; size + 1 < file.size(); ++size) {
    expect_error(m_folder.file_of(std::string_view(file).substr(0, size)));
  }
}

TEST_F(HostileFile, ThatIsBinary) {
  std::mt19937 random(seed());
  std::string bytes(100000, 0);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
  bytes.front() = 0x7F;
  expect_refused(m_folder.file_of(bytes));
}

TEST_F(HostileFile, ThatIsAllNul) { expect_refused(m_folder.file_of(std::string(100000, 0))); }

TEST_F(HostileFile, ThatIsAFolder) { expect_refused(m_folder.path()); }

TEST_F(HostileFile, ThatMayNotBeRead) {
  const std::string path = m_folder.file_of("<kpt_db name='hostile'/>");
  ASSERT_EQ(::chmod(path.c_str(), 0), 0);
  ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
  const auto body = [](const std::string& file) {
    const uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) {
      return 2;
    }
    const HOST_LINES lines;
    return KPT_KEYPOINTS_MANAGER::get_instance()->load_db(file) == nullptr && lines.errors().size() == 1 ? 0 : 1;
  };
  EXPECT_EQ(in_child(body, path), 0);
}

TEST_F(HostileFile, WhoseTagsDoNotMatch) { expect_refused(m_folder.file_of(database_of("<a></b>"))); }

TEST_F(HostileFile, ThatHoldsTwoDocuments) { expect_refused(m_folder.file_of(database_of("") + database_of(""))); }

TEST_F(HostileFile, ThatPullsAnotherFileIn) {
  const std::string secret = m_folder.file_of("the secret", "secret.txt");
  expect_refused(m_folder.file_of("<!DOCTYPE kpt_db [<!ENTITY e SYSTEM '" + secret + "'>]>" +
                                  database_of("<key_points_set type='reference'><key_point id='1' type='register'>"
                                              "<name>&e;</name></key_point></key_points_set>")));
}

TEST_F(HostileFile, ThatMultipliesOneLongEntity) {
  expect_refused(m_folder.file_of("<!DOCTYPE kpt_db [<!ENTITY e '" + std::string(100000, 'x') + "'>]>" +
                                  database_of(repeated(100000, "&e;"))));
}

TEST_F(HostileFile, ThatNestsItsDocumentType) {
  expect_loaded("<!DOCTYPE kpt_db [<!ELEMENT a " + repeated(100000, "(") + "a" + repeated(100000, ")") + ">]>" +
                database_of(""));
}

TEST_F(HostileFile, ThatNestsDeep) {
  expect_loaded(database_of(repeated(100000, "<a>") + "x" + repeated(100000, "</a>")));
}

// At every position where the loader goes down one level.
TEST_F(HostileFile, ThatNestsDeepInsideANameAndATable) {
  const std::string down = repeated(100000, "<value index='0'>");
  const std::string up = "1" + repeated(100000, "</value>");
  const KPT_KEYPOINTS_DB* const db = expect_loaded(database_of(
      "<key_points_set type='reference'><key_point id='1' type='register'><name>" + down + up +
      "</name></key_point></key_points_set><transformations_set><transformation><state_table num_states='1' "
      "num_reference_registers='1' num_transformed_registers='1'><state index='0'><reference><value index='0'>" +
      repeated(100000, "<v>") + "1" + repeated(100000, "</v>") +
      "</value></reference></state></state_table></transformation></transformations_set>"));
  ASSERT_NE(db, nullptr);
  EXPECT_FALSE(db->get_reference_set().get_register("1").is_null());
}

TEST_F(HostileFile, OfAMillionCommentsInARow) {
  expect_loaded(database_of("<key_points_set type='reference'>" + repeated(1000000, "<!---->") + "</key_points_set>"));
}

TEST_F(HostileFile, OfManyAttributes) {
  std::string attributes;
  for (int k = 0; k < 20000; ++k) {
    attributes += " a" + std::to_string(k) + "=''";
  }
  expect_loaded("<kpt_db name='hostile'" + attributes + "/>");
}

TEST_F(HostileFile, OfATextOf100Megabytes) {
  const std::string text(100 << 20, 'n');
  const KPT_KEYPOINTS_DB* const db =
      expect_loaded(database_of("<key_points_set type='reference'><key_point id='1' type='register'><name>" + text +
                                "</name></key_point></key_points_set>"));
  ASSERT_NE(db, nullptr);
  EXPECT_FALSE(db->get_reference_set().get_register(text).is_null());
}

TEST_F(HostileFile, WhoseNumbersAreNone) {
  const KPT_KEYPOINTS_DB* const db = expect_loaded(database_of(
      "<key_points_set type='reference'><key_point id='one' type='register'><name>a</name></key_point>"
      "<key_point id='1e9' type='register'><name>b</name></key_point></key_points_set><transformations_set>"
      "<transformation><kp_set type='reference'><kp_state index='-'><noninverts><kp id='0x1'/></noninverts></kp_state>"
      "</kp_set><state_table num_states='many' num_reference_registers='' num_transformed_registers='-'/>"
      "</transformation></transformations_set>"));
  ASSERT_NE(db, nullptr);
  EXPECT_FALSE(db->get_reference_register_transformation("a").is_null());
  EXPECT_TRUE(db->get_reference_register_transformation("b").is_null());
}

TEST_F(HostileFile, WhoseNumbersOverflow) {
  const std::string most(1000, '9');
  expect_loaded(database_of(
      "<key_points_set type='reference'><key_point id='" + most +
      "' type='register'><name>a</name></key_point>"
      "</key_points_set><transformations_set><transformation><kp_set type='reference'><kp_state index='" +
      most + "'><inverts><kp id='-" + most +
      "'/></inverts></kp_state></kp_set><state_table num_states='2' "
      "num_reference_registers='2' num_transformed_registers='2'><state index='" +
      most +
      "'><reference>"
      "<value index='-" +
      most + "'>" + most +
      "</value></reference></state><state index='-1'><transformed>"
      "<value index='65535'>1</value></transformed></state></state_table></transformation></transformations_set>"));
}

// The values of every row are looked up: the time is that of the rows, not of
// their square.
TEST_F(HostileFile, OfATableOfManyRows) {
  std::string rows;
  for (int k = 0; k < 65535; ++k) {
    rows += "<state index='" + std::to_string(k) + "'><reference><value index='0'>1</value></reference></state>";
  }
  expect_loaded(
      database_of("<transformations_set><transformation><state_table num_states='65535' "
                  "num_reference_registers='1' num_transformed_registers='0'>" +
                  rows + "</state_table></transformation></transformations_set>"));
}

unsigned long live_bytes() {
  unsigned long bytes = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    bytes += tracker.live_bytes;
  }
  return bytes;
}

// Only the rows that are set take memory.
TEST_F(HostileFile, ThatSetsTheLastBitsOfTheLargestTable) {
  const unsigned long before = live_bytes();
  const KPT_KEYPOINTS_DB* const db = expect_loaded(
      "<kpt_db name='hostile'><transformations_set><transformation><state_table num_states='65535' "
      "num_reference_registers='65535' num_transformed_registers='65535'><state index='65534'><reference>"
      "<value index='65534'>1</value></reference><transformed><value index='65534'>1</value></transformed></state>"
      "</state_table></transformation></transformations_set></kpt_db>");
  ASSERT_NE(db, nullptr);
  EXPECT_LE(live_bytes(), before + 100000UL);
}

// The bits of the declared table are the most memory that it may take; a copy
// during the load would show.
TEST_F(HostileFile, ThatDeclaresTheLargestTable) {
  const KPT_KEYPOINTS_DB* const db = expect_loaded(
      "<kpt_db name='hostile'><transformations_set><transformation><state_table num_states='65535' "
      "num_reference_registers='65535' num_transformed_registers='65535'/></transformation></transformations_set>"
      "</kpt_db>");
  ASSERT_NE(db, nullptr);
  unsigned long bytes = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    bytes = std::max(bytes, tracker.peak_bytes);
  }
  EXPECT_LE(bytes, 2UL * 65535 * 65535 / 8 + 1024);
}

}  // namespace
