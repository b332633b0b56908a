// The writer, one operation at a time. Every expected text was derived by hand
// from the steps of the operation.
#include "db/kpt/kpt_xml_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <functional>

#include "tests/format/databases.h"
#include "tests/format/written.h"

namespace {

using namespace kpt_test;

TEST(XmlWriter, WritesNothingByItself) {
  EXPECT_EQ(written([](KPT_XML_WRITER&) {}), "");
}

TEST(XmlWriter, OpensNothingBeforeTheFileIsStarted) {
  const FOLDER folder;
  { KPT_XML_WRITER writer(folder.file("out")); }
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, EmptiesAFileThatIsThere) {
  const FOLDER folder;
  const std::string path = folder.file_of("of an earlier day", "out");
  {
    KPT_XML_WRITER writer(path);
    EXPECT_TRUE(writer.start_file());
  }
  EXPECT_EQ(read_file(path), "");
}

TEST(XmlWriter, RefusesAFileInAFolderThatIsNotThere) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.file("missing/out"));
  EXPECT_FALSE(writer.start_file());
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, RefusesAFolder) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.path());
  EXPECT_FALSE(writer.start_file());
}

TEST(XmlWriter, RefusesANameWithANulRatherThanOpenTheFileBeforeIt) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.file("out") + std::string("\0more", 5));
  EXPECT_FALSE(writer.start_file());
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, MakesItsFileWithAllPermissionsThatTheProcessAllows) {
  const FOLDER folder;
  const mode_t mask = ::umask(022);
  KPT_XML_WRITER writer(folder.file("out"));
  EXPECT_TRUE(writer.start_file());
  ::umask(mask);
  struct stat state {};
  ASSERT_EQ(::stat(folder.file("out").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0644U);
}

TEST(XmlWriter, StartsItsFileOnceAndThenTakesNoMore) {
  const FOLDER folder;
  {
    KPT_XML_WRITER writer(folder.file("out"));
    EXPECT_TRUE(writer.start_file());
    writer.write_text_content("kept");
    EXPECT_FALSE(writer.start_file());
    EXPECT_TRUE(writer.write_text_content("lost"));
  }
  EXPECT_EQ(read_file(folder.file("out")), "kept");
}

TEST(XmlWriter, StartsItsFileAgainOnceItIsFinished) {
  const FOLDER folder;
  {
    KPT_XML_WRITER writer(folder.file("out"));
    EXPECT_TRUE(writer.start_file());
    writer.write_text_content("the first and longer text");
    EXPECT_TRUE(writer.finish_file());
    EXPECT_TRUE(writer.start_file());
    writer.write_text_content("the second text");
  }
  EXPECT_EQ(read_file(folder.file("out")), "the second text");
}

TEST(XmlWriter, GoesOnAnsweringTrueWithoutAFile) {
  KPT_XML_WRITER writer("");
  EXPECT_FALSE(writer.start_file());
  EXPECT_TRUE(writer.start_tag("a"));
  EXPECT_TRUE(writer.new_line());
  EXPECT_TRUE(writer.end_tag("a"));
}

TEST(XmlWriter, GoesOnAnsweringTrueWhenTheDeviceIsFull) {
  KPT_XML_WRITER writer("/dev/full");
  ASSERT_TRUE(writer.start_file());
  EXPECT_TRUE(writer.write_text_content(std::string(3 << 20, 'x')));
  EXPECT_TRUE(writer.write_text_content("x"));
}

TEST(XmlWriter, ReportsAFullDeviceToWhoAsksAtTheEnd) {
  KPT_XML_WRITER writer("");
  ASSERT_TRUE(writer.start_file_on(::open("/dev/full", O_WRONLY)));
  EXPECT_TRUE(writer.write_text_content("x"));
  EXPECT_FALSE(writer.finish_file());
}

TEST(XmlWriter, HasNoBlanksAtLevel0) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.space()); }), "");
}

TEST(XmlWriter, IndentsByTwoBlanks) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.indent());
              EXPECT_TRUE(w.indent());
              w.space();
            }),
            "    ");
}

TEST(XmlWriter, IndentsAtEveryDepth) {
  for (const std::size_t depth : {8U, 9U, 40U}) {
    EXPECT_EQ(written([&](KPT_XML_WRITER& w) {
                for (std::size_t k = 0; k < depth; ++k) {
                  w.indent();
                }
                w.space();
              }),
              std::string(2 * depth, ' '));
  }
}

TEST(XmlWriter, OutdentsByTwoBlanks) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.outdent());
              w.space();
            }),
            "  ");
}

TEST(XmlWriter, RefusesToOutdentAtLevel0AndStaysThere) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_FALSE(w.outdent());
              w.space();
            }),
            "");
}

// 32,768 steps of two are 65,536, which is 0 in the 16 bits of a level.
TEST(XmlWriter, WrapsItsLevelAt16Bits) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              for (int k = 0; k < 32769; ++k) {
                w.indent();
              }
              w.space();
            }),
            "  ");
}

TEST(XmlWriter, LeavesAStartTagOpen) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.start_tag("a"));
            }),
            "  <a");
}

TEST(XmlWriter, WritesAnAttributeBetweenDoubleQuotes) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_attribute("id", "7")); }), " id=\"7\"");
}

TEST(XmlWriter, EscapesNothingInAnAttribute) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_attribute("n", "a&b<\""); }), " n=\"a&b<\"\"");
}

TEST(XmlWriter, EndsALineWithAClosingBracket) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.new_line()); }), ">\n");
}

TEST(XmlWriter, ClosesATagWithABlankAndNoLineEnd) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.close_tag()); }), "> ");
}

TEST(XmlWriter, EndsATagOneLevelDownAndComesBackUp) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.end_tag("a"));
              w.space();
            }),
            "  </a>\n    ");
}

// The counterpart: a level that came back to 0 would move every line after the
// first set of a file.
TEST(XmlWriter, GoesUpToLevel2ByAnEndTagAtLevel0) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.end_tag("a");
              w.space();
            }),
            "</a>\n  ");
}

TEST(XmlWriter, StaysAtLevel2ByASecondEndTag) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.end_tag("a");
              w.end_tag("b");
              w.space();
            }),
            "</a>\n</b>\n  ");
}

TEST(XmlWriter, WritesTextAsItIs) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_text_content(" a&b\n")); }), " a&b\n");
}

TEST(XmlWriter, WritesATextElementWithoutIndentation) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_simple_text_element("name", "q[0]"));
            }),
            "<name>q[0]</name>\n");
}

TEST(XmlWriter, WritesAnElementWithoutContentOnTwoLines) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.write_empty_content_element("a"));
            }),
            "    <a>\n      </a>\n");
}

TEST(XmlWriter, StartsADatabase) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_db_start_xml("top")); }), "<kpt_db name=\"top\">\n");
}

TEST(XmlWriter, WritesASignalWithItsStartTagIndentedTwice) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_keypoint_xml("2", "register", "clk"));
              w.space();
            }),
            "    <key_point id=\"2\" type=\"register\">\n"
            "    <name>clk</name>\n"
            "  </key_point>\n");
}

TEST(XmlWriter, WritesASignalTwoLevelsUp) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.write_keypoint_xml("2", "keypoint", "clk");
              w.space();
            }),
            "        <key_point id=\"2\" type=\"keypoint\">\n"
            "      <name>clk</name>\n"
            "      </key_point>\n"
            "  ");
}

// The counterpart of the signal: the same start tag, but indented after it.
TEST(XmlWriter, WritesABlockInstanceWithItsStartTagAtTheLevelBefore) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_keypoint_xml("1", "register", "q", "u1", "dff"));
              w.space();
            }),
            "<key_point id=\"1\" type=\"register\">\n"
            "    <name>q</name>\n"
            "    <entity>u1</entity>\n"
            "    <reg_type>dff</reg_type>\n"
            "  </key_point>\n");
}

TEST(XmlWriter, WritesABlockInstanceTwoLevelsUp) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.write_keypoint_xml("1", "register", "q", "u1", "dff");
              w.space();
            }),
            "    <key_point id=\"1\" type=\"register\">\n"
            "      <name>q</name>\n"
            "      <entity>u1</entity>\n"
            "      <reg_type>dff</reg_type>\n"
            "      </key_point>\n"
            "  ");
}

TEST(XmlWriter, StartsATransformation) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_transformation_start_xml("no_fanout"));
              w.space();
            }),
            "    <transformation elim_type=\"no_fanout\">\n");
}

TEST(XmlWriter, StartsATransformationWithoutAnAttributeForAnEmptyWord) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_transformation_start_xml(""); }), "    <transformation>\n");
}

TEST(XmlWriter, StartsASide) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_tr_set_start_xml("reference"));
              w.space();
            }),
            "    <kp_set type=\"reference\">\n");
}

TEST(XmlWriter, StartsAnIndexOfASide) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_tr_state_start_xml(65535));
              w.space();
            }),
            "    <kp_state index=\"65535\">\n");
}

TEST(XmlWriter, WritesAGroupWithOneLineAKeypoint) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_transformation_xml("inverts", 3, KPT_ID_LIST{7, -1}));
              w.space();
            }),
            "    <inverts>\n"
            "        <kp id=\"7\">   </kp>\n"
            "        <kp id=\"-1\">   </kp>\n"
            "    </inverts>\n");
}

TEST(XmlWriter, WritesAGroupTwoLevelsUpWithTheBlanksInsideEachKeypoint) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.write_transformation_xml("noninverts", 0, KPT_ID_LIST{1});
              w.space();
            }),
            "        <noninverts>\n"
            "            <kp id=\"1\">     </kp>\n"
            "        </noninverts>\n"
            "  ");
}

TEST(XmlWriter, WritesTheTagsOfAGroupWithoutKeypoints) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_transformation_xml("noninverts", 0, {}); }),
            "    <noninverts>\n"
            "    </noninverts>\n");
}

TEST(XmlWriter, WritesAGroupInStepsAsItDoesAtOnce) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.begin_transformation_xml("inverts"));
              EXPECT_TRUE(w.write_kp_xml(4));
              EXPECT_TRUE(w.end_transformation_xml("inverts"));
              w.space();
            }),
            written([](KPT_XML_WRITER& w) {
              w.write_transformation_xml("inverts", 0, KPT_ID_LIST{4});
              w.space();
            }));
}

// Ids pass through the host's ints. The counterpart is an id that survives.
TEST(XmlWriter, WritesAnIdBeyondAnIntAsAnotherNumber) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_kp_xml(2147483647L); }), "<kp id=\"2147483647\"> </kp>\n");
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_kp_xml(2147483648L); }), "<kp id=\"-2147483648\"> </kp>\n");
}

TEST(XmlWriter, StartsAState) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_state_index_xml(12));
              w.space();
            }),
            "  <state index=\"12\">\n  ");
}

TEST(XmlWriter, WritesAnEntryOfAState) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_state_table_xml(0, "1"));
              w.space();
            }),
            "        <value index=\"0\"> 1  </value>\n  ");
}

TEST(XmlWriter, WritesTextsOfAnyLengthInOrder) {
  const std::string block(1 << 20, 'b');
  const std::string more(5 << 20, 'm');
  EXPECT_EQ(written([&](KPT_XML_WRITER& w) {
              w.write_text_content("a");
              w.write_text_content(block);
              w.write_text_content(more);
              w.write_text_content("z");
            }),
            "a" + block + more + "z");
}

TEST(XmlWriter, WritesManyShortTextsInOrder) {
  std::string expected;
  EXPECT_EQ(written([&](KPT_XML_WRITER& w) {
              w.indent();
              for (int k = 0; k < 400000; ++k) {
                w.space();
                w.write_text_content(std::to_string(k));
                expected += "  " + std::to_string(k);
              }
            }),
            expected);
}

TEST(XmlWriter, EndsTheElementsOfAMapWithABlankForEachLevelInFront) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_tr_state_end_xml());
              EXPECT_TRUE(w.write_tr_set_end_xml());
              EXPECT_TRUE(w.write_transformation_end_xml());
            }),
            "  </kp_state>\n  </kp_set>\n  </transformation>\n");
}

TEST(XmlWriter, ReplacesWhatCannotBeReadBackWhenItEscapes) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.escape_texts();
              w.write_attribute("a", "<&\">]]>\t\n\r>]]");
              w.write_simple_text_element("t", "plain");
            }),
            " a=\"&lt;&amp;&quot;>]]&gt;&#9;&#10;&#13;>]]\"<t>plain</t>\n");
}

}  // namespace
