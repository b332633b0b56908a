// Which files the scanner reads itself, and which it leaves to the general
// source. The tests of the sources compare the results.
#include <gmock/gmock.h>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/load/kpt_file_loader.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;

bool is_plain(const std::string& path) {
  const HOST_LINES lines;
  KPT_FILE_LOADER loader(path);
  loader.read([](std::string_view name) { return new KPT_KEYPOINTS_DB_IMPL(name); });
  return loader.is_plain();
}

bool is_plain_text(std::string_view text) {
  const FOLDER folder;
  return is_plain(folder.file_of(text));
}

// A file of one register with that name.
std::string file_with_name(const std::string& name) {
  return "<kpt_db name=\"d\"><key_points_set type=\"reference\"><key_point id=\"1\" type=\"register\"><name>" + name +
         "</name></key_point></key_points_set></kpt_db>";
}

// The name as the scanner reads it.
std::string name_read(const std::string& name) {
  const FOLDER folder;
  const HOST_LINES lines;
  KPT_FILE_LOADER loader(folder.file_of(file_with_name(name)));
  EXPECT_TRUE(loader.read([](std::string_view db_name) { return new KPT_KEYPOINTS_DB_IMPL(db_name); }));
  EXPECT_TRUE(loader.is_plain());
  const DATABASE db = loader.finish();
  return registers(*db->get_reference_set()).front().substr(2);
}

TEST(PlainFile, IsWhatTheLibraryWrites) {
  for (const char* name : {"empty.xml", "three_maps.xml", "state_machine.xml", "inverting_groups.xml"}) {
    EXPECT_TRUE(is_plain(data_file(name))) << name;
  }
}

struct TEXT {
  const char* name;
  std::string text;
};
void PrintTo(const TEXT& text, std::ostream* out) { *out << text.name; }
std::string name_of(const testing::TestParamInfo<TEXT>& p) { return p.param.name; }

class PlainFileWith : public testing::TestWithParam<TEXT> {};
TEST_P(PlainFileWith, IsReadByTheScanner) { EXPECT_TRUE(is_plain_text(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(
    , PlainFileWith,
    testing::Values(TEXT{"an_empty_root", "<a name=\"d\"/>"}, TEXT{"blanks_around", " \r\n\t<a name=\"d\"></a> \r\n"},
                    TEXT{"blanks_in_tags", "<a  name = \"d\"\n ><b\t/></a\n>"},
                    TEXT{"predefined_entities", "<a name=\"&lt;&gt;&amp;&quot;&apos;\">&lt;&gt;&amp;&quot;&apos;</a>"},
                    TEXT{"character_references", "<a name=\"&#65;&#x41;&#10;\">&#65;&#x10FFFF;&#0009;</a>"},
                    TEXT{"utf_8", "<a name=\"\xC3\xA9\">\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
                    TEXT{"a_closing_bracket_in_a_text", "<a name=\"d\">count<b/>[3]> ]]&gt;</a>"},
                    TEXT{"names_that_begin_almost_like_reserved_ones", "<xab xm=\"\" name=\"d\"><xma/></xab>"},
                    TEXT{"quotes_in_texts", "<a name=\"d'\">'\"</a>"},
                    TEXT{"many_attributes", "<a name=\"d\" b=\"\" c=\"\" d=\"\" e=\"\" f=\"\" g=\"\" h=\"\" i=\"\"/>"},
                    TEXT{"many_attributes_of_one_name_in_two_elements",
                         "<a name=\"d\" b=\"\" c=\"\" d=\"\" e=\"\" f=\"\" g=\"\" h=\"\" i=\"\">"
                         "<b name=\"d\" b=\"\" c=\"\" d=\"\" e=\"\" f=\"\" g=\"\" h=\"\" i=\"\"/></a>"}),
    name_of);

class OtherFileWith : public testing::TestWithParam<TEXT> {};
TEST_P(OtherFileWith, IsLeftToTheGeneralSource) { EXPECT_FALSE(is_plain_text(GetParam().text)); }

INSTANTIATE_TEST_SUITE_P(
    , OtherFileWith,
    testing::Values(
        TEXT{"nothing_in_it", ""}, TEXT{"blanks_alone", " \n"},
        TEXT{"a_declaration", "<?xml version=\"1.0\"?><a name=\"d\"/>"},
        TEXT{"a_byte_order_mark", "\xEF\xBB\xBF<a name=\"d\"/>"}, TEXT{"a_comment", "<a name=\"d\"><!-- --></a>"},
        TEXT{"an_instruction", "<a name=\"d\"><?b?></a>"},
        TEXT{"a_character_section", "<a name=\"d\"><![CDATA[]]></a>"},
        TEXT{"a_document_type", "<!DOCTYPE a><a name=\"d\"/>"}, TEXT{"single_quotes", "<a name='d'/>"},
        TEXT{"a_colon_in_a_name", "<a:b name=\"d\"/>"}, TEXT{"a_namespace", "<a name=\"d\" xmlns=\"u\"/>"},
        TEXT{"a_reserved_name", "<XMLa name=\"d\"/>"}, TEXT{"a_name_beyond_ascii", "<\xC3\xA9 name=\"d\"/>"},
        TEXT{"another_entity", "<a name=\"d\">&b;</a>"}, TEXT{"a_reference_to_no_character", "<a name=\"d\">&#0;</a>"},
        TEXT{"a_reference_to_half_a_character", "<a name=\"d\">&#xD800;</a>"},
        TEXT{"a_reference_beyond_the_last_character", "<a name=\"d\">&#x110000;</a>"},
        TEXT{"a_reference_without_digits", "<a name=\"d\">&#;</a>"},
        TEXT{"a_reference_without_hexadecimal_digits", "<a name=\"d\">&#x;</a>"},
        TEXT{"a_reference_with_a_letter", "<a name=\"d\">&#65a;</a>"},
        TEXT{"a_reference_without_an_end", "<a name=\"d\">&lt</a>"},
        TEXT{"the_end_of_a_section", "<a name=\"d\">]]></a>"}, TEXT{"a_control_character", "<a name=\"d\">\x01</a>"},
        TEXT{"a_null", std::string("<a name=\"d\">\0</a>", 17)}, TEXT{"half_a_character", "<a name=\"d\">\xC3</a>"},
        TEXT{"a_byte_within_a_character", "<a name=\"d\">\x80</a>"},
        TEXT{"such_a_byte_in_a_value", "<a name=\"\x80\"/>"},
        TEXT{"an_overlong_character", "<a name=\"d\">\xC0\x80</a>"},
        TEXT{"an_overlong_character_of_four_bytes", "<a name=\"d\">\xF0\x80\x80\x80</a>"},
        TEXT{"a_character_without_its_second_byte", "<a name=\"d\">\xF0xxx</a>"},
        TEXT{"a_character_without_its_third_byte", "<a name=\"d\">\xF0\x9Fxx</a>"},
        TEXT{"a_character_without_its_fourth_byte", "<a name=\"d\">\xF0\x9F\x98x</a>"},
        TEXT{"an_encoded_half", "<a name=\"d\">\xED\xA0\x80</a>"},
        TEXT{"no_character", "<a name=\"d\">\xEF\xBF\xBE</a>"},
        TEXT{"a_character_beyond_the_last", "<a name=\"d\">\xF4\x90\x80\x80</a>"},
        TEXT{"an_opening_bracket_in_a_value", "<a name=\"<\"/>"},
        TEXT{"an_attribute_twice", "<a name=\"d\" name=\"e\"/>"},
        TEXT{"one_of_many_attributes_twice",
             "<a name=\"d\" b=\"\" c=\"\" d=\"\" e=\"\" f=\"\" g=\"\" h=\"\" i=\"\" b=\"\"/>"},
        TEXT{"attributes_that_touch", "<a name=\"d\"b=\"\"/>"}, TEXT{"an_attribute_without_a_value", "<a name/>"},
        TEXT{"tags_that_do_not_match", "<a name=\"d\"><b></c></a>"},
        TEXT{"a_tag_that_is_longer", "<a name=\"d\"></ab>"}, TEXT{"a_tag_too_many", "<a name=\"d\"></a></a>"},
        TEXT{"a_tag_too_few", "<a name=\"d\"><b></a>"}, TEXT{"two_roots", "<a name=\"d\"/><b/>"},
        TEXT{"text_before_the_root", "x<a name=\"d\"/>"}, TEXT{"text_behind_the_root", "<a name=\"d\"/>x"},
        TEXT{"a_blank_before_a_name", "< a name=\"d\"/>"}, TEXT{"a_slash_in_a_tag", "<a name=\"d\" / >"},
        TEXT{"no_end", "<a name=\"d\">"}),
    name_of);

TEST(PlainFile, HasItsReferencesReplaced) { EXPECT_EQ(name_read("a&lt;b&#62;&amp;&#xE9;"), "a<b>&\xC3\xA9"); }

TEST(PlainFile, HasItsEndsOfLineReadAsOneCharacter) { EXPECT_EQ(name_read("a\r\nb\rc\n\r"), "a\nb\nc\n\n"); }

TEST(PlainFile, KeepsBlanksThatAreReferences) { EXPECT_EQ(name_read("&#13;&#10;&#9;"), "\r\n\t"); }

// A blank in a value is a space.
TEST(PlainFile, HasTheBlanksOfItsNameReadAsSpaces) {
  const FOLDER folder;
  KPT_FILE_LOADER loader(folder.file_of("<a name=\"a\tb\r\nc\nd&#9;e\"/>"));
  std::string name;
  loader.read([&](std::string_view db_name) {
    name = db_name;
    return nullptr;
  });
  EXPECT_TRUE(loader.is_plain());
  EXPECT_EQ(name, "a b c d\te");
}

// A block may end anywhere: in a tag, a reference, a character, or a line end.
TEST(PlainFile, IsReadAlikeWhereverItsBlocksEnd) {
  constexpr int BLOCK = 262144;
  for (int place = BLOCK - 90; place < BLOCK + 4; ++place) {
    const std::string front(static_cast<std::size_t>(place), ' ');
    const FOLDER folder;
    KPT_FILE_LOADER loader(
        folder.file_of(front + file_with_name("a\r\n&amp;\xF0\x9F\x98\x80]]&gt;b") + std::string(BLOCK, ' ')));
    ASSERT_TRUE(loader.read([](std::string_view name) { return new KPT_KEYPOINTS_DB_IMPL(name); }));
    ASSERT_TRUE(loader.is_plain()) << place;
    EXPECT_EQ(registers(*loader.finish()->get_reference_set()).front(), "1:a\n&\xF0\x9F\x98\x80]]>b");
  }
}

TEST(PlainFile, EndsASectionWhereverItsBlocksEnd) {
  constexpr int BLOCK = 262144;
  const std::string front = "<a name=\"d\">";
  for (int more = -4; more < 4; ++more) {
    const std::string text(static_cast<std::size_t>(BLOCK - 12 + more), 'x');
    EXPECT_FALSE(is_plain_text(front + text + "]]></a>" + std::string(BLOCK, ' ')));
    EXPECT_TRUE(is_plain_text(front + text + "]&#93;></a>" + std::string(BLOCK, ' ')));
  }
}

TEST(PlainFile, MayHaveATagLongerThanABlock) {
  const std::string value(1000000, 'v');
  EXPECT_TRUE(is_plain_text("<a name=\"d\" b=\"" + value + "\"><c d=\"" + value + "\"/></a>"));
}

}  // namespace
