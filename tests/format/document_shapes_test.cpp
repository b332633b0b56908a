// Loads files that contain more than elements: document types, entities,
// declarations. A source that reads element by element could easily get these
// wrong, and flows have files that rely on each.
#include <gmock/gmock.h>

#include "db/kpt/load/kpt_file_loader.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"

namespace {

using namespace kpt_test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A file that a manager loads, and that every other way to load reads in the same way.
class DocumentShape : public testing::Test {
 protected:
  void load(const std::string& text) {
    m_path = m_folder.file_of(text);
    KPT_FILE_LOADER loader(m_path);
    m_db =
        loader.read([](std::string_view name) { return new KPT_KEYPOINTS_DB_IMPL(name); }) ? loader.finish() : nullptr;
    EXPECT_FALSE(loader.is_plain());
  }
  void TearDown() override {
    const LOAD_OUTCOME document = load_outcome(m_path, LOAD_WAY::DOCUMENT);
    EXPECT_EQ(load_outcome(m_path, LOAD_WAY::SCANNER_FIRST), document);
  }
  std::vector<std::string> reference_registers() const { return registers(*m_db->get_reference_set()); }

  FOLDER m_folder;
  std::string m_path;
  DATABASE m_db;
};

std::string with_entities(const std::string& entities, const std::string& content) {
  return "<!DOCTYPE kpt_db [" + entities + "]><kpt_db name='d'>" + content + "</kpt_db>";
}

std::string signal(const std::string& id, const std::string& name) {
  return "<key_point id='" + id + "' type='register'>" + name + "</key_point>";
}

std::string reference_set(const std::string& keypoints) {
  return "<key_points_set type='reference'>" + keypoints + "</key_points_set>";
}

// Register a, and a map of it whose one state has this content.
std::string with_state(const std::string& entities, const std::string& state, const std::string& part = {}) {
  return with_entities(entities, reference_set(signal("1", "<name>a</name>")) +
                                     "<transformations_set><transformation><kp_set type='reference'><kp_state>" +
                                     state + "</kp_state></kp_set>" + part + "</transformation></transformations_set>");
}

TEST_F(DocumentShape, OfARegisterInAnEntityLacksTheRegister) {
  const HOST_LINES lines;
  load(with_entities(
      "<!ENTITY k '" + std::string("<key_point id=\"1\" type=\"register\"><name>k</name></key_point>") + "'>",
      reference_set("&k;" + signal("2", "<name>a</name>"))));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("2:a"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST_F(DocumentShape, OfTheTransformationsInAnEntityHasNoMaps) {
  load(with_entities("<!ENTITY t '<transformations_set><transformation/></transformations_set>'>", "&t;"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), IsEmpty());
}

TEST_F(DocumentShape, OfAnEntityBehindTheTransformationsIsNotRefused) {
  load(with_entities("<!ENTITY t '<transformations_set/>'>", "<transformations_set/>&t;"));
  EXPECT_NE(m_db, nullptr);
}

TEST_F(DocumentShape, OfTextInAnEntityHasTheText) {
  load(with_entities("<!ENTITY t 'b'>", reference_set(signal("1", "<name>a&t;c</name>"))));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:abc"));
}

TEST_F(DocumentShape, OfElementsInTheEntityOfANameHasTheirText) {
  load(with_entities("<!ENTITY t '<b>b</b>'>", reference_set(signal("1", "<name>a&t;c</name>"))));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:abc"));
}

TEST_F(DocumentShape, OfAValueInAnEntityHasTheValue) {
  load(with_state("<!ENTITY v '<value index=\"0\">1</value>'>", "<noninverts><kp id='1'/></noninverts>",
                  "<state_table num_states='1' num_reference_registers='1'><state index='0'><reference>&v;</reference>"
                  "</state></state_table>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("a~ ->  [1/]"));
}

TEST_F(DocumentShape, OfAKeypointInAnEntityOfAGroupLacksIt) {
  load(with_state("<!ENTITY k '<kp id=\"1\"/>'>", "<noninverts>&k;<kp id='1'/></noninverts>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("a~ -> "));
}

TEST_F(DocumentShape, OfAReferenceCalledNameNamesTheRegister) {
  load(with_entities("<!ENTITY name 'by<b>reference</b>'>", reference_set(signal("1", "&name;<name>a</name>"))));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:byreference"));
}

TEST_F(DocumentShape, OfAnInstructionCalledNameNamesTheRegister) {
  load("<kpt_db name='d'>" + reference_set(signal("1", "<?name by instruction?><name>a</name>")) + "</kpt_db>");
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:by instruction"));
}

TEST_F(DocumentShape, OfAReferenceCalledStateTableMakesAMachineWithAnEmptyTable) {
  load(with_state("<!ENTITY state_table ''>", "<noninverts><kp id='1'/></noninverts>",
                  "&state_table;<state_table num_states='1' num_reference_registers='1'/>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("a~ ->  []"));
}

TEST_F(DocumentShape, OfAReferenceCalledNoninvertsHidesTheGroupBehindIt) {
  load(with_state("<!ENTITY noninverts '<kp id=\"1\"/>'>",
                  "&noninverts;<noninverts><kp id='1'/></noninverts><inverts><kp id='1'/></inverts>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("~a -> "));
}

TEST_F(DocumentShape, OfAReferenceCalledReferenceHidesTheValuesBehindIt) {
  const HOST_LINES lines;
  load(with_state("<!ENTITY reference '<value index=\"0\">1</value>'>", "",
                  "<state_table num_states='1' num_reference_registers='1'><state index='0'>&reference;"
                  "<reference><value index='0'>1</value></reference></state></state_table>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("~ ->  [0/]"));
  EXPECT_THAT(lines.debug(), Contains("Parse error while reading statetable column number").Times(2));
}

TEST_F(DocumentShape, OfADefaultAttributeHasIt) {
  load(with_entities("<!ATTLIST key_point type CDATA 'register' id CDATA '7'>",
                     reference_set("<key_point><name>a</name></key_point>")));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("7:a"));
}

TEST_F(DocumentShape, OfVersion11IsLoaded) {
  load("<?xml version='1.1'?><kpt_db name='d'/>");
  EXPECT_NE(m_db, nullptr);
}

TEST_F(DocumentShape, OfVersion11AllowsMoreNames) {
  load("<?xml version='1.1'?><kpt_db name='d'><?\xF0\x90\x80\x80?></kpt_db>");
  EXPECT_NE(m_db, nullptr);
}

TEST_F(DocumentShape, OfADeclarationWithoutAVersionIsASyntaxError) {
  const HOST_LINES lines;
  load("<?xml encoding='UTF-8'?><kpt_db name='d'/>");
  EXPECT_EQ(m_db, nullptr);
  EXPECT_THAT(lines.errors(), ElementsAre(HasSubstr("Syntax error in XML Keypoint Database " + m_path)));
}

// Only an attribute that the document type adds to elements has to have a name that a document can hold.
TEST_F(DocumentShape, OfAnAttributeWithoutADefaultMayHaveAnyName) {
  load(with_entities("<!ATTLIST kpt_db \xF0\x90\x80\x80 CDATA #IMPLIED><!ATTLIST a>", ""));
  EXPECT_NE(m_db, nullptr);
}

TEST_F(DocumentShape, OfTwoTablesThatAreInstructionsHasAnEmptyOne) {
  load(with_state("", "<noninverts><kp id='1'/></noninverts>", "<?state_table?><?state_table?>"));
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(maps(*m_db), ElementsAre("a~ ->  []"));
}

TEST_F(DocumentShape, OfVersion12Or13IsRefusedWithADebugLineAlone) {
  for (const char* version : {"1.2", "1.3"}) {
    const HOST_LINES lines;
    load("<?xml version='" + std::string(version) + "'?><kpt_db name='d'/>");
    EXPECT_EQ(m_db, nullptr);
    EXPECT_THAT(lines.errors(), IsEmpty());
    EXPECT_THAT(lines.debug(), ElementsAre("Caught DOM_DOMException(code 9) while parsing file " + m_path,
                                           "XML parse: file: " + m_path + ", nerrors: 0"));
  }
}

TEST_F(DocumentShape, OfVersion20IsASyntaxError) {
  const HOST_LINES lines;
  load("<?xml version='2.0'?><kpt_db name='d'/>");
  EXPECT_EQ(m_db, nullptr);
  EXPECT_THAT(lines.errors(), ElementsAre(HasSubstr("Syntax error in XML Keypoint Database " + m_path)));
}

TEST_F(DocumentShape, OfABlankNameIsLoaded) {
  load("<kpt_db name=' '/>");
  ASSERT_NE(m_db, nullptr);
  EXPECT_EQ(m_db->get_db_name(), " ");
}

// A document allows fewer characters in a name than the parser does.
TEST_F(DocumentShape, OfAnInstructionWhoseNameNoDocumentCanHoldIsRefused) {
  const HOST_LINES lines;
  load("<kpt_db name='d'><?\xF0\x90\x80\x80?></kpt_db>");
  EXPECT_EQ(m_db, nullptr);
  EXPECT_THAT(lines.debug(), Contains("Caught DOM_DOMException(code 5) while parsing file " + m_path));
}

// Such a character consists of two halves, and a text comes in pieces.
TEST_F(DocumentShape, OfALongTextBeyondTwoBytesHasItWhole) {
  std::string name;
  for (int k = 0; k < 5000; ++k) {
    name += k % 7 == 0 ? "x\xF0\x9F\x98\x80" : "\xF0\x9F\x98\x80";
  }
  load("<kpt_db name='d'>" + reference_set(signal("1", "<name>" + name + "</name>")) + "</kpt_db>");
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:" + name));
}

TEST_F(DocumentShape, OfAnotherEncodingIsLoaded) {
  load("<?xml version='1.0' encoding='ISO-8859-1'?><kpt_db name='d'>" +
       reference_set(signal("1", "<name>\xE9</name>")) + "</kpt_db>");
  ASSERT_NE(m_db, nullptr);
  EXPECT_THAT(reference_registers(), ElementsAre("1:\xC3\xA9"));
}

TEST_F(DocumentShape, OfAnErrorAtItsEndIsRefusedWithoutAWordOfWhatIsInIt) {
  const COUNTERS counters(0, 0);
  const HOST_LINES lines;
  load("<kpt_db name='d'>" + reference_set(signal("5", "<name>a</name>")) + "<unexpected/></kpt_db>x");
  EXPECT_EQ(m_db, nullptr);
  EXPECT_EQ(KPT_KEYPOINTS_DB_IMPL::s_r_id, 0);
  EXPECT_THAT(lines.internal_errors(), IsEmpty());
  EXPECT_THAT(lines.debug(), ElementsAre("XML parse: file: " + m_path + ", nerrors: 1"));
}

TEST_F(DocumentShape, OfAWarningTellsItForEachOfItsTwoLinesOfParsing) {
  const HOST_LINES lines;
  load(with_entities("<!ATTLIST a b CDATA '' b CDATA ''>", ""));
  EXPECT_NE(m_db, nullptr);
  EXPECT_THAT(lines.debug(), Contains(HasSubstr("Warning in XML Keypoint Database")).Times(2));
}

}  // namespace
