// The writer where its buffer ends, and where its file cannot be written.
#include <gtest/gtest.h>

#include "tests/format/system_calls.h"
#include "tests/format/written.h"

namespace {

using namespace kpt_test;

// Each operation once, and some of them far up.
void write_all(KPT_XML_WRITER& w) {
  const std::string name(35, 'n');
  w.write_db_start_xml(name);
  w.start_tag("key_points_set");
  w.write_attribute("type", "reference");
  w.new_line();
  w.write_keypoint_xml("1", "register", name);
  w.set_key_point_attributes({{"pass", "opt"}, {"line", "a.v:7"}});
  w.write_keypoint_xml("2", "register", name, "entity", "dff");
  w.write_transformation_start_xml("not_eliminated");
  w.write_tr_set_start_xml("reference");
  w.write_tr_state_start_xml(0);
  w.write_transformation_xml("noninverts", 0, KPT_ID_LIST{1, 2});
  w.write_tr_state_end_xml();
  w.write_tr_set_end_xml();
  w.write_state_index_xml(3);
  w.write_state_table_xml(4, "1");
  w.write_attributes({{"pass", "opt"}});
  w.write_transformation_end_xml();
  for (int k = 0; k < 20; ++k) {
    w.indent();
  }
  w.write_keypoint_xml("3", "register", name, "entity", "dff");
  w.write_empty_content_element("empty");
  w.write_simple_text_element("text", name);
  w.close_tag();
  w.end_tag("last");
}

// The operations ask for room in the buffer once and then put what they know without asking.
TEST(XmlWriter, WritesEveryOperationAlikeWhereverTheBufferEnds) {
  constexpr std::size_t BLOCK = std::size_t{1} << 20;
  const std::string all = written(write_all);
  ASSERT_GT(all.size(), 1000U);
  for (std::size_t before = BLOCK - all.size() - 600; before <= BLOCK; before += 13) {
    const std::string text(before, 'x');
    const std::string result = written([&](KPT_XML_WRITER& w) {
      w.write_text_content(text);
      write_all(w);
    });
    ASSERT_TRUE(result == text + all) << before;
  }
}

TEST(XmlWriter, LosesEveryOperationWithoutAFile) {
  KPT_XML_WRITER writer("");
  for (int k = 0; k < 10; ++k) {
    write_all(writer);
  }
  EXPECT_FALSE(writer.finish_file());
}

TEST(XmlWriter, LosesEveryOperationAfterAFullDevice) {
  KPT_XML_WRITER writer("/dev/full");
  ASSERT_TRUE(writer.start_file());
  writer.write_text_content(std::string(3 << 20, 'x'));
  for (int k = 0; k < 10; ++k) {
    write_all(writer);
  }
  EXPECT_FALSE(writer.finish_file());
}

bool finishes(SYSTEM_CALLS& watched, const std::string& path) {
  watched.watch_all();
  KPT_XML_WRITER writer(path);
  return writer.start_file() && writer.write_text_content("x") && writer.finish_file();
}

// Linux closes a descriptor also when a signal interrupts it.
TEST(XmlWriter, ReportsAFileThatCannotBeClosedUnlessASignalCame) {
  const FOLDER folder;
  unsigned at = 0;
  {
    SYSTEM_CALLS untroubled;
    EXPECT_TRUE(finishes(untroubled, folder.file("out")));
    ASSERT_EQ(untroubled.names().back(), "close");
    at = static_cast<unsigned>(untroubled.names().size() - 1);
  }
  for (const int error : {EIO, ENOSPC, EINTR}) {
    SYSTEM_CALLS watched(SYSTEM_CALLS::FAILURE, at, error);
    EXPECT_EQ(finishes(watched, folder.file("out")), error == EINTR) << error;
  }
}

}  // namespace
