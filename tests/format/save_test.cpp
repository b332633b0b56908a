// Saving in place.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_writer.h"
#include "tests/format/databases.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(Save, FailsWithoutAWordWhenTheFileCannotBeOpened) {
  const FOLDER folder;
  const DATABASE db = new_database("d");
  const HOST_LINES lines;
  EXPECT_FALSE(db->save(folder.file("missing/db.xml")));
  EXPECT_THAT(lines.debug(), IsEmpty());
  EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(Save, TakesThePlaceOfAnEarlierFile) {
  const FOLDER folder;
  const std::string path = folder.file_of(std::string(10000, 'x'));
  const DATABASE db = new_database("empty");
  EXPECT_TRUE(db->save(path));
  EXPECT_EQ(read_file(path), read_file(data_file("empty.xml")));
}

TEST(Save, SaysThatItWaitsForThePipeToBeRead) {
  const FOLDER folder;
  const std::string pipe = folder.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const DATABASE db = new_database("empty");
  std::string read;
  std::thread reader([&] { read = read_file(pipe); });
  const HOST_LINES lines;
  EXPECT_TRUE(db->save(pipe));
  reader.join();
  EXPECT_EQ(read, read_file(data_file("empty.xml")));
  EXPECT_THAT(lines.debug(), testing::ElementsAre("Info: " + pipe + " is a pipe: saving waits until it is read"));
}

TEST(Save, WritesIntoEveryNameOfAFile) {
  const FOLDER folder;
  const std::string path = folder.file_of("earlier");
  ASSERT_EQ(::link(path.c_str(), folder.file("other.xml").c_str()), 0);
  EXPECT_TRUE(new_database("empty")->save(path));
  EXPECT_EQ(read_file(folder.file("other.xml")), read_file(data_file("empty.xml")));
}

// Nothing is escaped. The opposite is save_atomically, which escapes.
TEST(Save, WritesNamesThatCannotBeReadBack) {
  const FOLDER folder;
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "a<b&c");
  EXPECT_TRUE(db->save(folder.file("db.xml")));
  EXPECT_THAT(read_file(folder.file("db.xml")), HasSubstr("<name>a<b&c</name>"));
  EXPECT_FALSE(load(folder.file("db.xml")).result);
}

TEST(Save, WritesNoAttributes) {
  const DATABASE db = new_database("d");
  KPT_KEYPOINT* q = db->add_to_register_set(KPT_REFERENCE_SET, 1, "q");
  KPT_TRANSFORMATION_IMPL* map =
      db->add_to_transformation_set(NI_PAIR_VECTOR{{{q}, {}}}, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED);
  const std::string without = saved(*db);
  static_cast<KPT_REGISTER_KEYPOINT_IMPL*>(q)->add_attribute("source", "top.v:7");
  map->add_attribute("pass", "retime");
  EXPECT_EQ(saved(*db), without);
}

TEST(Save, LeavesTheWordOfAStatusOutsideTheListOut) {
  const DATABASE db = new_database("d");
  db->add_to_transformation_set(NI_PAIR_VECTOR{}, NI_PAIR_VECTOR{}, static_cast<KPT_ELIM_ENUM>(5));
  db->add_to_transformation_set(NI_PAIR_VECTOR{}, NI_PAIR_VECTOR{}, static_cast<KPT_ELIM_ENUM>(-1));
  const std::string file = saved(*db);
  EXPECT_THAT(file, HasSubstr("<transformation>"));
  EXPECT_THAT(file, Not(HasSubstr("elim_type")));
}

TEST(Save, WritesTheTableOfAStateMachineAlone) {
  const DATABASE db = new_database("d");
  db->add_to_transformation_set(NI_PAIR_VECTOR{}, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED);
  EXPECT_THAT(saved(*db), Not(HasSubstr("state_table")));
  db->add_to_transformation_set(NI_PAIR_VECTOR{}, NI_PAIR_VECTOR{}, KPT_STATE_TABLE_IMPL(0, 0, 0), KPT_NOT_ELIMINATED);
  EXPECT_THAT(saved(*db), HasSubstr("<state_table num_states=\"0\" num_reference_registers=\"0\" "
                                    "num_transformed_registers=\"0\">"));
}

TEST(Save, LeavesNullKeypointsOutAndAGroupOfNothingElseWithThem) {
  const DATABASE db = new_database("d");
  KPT_KEYPOINT* const a = db->add_to_register_set(KPT_REFERENCE_SET, 8, "a");
  const KPT_KEYPOINT_LIST with_null{nullptr, a};
  const KPT_KEYPOINT_LIST nulls(2, nullptr);
  const NI_PAIR_VECTOR side(1, NI_PAIR(with_null, nulls));
  db->add_to_transformation_set(side, NI_PAIR_VECTOR{}, KPT_NOT_ELIMINATED);
  const std::string file = saved(*db);
  EXPECT_THAT(file, HasSubstr("<kp id=\"8\">"));
  EXPECT_THAT(file, Not(HasSubstr("id=\"0\"")));
  EXPECT_THAT(file, Not(HasSubstr("inverts>\n      </")));
  EXPECT_THAT(file, Not(HasSubstr("<inverts>")));
}

// A keypoint that is not a register: a walk over base keypoints writes it, and a
// reader skips it.
TEST(Save, WritesAKeypointThatIsNoRegisterUnderItsOwnType) {
  const FOLDER folder;
  {
    KPT_XML_WRITER writer(folder.file("out"));
    EXPECT_TRUE(writer.start_file());
    const KPT_KEYPOINT keypoint(KPT_REGISTER_TYPE, 5, "k");
    EXPECT_TRUE(keypoint.save_keypoint(writer));
  }
  EXPECT_EQ(read_file(folder.file("out")),
            "    <key_point id=\"5\" type=\"keypoint\">\n    <name>k</name>\n  </key_point>\n");
}

TEST(Save, LosesAnIdBeyondAnInt) {
  const COUNTERS counters(0, 0);
  const FOLDER folder;
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 2147483647L, "kept");
  db->add_to_register_set(KPT_REFERENCE_SET, 2147483648L, "lost");
  EXPECT_TRUE(db->save(folder.file("db.xml")));
  EXPECT_THAT(registers(*load(folder.file("db.xml")).db->get_reference_set()),
              testing::ElementsAre("2147483647:kept", "-2147483648:lost"));
}

}  // namespace
