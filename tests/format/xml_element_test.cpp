// Elements and lists of a parsed document.
#include "db/kpt/kpt_xml_element.h"

#include <gmock/gmock.h>

#include "db/kpt/kpt_xml_parser.h"
#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

class XmlElement : public testing::Test {
 protected:
  // The root of this document, which exists as long as the test.
  KPT_XML_ELEMENT parse(std::string_view document) {
    m_parser.emplace(m_folder.file_of(document));
    EXPECT_TRUE(m_parser->ok());
    bool ok = true;
    return m_parser->root_element("kpt_db", &ok);
  }

  static std::vector<std::string> child_names(KPT_XML_ELEMENT parent) {
    std::vector<std::string> names;
    bool ok = true;
    for (KPT_XML_ELEMENT c = parent.get_first_child(&ok); !c.is_null() && ok; c = parent.get_next_sibling(&ok)) {
      names.emplace_back(c.get_node_name());
    }
    return names;
  }

 private:
  FOLDER m_folder;
  KPT_XML_READER m_reader;
  std::optional<KPT_XML_PARSER> m_parser;
};

TEST_F(XmlElement, WalksTheChildElementsAlone) {
  EXPECT_THAT(child_names(parse("<r>text<a/><!-- c --><b><d/></b><?pi?><![CDATA[x]]><c/></r>")),
              ElementsAre("a", "b", "c"));
}

// The elements of an entity are not children of the element that refers to it.
TEST_F(XmlElement, PassesOverWhatAnEntityStandsFor) {
  EXPECT_THAT(child_names(parse("<!DOCTYPE r [<!ENTITY e '<b/>'>]><r><a/>&e;<c/></r>")), ElementsAre("a", "c"));
}

TEST_F(XmlElement, HasNoFirstChildWithoutChildElements) {
  bool ok = true;
  EXPECT_TRUE(parse("<r>text<!-- c --></r>").get_first_child(&ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, DoesNotLookForAFirstChildWhenTheFlagIsDown) {
  KPT_XML_ELEMENT root = parse("<r><a/></r>");
  bool ok = false;
  EXPECT_TRUE(root.get_first_child(&ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, MovesOnToTheNextSiblingEvenWhenTheFlagIsDown) {
  KPT_XML_ELEMENT root = parse("<r><a/><b/><c/></r>");
  bool ok = true;
  root.get_first_child(&ok);
  ok = false;
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "b");
  EXPECT_FALSE(ok);
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "c");
}

TEST_F(XmlElement, LowersTheFlagBehindTheLastSiblingHoweverOften) {
  KPT_XML_ELEMENT root = parse("<r><a/></r>");
  bool ok = true;
  root.get_first_child(&ok);
  for (int k = 0; k < 2; ++k) {
    ok = true;
    EXPECT_TRUE(root.get_next_sibling(&ok).is_null());
    EXPECT_FALSE(ok);
  }
}

TEST_F(XmlElement, HasNoNextSiblingBeforeTheFirstChildWasAskedFor) {
  KPT_XML_ELEMENT root = parse("<r><a/><b/></r>");
  bool ok = true;
  EXPECT_TRUE(root.get_next_sibling(&ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, HasNoNextSiblingWhenThereWasNoFirstChild) {
  KPT_XML_ELEMENT parent = parse("<r><a/><b/></r>");
  bool ok = true;
  KPT_XML_ELEMENT child = parent.get_first_child(&ok);
  child.get_first_child(&ok);
  ok = true;
  EXPECT_TRUE(child.get_next_sibling(&ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, StartsAgainAtTheFirstChild) {
  KPT_XML_ELEMENT root = parse("<r><a/><b/></r>");
  bool ok = true;
  root.get_first_child(&ok);
  root.get_next_sibling(&ok);
  EXPECT_STREQ(root.get_first_child(&ok).get_node_name(), "a");
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "b");
}

TEST_F(XmlElement, MovesOnInAllCopiesAtOnce) {
  KPT_XML_ELEMENT root = parse("<r><a/><b/><c/></r>");
  bool ok = true;
  root.get_first_child(&ok);
  KPT_XML_ELEMENT copy = root;
  EXPECT_STREQ(copy.get_next_sibling(&ok).get_node_name(), "b");
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "c");
}

TEST_F(XmlElement, WalksOnItsOwnInACopyThatStartsAnew) {
  KPT_XML_ELEMENT root = parse("<r><a/><b/></r>");
  bool ok = true;
  root.get_first_child(&ok);
  KPT_XML_ELEMENT copy = root;
  copy.get_first_child(&ok);
  copy.get_next_sibling(&ok);
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "b");
}

TEST_F(XmlElement, WalksChildrenWhileAChildWalksItsOwn) {
  KPT_XML_ELEMENT root = parse("<r><a><x/></a><b/></r>");
  bool ok = true;
  KPT_XML_ELEMENT a = root.get_first_child(&ok);
  EXPECT_STREQ(a.get_first_child(&ok).get_node_name(), "x");
  EXPECT_STREQ(root.get_next_sibling(&ok).get_node_name(), "b");
}

TEST_F(XmlElement, FindsTheFirstOfTwoChildrenOfAName) {
  bool ok = true;
  EXPECT_EQ(parse("<r><a>1</a><b/><a>2</a></r>").get_single_child_element("a", &ok).get_text_content(), "1");
  EXPECT_TRUE(ok);
}

TEST_F(XmlElement, FindsNoGrandchildAsAChild) {
  bool ok = true;
  EXPECT_TRUE(parse("<r><a><b/></a></r>").get_single_child_element("b", &ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, FindsNoChildByAPartOfItsName) {
  const KPT_XML_ELEMENT root = parse("<r><name/></r>");
  for (const char* name : {"nam", "names", "Name", ""}) {
    bool ok = true;
    EXPECT_TRUE(root.get_single_child_element(name, &ok).is_null()) << name;
  }
}

TEST_F(XmlElement, DoesNotLookForAChildWhenTheFlagIsDown) {
  bool ok = false;
  EXPECT_TRUE(parse("<r><a/></r>").get_single_child_element("a", &ok).is_null());
}

TEST_F(XmlElement, FindsNodesOfEveryKindByTheirNames) {
  const KPT_XML_ELEMENT root =
      parse("<!DOCTYPE r [<!ENTITY e 'by entity'>]><r>text<?pi data?><!--c-->&e;<e>late</e></r>");
  bool ok = true;
  EXPECT_EQ(root.get_single_child_element("pi", &ok).get_text_content(), "data");
  EXPECT_EQ(root.get_single_child_element("e", &ok).get_text_content(), "by entity");
  EXPECT_EQ(root.get_single_child_element("#text", &ok).get_text_content(), "text");
  EXPECT_EQ(root.get_single_child_element("#comment", &ok).get_text_content(), "c");
  EXPECT_TRUE(ok);
}

TEST_F(XmlElement, TakesANodeThatIsNoElementForOneWithoutAnythingInIt) {
  bool ok = true;
  KPT_XML_ELEMENT node = parse("<r><?pi data?></r>").get_single_child_element("pi", &ok);
  EXPECT_FALSE(node.is_null());
  EXPECT_EQ(node.get_attribute_by_name("a"), "");
  EXPECT_TRUE(node.get_child_elements("a", &ok).is_null());
  ok = true;
  EXPECT_TRUE(node.get_first_child(&ok).is_null());
  ok = true;
  EXPECT_TRUE(node.get_single_child_element("a", &ok).is_null());
}

TEST_F(XmlElement, ListsDescendantsOfANameInDocumentOrder) {
  bool ok = true;
  const KPT_XML_ELEMENT list = parse("<r><v>1</v><x><v>2<v>3</v></v></x><w/><v>4</v></r>").get_child_elements("v", &ok);
  ASSERT_TRUE(ok);
  EXPECT_FALSE(list.is_null());
  std::vector<std::string> texts;
  texts.reserve(static_cast<std::size_t>(list.size()));
  for (int i = 0; i < list.size(); ++i) {
    texts.emplace_back(list.item(i, &ok).get_text_content());
  }
  EXPECT_THAT(texts, ElementsAre("1", "23", "3", "4"));
}

TEST_F(XmlElement, ListsEveryDescendantForAnAsterisk) {
  bool ok = true;
  EXPECT_EQ(parse("<r>1<a><b/></a><!--c--><c/></r>").get_child_elements("*", &ok).size(), 3);
}

TEST_F(XmlElement, ListsWhatAnEntityStandsFor) {
  bool ok = true;
  EXPECT_EQ(parse("<!DOCTYPE r [<!ENTITY e '<v/>'>]><r>&e;<v/></r>").get_child_elements("v", &ok).size(), 2);
}

TEST_F(XmlElement, GoesOnWithAListAfterAnEntryOutsideIt) {
  bool ok = true;
  const KPT_XML_ELEMENT list = parse("<r><v>1</v><v>2</v></r>").get_child_elements("v", &ok);
  bool found = true;
  EXPECT_TRUE(list.item(9, &found).is_null());
  EXPECT_EQ(list.item(1, &ok).get_text_content(), "2");
  EXPECT_EQ(list.item(0, &ok).get_text_content(), "1");
}

TEST_F(XmlElement, GivesEntriesOfAListInAnyOrder) {
  bool ok = true;
  const KPT_XML_ELEMENT list = parse("<r><v>1</v><v>2</v><v>3</v></r>").get_child_elements("v", &ok);
  EXPECT_EQ(list.item(2, &ok).get_text_content(), "3");
  EXPECT_EQ(list.item(0, &ok).get_text_content(), "1");
  EXPECT_EQ(list.item(1, &ok).get_text_content(), "2");
  EXPECT_TRUE(ok);
}

TEST_F(XmlElement, HasNoListOfANameThatNoDescendantHas) {
  bool ok = true;
  const KPT_XML_ELEMENT list = parse("<r><a/></r>").get_child_elements("r", &ok);
  EXPECT_FALSE(ok);
  EXPECT_TRUE(list.is_null());
  EXPECT_EQ(list.size(), 0);
}

TEST_F(XmlElement, HasNoEntryOutsideAList) {
  bool ok = true;
  const KPT_XML_ELEMENT list = parse("<r><a/></r>").get_child_elements("a", &ok);
  for (const int i : {1, -1, 1000000}) {
    ok = true;
    EXPECT_TRUE(list.item(i, &ok).is_null()) << i;
    EXPECT_FALSE(ok);
  }
}

TEST_F(XmlElement, HasNeitherEntriesNorLengthAsAnElement) {
  const KPT_XML_ELEMENT root = parse("<r><a/></r>");
  bool ok = true;
  EXPECT_TRUE(root.item(0, &ok).is_null());
  EXPECT_FALSE(ok);
  EXPECT_EQ(root.size(), 0);
}

TEST_F(XmlElement, HasNothingOfAnElementAsAList) {
  bool ok = true;
  KPT_XML_ELEMENT list = parse("<r><a b='1'>t<c/></a></r>").get_child_elements("a", &ok);
  EXPECT_STREQ(list.get_node_name(), "");
  EXPECT_EQ(list.get_attribute_by_name("b"), "");
  EXPECT_EQ(list.get_text_content(), "");
  EXPECT_TRUE(list.get_first_child(&ok).is_null());
  EXPECT_FALSE(ok);
}

TEST_F(XmlElement, NeitherListsNorGivesEntriesWhenTheFlagIsDown) {
  const KPT_XML_ELEMENT root = parse("<r><a/></r>");
  bool ok = true;
  const KPT_XML_ELEMENT list = root.get_child_elements("a", &ok);
  ok = false;
  EXPECT_TRUE(root.get_child_elements("a", &ok).is_null());
  EXPECT_TRUE(list.item(0, &ok).is_null());
}

TEST_F(XmlElement, GivesTheValueOfAnAttribute) {
  EXPECT_EQ(parse("<r id='7' long_name_of_more_than_thirty_two_letters='x'/>").get_attribute_by_name("id"), "7");
  EXPECT_EQ(parse("<r long_name_of_more_than_thirty_two_letters='x'/>")
                .get_attribute_by_name("long_name_of_more_than_thirty_two_letters"),
            "x");
}

TEST_F(XmlElement, GivesNothingForAnAbsentAttribute) {
  EXPECT_EQ(parse("<r id='7'/>").get_attribute_by_name("i"), "");
  EXPECT_EQ(parse("<r id='7'/>").get_attribute_by_name(""), "");
  EXPECT_EQ(parse("<r id='7'/>").get_attribute_by_name(std::string("id\0x", 4)), "");
}

TEST_F(XmlElement, JoinsAllTextBelowAndLeavesCommentsAndInstructionsOut) {
  EXPECT_EQ(parse("<!DOCTYPE r [<!ENTITY e '5'>]><r>1<a>2<b>3</b></a><!--x--><?x y?><![CDATA[4<]]>&e;6</r>")
                .get_text_content(),
            "1234<56");
}

TEST_F(XmlElement, KeepsTheBlanksOfAText) { EXPECT_EQ(parse("<r> a \n b </r>").get_text_content(), " a \n b "); }

TEST_F(XmlElement, HasTheSameNameAtEveryCallAndInEveryCopy) {
  const KPT_XML_ELEMENT root = parse("<some_name/>");
  const KPT_XML_ELEMENT copy = root;
  const char* const name = root.get_node_name();
  EXPECT_STREQ(name, "some_name");
  EXPECT_EQ(copy.get_node_name(), name);
}

TEST_F(XmlElement, TellsANameWithoutAStringOfItsOwn) {
  const KPT_XML_ELEMENT root = parse("<some_name/>");
  EXPECT_TRUE(root.has_name("some_name"));
  EXPECT_FALSE(root.has_name("some_nam"));
  EXPECT_FALSE(KPT_XML_ELEMENT().has_name(""));
}

// In every locale; the tests run in the locale "C".
TEST_F(XmlElement, GivesNamesAndTextsBeyondAsciiInUtf8) {
  const KPT_XML_ELEMENT root = parse("<r \xC3\xA4='\xE2\x82\xAC'><\xC3\xA4/>\xF0\x9F\x98\x80<a>b</a></r>");
  bool ok = true;
  EXPECT_EQ(root.get_text_content(),
            "\xF0\x9F\x98\x80"
            "b");
  EXPECT_EQ(root.get_attribute_by_name("\xC3\xA4"), "\xE2\x82\xAC");
  EXPECT_STREQ(root.get_single_child_element("\xC3\xA4", &ok).get_node_name(), "\xC3\xA4");
  EXPECT_TRUE(ok);
  EXPECT_EQ(root.get_single_child_element("a", &ok).get_text_content(), "b");
  EXPECT_TRUE(ok);
}

// Only names of XML 1.1 have them.
TEST_F(XmlElement, FindsNamesWithCharactersOfTwoUnits) {
  const KPT_XML_ELEMENT root = parse("<?xml version='1.1'?><r \xF0\x90\x90\x80='x' \xF0\x9F\x98\x80='y'/>");
  EXPECT_EQ(root.get_attribute_by_name("\xF0\x90\x90\x80"), "x");
  EXPECT_EQ(root.get_attribute_by_name("\xF0\x9F\x98\x80"), "y");
}

TEST_F(XmlElement, FindsNothingUnderANameThatIsNoUtf8) {
  const KPT_XML_ELEMENT root = parse("<r \xC3\xA4='x'/>");
  EXPECT_EQ(root.get_attribute_by_name("\xE4"), "");
  EXPECT_EQ(root.get_attribute_by_name("\xFF"), "");
  EXPECT_EQ(root.get_attribute_by_name("\xC3\xA4\xF0\x9F\x98\x80"), "");
}

TEST(XmlNullElement, AnswersEverythingWithNothing) {
  KPT_XML_ELEMENT null;
  EXPECT_TRUE(null.is_null());
  EXPECT_EQ(null.size(), 0);
  EXPECT_STREQ(null.get_node_name(), "");
  EXPECT_EQ(null.get_attribute_by_name("a"), "");
  EXPECT_EQ(null.get_text_content(), "");
  bool ok = true;
  EXPECT_TRUE(null.get_first_child(&ok).is_null());
  EXPECT_FALSE(ok);
  ok = true;
  EXPECT_TRUE(null.get_next_sibling(&ok).is_null());
  EXPECT_FALSE(ok);
  ok = true;
  EXPECT_TRUE(null.get_single_child_element("a", &ok).is_null());
  EXPECT_FALSE(ok);
  ok = true;
  EXPECT_TRUE(null.get_child_elements("a", &ok).is_null());
  EXPECT_FALSE(ok);
  ok = true;
  EXPECT_TRUE(null.item(0, &ok).is_null());
  EXPECT_FALSE(ok);
}

// A list of any class that a client has.
struct NO_NODES : xercesc_3_2::DOMNodeList {
  xercesc_3_2::DOMNode* item(XMLSize_t) const override { return nullptr; }
  XMLSize_t getLength() const override { return 0; }
};

TEST(XmlNullElement, IsAListWithoutEntriesToo) {
  NO_NODES none;
  EXPECT_TRUE(KPT_XML_ELEMENT(&none).is_null());
}

TEST(XmlNullElement, IsMadeOfNullPointersToo) {
  EXPECT_TRUE(KPT_XML_ELEMENT(static_cast<xercesc_3_2::DOMElement*>(nullptr)).is_null());
  EXPECT_TRUE(KPT_XML_ELEMENT(static_cast<xercesc_3_2::DOMNodeList*>(nullptr)).is_null());
}

}  // namespace
