// Parses one file: the messages for errors, and what counts as an error.
#include "db/kpt/kpt_xml_parser.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

// Parsers can be made while it exists.
class XmlParser : public testing::Test {
 protected:
  FOLDER m_folder;

 private:
  KPT_XML_READER m_reader;
};

TEST_F(XmlParser, ReadsAWellFormedFile) {
  const HOST_LINES lines;
  const std::string path = m_folder.file_of("<kpt_db name='d'/>");
  const KPT_XML_PARSER parser(path);
  EXPECT_TRUE(parser.ok());
  EXPECT_THAT(lines.debug(), ElementsAre("XML parse: file: " + path + ", nerrors: 0"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST_F(XmlParser, ReportsASyntaxErrorWithFileLineAndColumn) {
  const HOST_LINES lines;
  const std::string path = m_folder.file_of("<kpt_db>\n  <a>\n</kpt_db>\n");
  const KPT_XML_PARSER parser(path);
  EXPECT_FALSE(parser.ok());
  EXPECT_THAT(lines.errors(), ElementsAre("Syntax error in XML Keypoint Database " + path +
                                          " at line number 3, column number 3 : expected end of tag 'a'"));
  EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE"));
  EXPECT_THAT(lines.debug(), ElementsAre("XML parse: file: " + path + ", nerrors: 1"));
}

TEST_F(XmlParser, TellsLineAndColumnApart) {
  const HOST_LINES lines;
  const std::string path = m_folder.file_of("<kpt_db>\n     <a></b></kpt_db>\n");
  const KPT_XML_PARSER parser(path);
  EXPECT_THAT(lines.errors(), ElementsAre("Syntax error in XML Keypoint Database " + path +
                                          " at line number 2, column number 11 : expected end of tag 'a'"));
}

TEST_F(XmlParser, TellsOfAWarningOnTheDebugChannelAlone) {
  const HOST_LINES lines;
  const std::string path = m_folder.file_of("<!DOCTYPE a [\n<!ATTLIST a b CDATA '' b CDATA ''>]><a/>");
  const KPT_XML_PARSER parser(path);
  EXPECT_TRUE(parser.ok());
  EXPECT_THAT(lines.debug(), ElementsAre("Warning in XML Keypoint Database " + path +
                                             " at line number 2, column number 25 : attribute 'b' has already been "
                                             "declared for element 'a'",
                                         "XML parse: file: " + path + ", nerrors: 0"));
  EXPECT_THAT(lines.errors(), IsEmpty());
}

TEST_F(XmlParser, TellsOfAnEncodingThatIsNotTheDeclaredOne) {
  const HOST_LINES lines;
  const std::string path = m_folder.file_of("<?xml version='1.0' encoding='UTF-16'?><a/>");
  const KPT_XML_PARSER parser(path);
  EXPECT_TRUE(parser.ok());
  EXPECT_THAT(lines.debug(), ElementsAre(StartsWith("Warning in XML Keypoint Database " + path + " at line number 1,"),
                                         "XML parse: file: " + path + ", nerrors: 0"));
}

TEST(XmlParserAlone, StartsXercesCItself) {
  const FOLDER folder;
  const KPT_XML_PARSER parser(folder.file_of("<outer/>"));
  ASSERT_TRUE(parser.ok());
  bool ok = true;
  EXPECT_STREQ(parser.root_element("", &ok).get_node_name(), "outer");
}

TEST_F(XmlParser, ReportsAFileThatDoesNotExist) {
  const HOST_LINES lines;
  const std::string path = m_folder.file("missing.xml");
  const KPT_XML_PARSER parser(path);
  EXPECT_FALSE(parser.ok());
  EXPECT_THAT(lines.errors(), ElementsAre(StartsWith("Syntax error in XML Keypoint Database " + path + " at line")));
  EXPECT_THAT(lines.debug(), ElementsAre("XML parse: file: " + path + ", nerrors: 1"));
}

TEST_F(XmlParser, HasNoRootAfterAnError) {
  const KPT_XML_PARSER parser(m_folder.file_of("<a><b></a>"));
  bool ok = true;
  EXPECT_TRUE(parser.root_element("kpt_db", &ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlParser, DoesNotCompareTheNameOfTheRoot) {
  const KPT_XML_PARSER parser(m_folder.file_of("<something_else/>"));
  bool ok = true;
  EXPECT_STREQ(parser.root_element("kpt_db", &ok).get_node_name(), "something_else");
  EXPECT_TRUE(ok);
}

TEST_F(XmlParser, GivesNoRootWhenTheFlagIsDown) {
  const KPT_XML_PARSER parser(m_folder.file_of("<kpt_db/>"));
  bool ok = false;
  EXPECT_TRUE(parser.root_element("kpt_db", &ok).is_null());
}

TEST_F(XmlParser, DoesNotTakeANameForAUrl) {
  const std::string path = m_folder.file_of("<kpt_db/>");
  EXPECT_FALSE(KPT_XML_PARSER("file://" + path).ok());
  EXPECT_FALSE(KPT_XML_PARSER("http://127.0.0.1:9/db.xml").ok());
  EXPECT_TRUE(KPT_XML_PARSER(m_folder.file_of("<kpt_db/>", "a%20b#c?d.xml")).ok());
  EXPECT_TRUE(KPT_XML_PARSER(m_folder.file_of("<kpt_db/>", "caf\xC3\xA9 \xFF.xml")).ok());
}

TEST_F(XmlParser, DoesNotReadTheFileBeforeANulOfItsName) {
  EXPECT_FALSE(KPT_XML_PARSER(m_folder.file_of("<kpt_db/>") + std::string("\0.bak", 5)).ok());
}

// The reference host opens the path of a share as a local path, with either
// separator. Without the host, the second of these names would open nothing.
TEST_F(XmlParser, AsksTheHostForTheFullPathOfAShare) {
  std::string share = "/" + m_folder.file_of("<kpt_db/>");
  EXPECT_TRUE(KPT_XML_PARSER(share).ok());
  std::replace(share.begin(), share.end(), '/', '\\');
  EXPECT_TRUE(KPT_XML_PARSER(share).ok());
}

TEST_F(XmlParser, ReadsAFileInAnotherEncoding) {
  const KPT_XML_PARSER parser(m_folder.file_of(std::string("\xFF\xFE<\0a\0/\0>\0", 10)));
  EXPECT_TRUE(parser.ok());
}

TEST_F(XmlParser, LeavesAnotherParserAlone) {
  const KPT_XML_PARSER outer(m_folder.file_of("<outer/>", "outer.xml"));
  {
    const KPT_XML_READER nested;
    const KPT_XML_PARSER inner(m_folder.file_of("<inner", "inner.xml"));
    EXPECT_FALSE(inner.ok());
  }
  bool ok = true;
  EXPECT_STREQ(outer.root_element("", &ok).get_node_name(), "outer");
}

// A document that must be refused, and the text of the refusal.
struct REFUSED {
  const char* name;
  std::string document;
  const char* words;
};

void PrintTo(const REFUSED& refused, std::ostream* out) { *out << refused.name; }

class XmlParserRefuses : public XmlParser, public testing::WithParamInterface<REFUSED> {};

TEST_P(XmlParserRefuses, WithOneMessage) {
  const HOST_LINES lines;
  m_folder.file_of("<!ENTITY secret 'from outside'>", "outside.xml");
  const std::string path = m_folder.file_of(GetParam().document);
  const KPT_XML_PARSER parser(path);
  EXPECT_FALSE(parser.ok());
  EXPECT_THAT(lines.errors(),
              ElementsAre(MatchesRegex("Syntax error in XML Keypoint Database " + path +
                                       " at line number [0-9]+, column number [0-9]+ : .*" + GetParam().words + ".*")));
  EXPECT_THAT(lines.debug(), ElementsAre("XML parse: file: " + path + ", nerrors: 1"));
}

std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int k = 0; k < count; ++k) {
    all += text;
  }
  return all;
}

std::string billion_laughs() {
  std::string entities = "<!ENTITY e0 'ha'>";
  for (int k = 1; k < 10; ++k) {
    entities += "<!ENTITY e" + std::to_string(k) + " '" + repeated(10, "&e" + std::to_string(k - 1) + ";") + "'>";
  }
  return "<!DOCTYPE a [" + entities + "]>";
}

INSTANTIATE_TEST_SUITE_P(
    , XmlParserRefuses,
    testing::Values(
        REFUSED{"external_entity", "<!DOCTYPE a [<!ENTITY e SYSTEM 'outside.xml'>]><a>&e;</a>", "external entities"},
        REFUSED{"external_entity_by_url", "<!DOCTYPE a [<!ENTITY e SYSTEM 'http://127.0.0.1:9/'>]><a>&e;</a>",
                "external entities"},
        REFUSED{"public_entity", "<!DOCTYPE a [<!ENTITY e PUBLIC 'p' 'outside.xml'>]><a>&e;</a>", "external entities"},
        REFUSED{"external_parameter_entity", "<!DOCTYPE a [<!ENTITY % e SYSTEM 'outside.xml'> %e;]><a/>",
                "external entities"},
        REFUSED{"external_document_type", "<!DOCTYPE a SYSTEM 'outside.xml'><a/>", "external document types"},
        REFUSED{"external_document_type_of_a_standalone_document",
                "<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 'outside.xml'><a/>",
                "external document types"},
        REFUSED{"missing_external_document_type", "<!DOCTYPE a SYSTEM 'missing.dtd'><a/>", "external document types"},
        REFUSED{"empty_external_document_type", "<!DOCTYPE a SYSTEM ''><a/>", "external"},
        REFUSED{"public_document_type", "<!DOCTYPE a PUBLIC 'p' 'outside.xml'><a/>", "external document types"},
        REFUSED{"external_entity_in_an_attribute", "<!DOCTYPE a [<!ENTITY e SYSTEM 'outside.xml'>]><a b='&e;'/>", ""},
        REFUSED{"billion_laughs", billion_laughs() + "<a>&e9;</a>", "1000"},
        REFUSED{"billion_laughs_in_an_attribute", billion_laughs() + "<a b='&e9;'/>", "1000"},
        REFUSED{"billion_laughs_in_a_default",
                billion_laughs().substr(0, billion_laughs().size() - 2) + "<!ATTLIST a b CDATA '&e9;'>]><a/>",
                "attributes are declared"},
        REFUSED{"attributes_behind_a_long_entity",
                "<!DOCTYPE a [<!ENTITY e '12345678901234567'><!ATTLIST a b CDATA ''>]><a/>", "attributes are declared"},
        REFUSED{"long_entity", "<!DOCTYPE a [<!ENTITY e '" + std::string(4097, 'x') + "'>]><a/>", "too long"},
        REFUSED{"long_entity_declared_again",
                "<!DOCTYPE a [<!ENTITY e ''><!ENTITY e '" + std::string(4097, 'x') + "'>]><a/>", "too long"},
        REFUSED{"many_references", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>" + repeated(1001, "&e;") + "</a>", "1000"},
        REFUSED{"parameter_entities_that_nest", "<!DOCTYPE a [<!ENTITY % p ' '><!ENTITY % q '&#37;p;&#37;p;'>%q;]><a/>",
                "parameter entity"},
        REFUSED{"long_parameter_entity", "<!DOCTYPE a [<!ENTITY % p '" + std::string(17, ' ') + "'>]><a/>",
                "parameter entity"},
        REFUSED{"entity_that_refers_to_itself", "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", ""},
        REFUSED{"entities_of_many_elements",
                "<!DOCTYPE a [<!ENTITY e '" + repeated(101, "<b/>") + "'>]><a>" + repeated(10, "&e;") + "</a>",
                "too many elements"},
        REFUSED{
            "many_default_attributes",
            "<!DOCTYPE a [<!ATTLIST b c CDATA '" + std::string(10000, 'x') + "'>]><a>" + repeated(110, "<b/>") + "</a>",
            "too many attributes"},
        REFUSED{"undeclared_entity", "<a>&e;</a>", ""}),
    [](const testing::TestParamInfo<REFUSED>& p) { return p.param.name; });

// The counterparts of the refusals: similar documents that are accepted.
class XmlParserAccepts : public XmlParser, public testing::WithParamInterface<REFUSED> {};

TEST_P(XmlParserAccepts, WithoutAMessage) {
  const HOST_LINES lines;
  const KPT_XML_PARSER parser(m_folder.file_of(GetParam().document));
  EXPECT_TRUE(parser.ok());
  EXPECT_THAT(lines.errors(), IsEmpty());
  bool ok = true;
  EXPECT_EQ(parser.root_element("", &ok).get_text_content(), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    , XmlParserAccepts,
    testing::Values(
        REFUSED{"document_type", "<!DOCTYPE a><a>t</a>", "t"},
        REFUSED{"entity", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;&e;</a>", "xx"},
        REFUSED{"nested_entity", "<!DOCTYPE a [<!ENTITY e 'x'><!ENTITY f '&e;y'>]><a>&f;</a>", "xy"},
        REFUSED{"external_entity_that_nothing_refers_to", "<!DOCTYPE a [<!ENTITY e SYSTEM 'outside.xml'>]><a>t</a>",
                "t"},
        REFUSED{"longest_entity", "<!DOCTYPE a [<!ENTITY e '" + std::string(4096, ' ') + "'>]><a>t</a>", "t"},
        REFUSED{"most_references", "<!DOCTYPE a [<!ENTITY e ''>]><a>t" + repeated(1000, "&e;") + "</a>", "t"},
        REFUSED{"predefined_entities", "<a>&lt;&amp;&#65;</a>", "<&A"},
        REFUSED{"parameter_entity", "<!DOCTYPE a [<!ENTITY % p '<!ENTITY e \"x\">'>%p;]><a>&e;</a>", "x"},
        REFUSED{"default_attribute", "<!DOCTYPE a [<!ATTLIST a b CDATA 'c'>]><a>t</a>", "t"},
        REFUSED{"attributes_behind_a_short_entity",
                "<!DOCTYPE a [<!ENTITY e '1234567890123456'><!ATTLIST a b CDATA '&e;'>]><a>t</a>", "t"},
        REFUSED{"attributes_before_a_long_entity",
                "<!DOCTYPE a [<!ATTLIST a b CDATA ''><!ENTITY e '12345678901234567'>]><a>t</a>", "t"},
        REFUSED{"schema_location",
                "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                "xsi:noNamespaceSchemaLocation='outside.xsd'>t</a>",
                "t"},
        REFUSED{"stylesheet", "<?xml-stylesheet href='outside.xsl'?><a>t</a>", "t"},
        REFUSED{"inclusion", "<a xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='outside.xml'/>t</a>",
                "t"}),
    [](const testing::TestParamInfo<REFUSED>& p) { return p.param.name; });

}  // namespace
