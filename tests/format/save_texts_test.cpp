// Which texts a save writes so that they come back, and which ones it refuses.
#include <gmock/gmock.h>

#include <string>

#include "db/kpt/kpt_held_text.h"
#include "db/kpt/kpt_keypoint_set.h"
#include "db/kpt/kpt_keypoints_db.h"
#include "db/kpt/kpt_unregistered_db.h"
#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"
#include "tests/format/save_fixture.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

class SavedTexts : public SAVE_TEST {};

// A text that no file can hold, the reason, and how a message shows it.
struct NAMES {
  const char* why;
  std::string text;
  std::string shown;
};

class SavedNames : public SAVE_TEST, public testing::WithParamInterface<NAMES> {
 protected:
  void expect_refused(KPT_KEYPOINTS_DB_IMPL& db, const std::string& line, const std::string& owner) {
    const HOST_LINES lines;
    EXPECT_FALSE(db.save_atomically(m_path));
    EXPECT_THAT(lines.debug(), ElementsAre(line));
    EXPECT_THAT(lines.errors(), ElementsAre("Keypoint Database " + m_path +
                                            " cannot be saved: no file can hold the texts of " + owner));
    EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_TEXTS_CANNOT_BE_SAVED"));
    EXPECT_EQ(read_file(m_path), EARLIER);
    EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
  }
  void expect_refused_for(KPT_KEYPOINTS_DB_IMPL& db, const std::string& name) {
    expect_refused(db, "Error: register " + name + " cannot be saved: a file cannot hold its name, entity or type",
                   "register " + name);
  }
};

TEST_P(SavedNames, RefusesItOfASignal) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_TRANSFORMED_SET, 1, GetParam().text);
  expect_refused_for(*db, GetParam().shown);
}

TEST_P(SavedNames, RefusesItOfAnEntity) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "q", GetParam().text, "dff");
  expect_refused_for(*db, "q");
}

TEST_P(SavedNames, RefusesItOfARegisterType) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "q", "u1", GetParam().text);
  expect_refused_for(*db, "q");
}

TEST_P(SavedNames, RefusesItOfADatabase) {
  expect_refused(*new_database(GetParam().text),
                 "Error: database " + GetParam().shown + " cannot be saved: a file cannot hold its name",
                 "database " + GetParam().shown);
}

TEST_P(SavedNames, RefusesItOfAnAttributeOfARegister) {
  const DATABASE db = new_database("d");
  KPT_KEYPOINT* q = db->add_to_register_set(KPT_REFERENCE_SET, 1, "q");
  static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(q)->add_attribute("note", GetParam().text);
  expect_refused(*db, "Error: attribute note cannot be saved: a file cannot hold its name or value", "register q");
}

TEST_P(SavedNames, RefusesItOfAnAttributeOfAMap) {
  const DATABASE db = new_database("d");
  KPT_KEYPOINT* q = db->add_to_register_set(KPT_REFERENCE_SET, 1, "q");
  db->add_to_transformation_set(NI_PAIR_VECTOR{{{q}, {}}}, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED)
      ->add_attribute(GetParam().text, "value");
  expect_refused(*db, "Error: attribute " + GetParam().shown + " cannot be saved: a file cannot hold its name or value",
                 "the map of q");
}

TEST_P(SavedNames, IsToldBeforehand) {
  EXPECT_FALSE(kpt_file_can_hold(GetParam().text));
  EXPECT_FALSE(kpt_file_can_hold("before" + GetParam().text + "behind"));
}

INSTANTIATE_TEST_SUITE_P(
    , SavedNames,
    testing::Values(NAMES{"control_character", "a\x01z", "a\\x01z"}, NAMES{"escape", "a\x1B", "a\\x1B"},
                    NAMES{"nul", std::string("a\0b", 3), "a\\x00b"}, NAMES{"latin_1", "caf\xE9", "caf\\xE9"},
                    NAMES{"delete_beside_one", "\x7F\x01", "\\x7F\\x01"}, NAMES{"cut_off", "\xE2\x82", "\\xE2\\x82"},
                    NAMES{"lone_tail", "\xA9", "\\xA9"}, NAMES{"overlong", "\xC0\xAF", "\\xC0\\xAF"},
                    NAMES{"overlong_of_three", "\xE0\x80\xAF", "\\xE0\\x80\\xAF"},
                    NAMES{"surrogate", "\xED\xA0\x80", "\\xED\\xA0\\x80"},
                    NAMES{"no_character", "\xC3\xA4\xEF\xBF\xBF", "\xC3\xA4\\xEF\\xBF\\xBF"},
                    NAMES{"beyond_the_last", "\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},
                    NAMES{"five_bytes", "\xF8\x88\x80\x80\x80", "\\xF8\\x88\\x80\\x80\\x80"}),
    [](const testing::TestParamInfo<NAMES>& p) { return p.param.why; });

TEST_F(SavedTexts, RefusesADatabaseWithoutAName) {
  EXPECT_FALSE(new_database("")->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), EARLIER);
}

TEST_F(SavedTexts, NamesAMapWithoutRegistersAsSuch) {
  const DATABASE db = new_database("d");
  db->add_to_transformation_set(NI_PAIR_VECTOR{}, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED)->add_attribute("note", "\x02");
  const HOST_LINES lines;
  EXPECT_FALSE(db->save_atomically(m_path));
  EXPECT_THAT(lines.errors(), ElementsAre("Keypoint Database " + m_path +
                                          " cannot be saved: no file can hold the texts of a map without registers"));
}

// Every ASCII character that XML has, and the first and last of each length in UTF-8.
std::string every_kind_of_character() {
  std::string all = "\t\n\r\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80";
  for (char c = ' '; c <= '~'; ++c) {
    all += c;
  }
  return all + "\xF4\x8F\xBF\xBF";
}

TEST_F(SavedTexts, GivesEveryCharacterBack) {
  const COUNTERS counters(0, 0);
  const std::string all = every_kind_of_character();
  const DATABASE db = new_database(all);
  db->add_to_register_set(KPT_REFERENCE_SET, 0, all + "]]>");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "");
  db->add_to_register_set(KPT_REFERENCE_SET, 2, "\n", all, "count<3>");
  db->add_to_register_set(KPT_REFERENCE_SET, 3, "\t", " ", "\r");
  EXPECT_TRUE(kpt_file_can_hold(all));
  EXPECT_TRUE(db->save_atomically(m_path));
  const LOAD_OUTCOME document = load_outcome(m_path, LOAD_WAY::DOCUMENT);
  EXPECT_TRUE(document.is_loaded);
  EXPECT_EQ(document.saved, saved(*db));
  EXPECT_EQ(load_outcome(m_path, LOAD_WAY::SCANNER_FIRST), document);
  EXPECT_EQ(load_outcome(m_path, LOAD_WAY::GENERAL_SOURCE), document);
  const LOADED loaded = load(m_path);
  EXPECT_EQ(std::string_view(KPT_XML_READER().get_db_name(m_path)), all);
  EXPECT_THAT(registers(*loaded.db->get_reference_set()),
              ElementsAre("0:" + all + "]]>", "1:", "2:\n/" + all + "/count<3>", "3:\t/ /\r"));
}

TEST_F(SavedTexts, GivesEveryCharacterOfAnAttributeBack) {
  const std::string all = every_kind_of_character();
  const DATABASE db = new_database("d");
  KPT_KEYPOINT* q = db->add_to_register_set(KPT_REFERENCE_SET, 1, "q");
  static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(q)->add_attribute(all, all);
  EXPECT_TRUE(db->save_atomically(m_path));
  const KPT_UNREGISTERED_DB loaded = KPT_UNREGISTERED_DB::load(m_path);
  ASSERT_FALSE(loaded.is_null());
  EXPECT_EQ(std::string_view((*loaded->get_reference_set().begin()).get_attribute(all)), all);
}

TEST_F(SavedTexts, WritesAReferenceForTheEndOfASectionWithWhichANameBegins) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "]]>b");
  EXPECT_TRUE(db->save_atomically(m_path));
  EXPECT_THAT(read_file(m_path), testing::HasSubstr("<name>]]&gt;b</name>\n"));
}

// Escapes only what XML needs escaped, because flows compare files.
TEST_F(SavedTexts, WritesReferencesForWhatWouldNotComeBackAlone) {
  const DATABASE db = new_database("a\"b");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "c<3> & ]]> ]> > ' \xC3\xA9\t\n\r");
  EXPECT_TRUE(db->save_atomically(m_path));
  EXPECT_THAT(read_file(m_path), testing::HasSubstr("<kpt_db name=\"a&quot;b\">\n"));
  EXPECT_THAT(read_file(m_path),
              testing::HasSubstr("<name>c&lt;3> &amp; ]]&gt; ]> > ' \xC3\xA9&#9;&#10;&#13;</name>\n"));
}

}  // namespace
