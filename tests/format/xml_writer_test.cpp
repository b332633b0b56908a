// The writer, one operation at a time; every expected text is worked out by
// hand from the operation's steps.
#include "db/kpt/kpt_xml_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <functional>

#include "tests/format/databases.h"

namespace {

using namespace kpt_test;

// What a writer puts into its file.
std::string written(const std::function<void(KPT_XML_WRITER&)>& steps) {
  const FOLDER folder;
  {
    KPT_XML_WRITER writer(folder.file("out"));
    EXPECT_TRUE(writer.start_file());
    steps(writer);
  }
  return read_file(folder.file("out"));
}

TEST(XmlWriter, writes_nothing_by_itself) {
  EXPECT_EQ(written([](KPT_XML_WRITER&) {}), "");
}

TEST(XmlWriter, opens_nothing_before_the_file_is_started) {
  const FOLDER folder;
  { KPT_XML_WRITER writer(folder.file("out")); }
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, empties_a_file_that_is_there) {
  const FOLDER folder;
  const std::string path = folder.file_of("of an earlier day", "out");
  {
    KPT_XML_WRITER writer(path);
    EXPECT_TRUE(writer.start_file());
  }
  EXPECT_EQ(read_file(path), "");
}

TEST(XmlWriter, refuses_a_file_in_a_folder_that_is_not_there) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.file("missing/out"));
  EXPECT_FALSE(writer.start_file());
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, refuses_a_folder) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.path());
  EXPECT_FALSE(writer.start_file());
}

TEST(XmlWriter, refuses_a_name_with_a_nul_rather_than_open_the_file_before_it) {
  const FOLDER folder;
  KPT_XML_WRITER writer(folder.file("out") + std::string("\0more", 5));
  EXPECT_FALSE(writer.start_file());
  EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(XmlWriter, makes_its_file_with_all_permissions_that_the_process_allows) {
  const FOLDER folder;
  const mode_t mask = ::umask(022);
  KPT_XML_WRITER writer(folder.file("out"));
  EXPECT_TRUE(writer.start_file());
  ::umask(mask);
  struct stat state {};
  ASSERT_EQ(::stat(folder.file("out").c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0644U);
}

TEST(XmlWriter, starts_its_file_once_and_then_takes_no_more) {
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

TEST(XmlWriter, goes_on_answering_true_without_a_file) {
  KPT_XML_WRITER writer("");
  EXPECT_FALSE(writer.start_file());
  EXPECT_TRUE(writer.start_tag("a"));
  EXPECT_TRUE(writer.new_line());
  EXPECT_TRUE(writer.end_tag("a"));
}

TEST(XmlWriter, goes_on_answering_true_when_the_device_is_full) {
  KPT_XML_WRITER writer("/dev/full");
  ASSERT_TRUE(writer.start_file());
  EXPECT_TRUE(writer.write_text_content(std::string(3 << 20, 'x')));
  EXPECT_TRUE(writer.write_text_content("x"));
}

TEST(XmlWriter, reports_a_full_device_to_who_asks_at_the_end) {
  KPT_XML_WRITER writer("");
  ASSERT_TRUE(writer.start_file_on(::open("/dev/full", O_WRONLY)));
  EXPECT_TRUE(writer.write_text_content("x"));
  EXPECT_FALSE(writer.finish_file());
}

TEST(XmlWriter, has_no_blanks_at_level_0) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.space()); }), "");
}

TEST(XmlWriter, indents_by_two_blanks) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.indent());
              EXPECT_TRUE(w.indent());
              w.space();
            }),
            "    ");
}

TEST(XmlWriter, outdents_by_two_blanks) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.outdent());
              w.space();
            }),
            "  ");
}

TEST(XmlWriter, refuses_to_outdent_at_level_0_and_stays_there) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_FALSE(w.outdent());
              w.space();
            }),
            "");
}

// 32,768 steps of two are 65,536, which is 0 in the 16 bits of a level.
TEST(XmlWriter, wraps_its_level_at_16_bits) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              for (int k = 0; k < 32769; ++k) {
                w.indent();
              }
              w.space();
            }),
            "  ");
}

TEST(XmlWriter, leaves_a_start_tag_open) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.start_tag("a"));
            }),
            "  <a");
}

TEST(XmlWriter, writes_an_attribute_between_double_quotes) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_attribute("id", "7")); }), " id=\"7\"");
}

TEST(XmlWriter, escapes_nothing_in_an_attribute) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_attribute("n", "a&b<\""); }), " n=\"a&b<\"\"");
}

TEST(XmlWriter, ends_a_line_with_a_closing_bracket) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.new_line()); }), ">\n");
}

TEST(XmlWriter, closes_a_tag_with_a_blank_and_no_line_end) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.close_tag()); }), "> ");
}

TEST(XmlWriter, ends_a_tag_one_level_down_and_comes_back_up) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.end_tag("a"));
              w.space();
            }),
            "  </a>\n    ");
}

// The pair: a level that came back to 0 would move every line below the first
// set of a file.
TEST(XmlWriter, goes_up_to_level_2_by_an_end_tag_at_level_0) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.end_tag("a");
              w.space();
            }),
            "</a>\n  ");
}

TEST(XmlWriter, stays_at_level_2_by_a_second_end_tag) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.end_tag("a");
              w.end_tag("b");
              w.space();
            }),
            "</a>\n</b>\n  ");
}

TEST(XmlWriter, writes_text_as_it_is) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_text_content(" a&b\n")); }), " a&b\n");
}

TEST(XmlWriter, writes_a_text_element_without_indentation) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_simple_text_element("name", "q[0]"));
            }),
            "<name>q[0]</name>\n");
}

TEST(XmlWriter, writes_an_element_without_content_on_two_lines) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              w.indent();
              EXPECT_TRUE(w.write_empty_content_element("a"));
            }),
            "    <a>\n      </a>\n");
}

TEST(XmlWriter, starts_a_database) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { EXPECT_TRUE(w.write_db_start_xml("top")); }), "<kpt_db name=\"top\">\n");
}

TEST(XmlWriter, writes_a_signal_with_its_start_tag_indented_twice) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_keypoint_xml("2", "register", "clk"));
              w.space();
            }),
            "    <key_point id=\"2\" type=\"register\">\n"
            "    <name>clk</name>\n"
            "  </key_point>\n");
}

TEST(XmlWriter, writes_a_signal_two_levels_up) {
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

// The pair of the signal: the same start tag, but indented behind it.
TEST(XmlWriter, writes_a_block_instance_with_its_start_tag_at_the_level_before) {
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

TEST(XmlWriter, writes_a_block_instance_two_levels_up) {
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

TEST(XmlWriter, starts_a_transformation) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_transformation_start_xml("no_fanout"));
              w.space();
            }),
            "    <transformation elim_type=\"no_fanout\">\n");
}

TEST(XmlWriter, starts_a_transformation_without_an_attribute_for_an_empty_word) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_transformation_start_xml(""); }), "    <transformation>\n");
}

TEST(XmlWriter, starts_a_side) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_tr_set_start_xml("reference"));
              w.space();
            }),
            "    <kp_set type=\"reference\">\n");
}

TEST(XmlWriter, starts_an_index_of_a_side) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_tr_state_start_xml(65535));
              w.space();
            }),
            "    <kp_state index=\"65535\">\n");
}

TEST(XmlWriter, writes_a_group_with_one_line_a_keypoint) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              EXPECT_TRUE(w.write_transformation_xml("inverts", 3, KPT_ID_LIST{7, -1}));
              w.space();
            }),
            "    <inverts>\n"
            "        <kp id=\"7\">   </kp>\n"
            "        <kp id=\"-1\">   </kp>\n"
            "    </inverts>\n");
}

TEST(XmlWriter, writes_a_group_two_levels_up_with_the_blanks_inside_each_keypoint) {
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

TEST(XmlWriter, writes_the_tags_of_a_group_without_keypoints) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_transformation_xml("noninverts", 0, {}); }),
            "    <noninverts>\n"
            "    </noninverts>\n");
}

TEST(XmlWriter, writes_a_group_in_steps_as_it_does_at_once) {
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

// Ids go through the host's ints: the pair of an id that survives.
TEST(XmlWriter, writes_an_id_beyond_an_int_as_another_number) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_kp_xml(2147483647L); }), "<kp id=\"2147483647\"> </kp>\n");
  EXPECT_EQ(written([](KPT_XML_WRITER& w) { w.write_kp_xml(2147483648L); }), "<kp id=\"-2147483648\"> </kp>\n");
}

TEST(XmlWriter, starts_a_state) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_state_index_xml(12));
              w.space();
            }),
            "  <state index=\"12\">\n  ");
}

TEST(XmlWriter, writes_an_entry_of_a_state) {
  EXPECT_EQ(written([](KPT_XML_WRITER& w) {
              w.indent();
              EXPECT_TRUE(w.write_state_table_xml(0, "1"));
              w.space();
            }),
            "        <value index=\"0\"> 1  </value>\n  ");
}

TEST(XmlWriter, writes_texts_of_any_length_in_order) {
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

TEST(XmlWriter, writes_many_short_texts_in_order) {
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

}  // namespace
