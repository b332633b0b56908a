#include "tests/host/own_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "db/kpt/kpt.h"
#include "db/kpt/msg_kpt.h"

namespace {

using own_host::record;
using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

class OwnHost : public testing::Test {
 protected:
  void SetUp() override {
    record().debug_lines.clear();
    record().errors.clear();
    record().internal_errors.clear();
    record().switches.clear();
    record().debug = true;
    record().argument_counts.clear();
    record().reports.clear();
    record().tags.clear();
    record().path_calls.clear();
  }
};

KPT_KEYPOINTS_MANAGER& manager() { return *KPT_KEYPOINTS_MANAGER::get_instance(); }

KPT_KEYPOINTS_DB& new_db(const char* name) {
  KPT_KEYPOINTS_DB& db = *manager().create_keypoints_db(name);
  db.associate_registers_signal_to_signal("a register with a rather long name", "another one, longer still");
  return db;
}

// The timing lines so far, without the text with which all of them begin.
std::vector<std::string> times_told() {
  std::vector<std::string> told;
  for (const std::string& line : record().debug_lines) {
    if (line.starts_with("KPT: TIME: ")) {
      told.push_back(line.substr(sizeof("KPT: TIME: ") - 1));
    }
  }
  return told;
}

std::string write_file(const char* name, const char* text) {
  std::string path = testing::TempDir() + name;
  std::ofstream(path) << text;
  return path;
}

TEST_F(OwnHost, KnowsTheLibrary) { EXPECT_THAT(record().libraries, ElementsAre("KPT")); }

TEST_F(OwnHost, ServesTheMemoryOfADatabase) {
  const long before = record().live_blocks;
  new_db("memory");
  EXPECT_GT(record().live_blocks, before);
  EXPECT_TRUE(manager().destroy_keypoints_db("memory"));
  EXPECT_THAT(record().allocating_files, ElementsAre("h/mem_alloc_sys"));
  EXPECT_THAT(record().freeing_tags, ElementsAre("KPT"));
}

TEST_F(OwnHost, SeesTrackersBoundToTheirTypes) {
  new_db("trackers");
  EXPECT_FALSE(record().unbound_tracker);
  EXPECT_GT(record().trackers.size(), 1U);
  std::set<std::string> types;
  for (const MEM_TRACKER_THUNK* tracker : record().trackers) {
    types.insert(tracker->m_type->name());
  }
  EXPECT_THAT(types, Contains(std::string(typeid(char).name())));
  EXPECT_EQ(types.size(), record().trackers.size());
  manager().destroy_keypoints_db("trackers");
}

TEST_F(OwnHost, HearsDebugLinesUnderTheModuleTag) {
  EXPECT_FALSE(manager().save_db("nowhere", "nowhere.xml"));
  EXPECT_THAT(record().debug_lines, ElementsAre("KPT: database named nowhere doesn't exist"));
}

TEST_F(OwnHost, DecidesWhetherADebugLineIsShown) {
  EXPECT_TRUE(kpt_msg_debug("%s %d", "line", 1));
  record().debug = false;
  EXPECT_FALSE(kpt_msg_debug("%s %d", "line", 2));
  EXPECT_THAT(record().debug_lines, ElementsAre("KPT: line 1"));
}

TEST_F(OwnHost, HearsTheErrorsOfALoad) {
  const std::string file = write_file("own_host_broken.xml", "<kpt_db name=\"x\">\n");
  EXPECT_EQ(manager().load_db(file), nullptr);
  EXPECT_THAT(record().errors, Contains(StartsWith("EKPT_PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE: Syntax error in "
                                                   "XML Keypoint Database " +
                                                   file + " at line number ")));
  std::remove(file.c_str());
}

TEST_F(OwnHost, PostsMessagesOfClients) {
  const std::unique_ptr<MSG_E> error(MSG_KPT::E::REGNAME_NOT_IN_T_SET("q"));
  error->post();
  const std::unique_ptr<MSG_D> debug(MSG_KPT::DEBUG_MSG("%d maps", 3));
  debug->post();
  EXPECT_THAT(record().errors, ElementsAre("EKPT_REGNAME_NOT_IN_T_SET: \"q\" does not exist in the transformed set"));
  EXPECT_THAT(record().debug_lines, ElementsAre("KPT: 3 maps"));
}

TEST_F(OwnHost, GetsTheCountsOfMessagesAsTheyStand) {
  std::unique_ptr<MSG_E> error(MSG_KPT::E::REGNAME_NOT_IN_T_SET("q"));
  EXPECT_THAT(record().argument_counts, ElementsAre(1U));
  error.reset(MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE("f", 1, 2, "t"));
  EXPECT_THAT(record().argument_counts, ElementsAre(1U, 2U));
}

TEST_F(OwnHost, ChoosesWhereMessagesGo) {
  delete MSG_KPT::E::REGNAME_NOT_IN_T_SET("q");
  delete MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE("f", 1, 2, "t");
  delete MSG_KPT::DEBUG_MSG("d");
  EXPECT_THAT(record().reports, ElementsAre(nullptr));
}

TEST_F(OwnHost, MayHearWhatADebugMessageIsFiledUnder) {
  own_host::hear_debug_messages();
  const std::unique_ptr<MSG_D> debug(MSG_KPT::DEBUG_MSG("%d maps", 3));
  EXPECT_THAT(record().tags, ElementsAre("KPT"));
}

TEST_F(OwnHost, ChangesTheSeparatorsOfASharesPathBeforeItMakesThePathFull) {
  const std::string file = write_file("own_host_share.xml", "<kpt_db name=\"share\"/>\n");
  EXPECT_NE(manager().load_db("/" + file), nullptr);
  EXPECT_THAT(record().path_calls, ElementsAre("change: /" + file, "full: /" + file));
  manager().destroy_keypoints_db("share");
  std::remove(file.c_str());
}

// Every reading of the clock adds one tick.
TEST_F(OwnHost, TimesTheLoopsOfAUnionFromTheirStartAndTheUnionAsAWhole) {
  KPT_KEYPOINTS_DB& first = new_db("first");
  KPT_KEYPOINTS_DB& second = new_db("second");
  record().debug_lines.clear();
  first.unite(second);
  EXPECT_THAT(times_told(), ElementsAre("Start unite at : today", "Unite loop 1 time: 1", "Unite loop 2 time: 2",
                                        "Unite loop 3 time: 3", "Unite time: 5", "End unite at : today"));
  manager().destroy_keypoints_db("first");
  manager().destroy_keypoints_db("second");
}

TEST_F(OwnHost, TimesEachChildOfTheRootInALoad) {
  const std::string file = testing::TempDir() + "own_host_times.xml";
  new_db("times").save(file);
  manager().destroy_keypoints_db("times");
  record().debug_lines.clear();
  manager().load_db(file);
  EXPECT_THAT(times_told(), ElementsAre("Load Start Time: today", "Register Set Load: 1", "Register Set Load: 1",
                                        "Transformation Set Load: 1", "Load End Time: today"));
  manager().destroy_keypoints_db("times");
  std::remove(file.c_str());
}

TEST_F(OwnHost, HearsInternalErrors) {
  const std::string file = write_file("own_host_child.xml", "<kpt_db name=\"child\"><stranger/></kpt_db>\n");
  manager().load_db(file);
  EXPECT_THAT(record().internal_errors, Contains(StartsWith("KPT: ")));
  manager().destroy_keypoints_db("child");
  std::remove(file.c_str());
}

TEST_F(OwnHost, IsAskedForSwitchesInAUnion) {
  new_db("first").unite(new_db("second"));
  EXPECT_THAT(record().switches, Contains("kpt_add_unmatched_transformations"));
  EXPECT_THAT(record().debug_lines, Contains("KPT: TIME: Start unite at : today"));
  manager().destroy_keypoints_db("first");
  manager().destroy_keypoints_db("second");
}

}  // namespace
