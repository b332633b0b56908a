// The reader: the name in a file, and the load of a file into a database.
#include "db/kpt/kpt_xml_reader.h"

#include <gmock/gmock.h>

#include "tests/format/databases.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(XmlReader, TellsTheNameOfTheDatabaseInAFile) {
  const HOST_LINES lines;
  EXPECT_EQ(KPT_XML_READER().get_db_name(data_file("empty.xml")), "empty");
  EXPECT_THAT(lines.debug(),
              ElementsAre("XML parse: file: " + data_file("empty.xml") + ", nerrors: 0", "Start XML parsing"));
}

TEST(XmlReader, TellsTheNameWhateverTheRootIsCalled) {
  EXPECT_EQ(KPT_XML_READER().get_db_name(data_file("another_root.xml")), "other_root");
}

TEST(XmlReader, TellsNoNameOfAFileWithoutOne) {
  EXPECT_EQ(KPT_XML_READER().get_db_name(data_file("no_database_name.xml")), "");
}

TEST(XmlReader, TellsNoNameOfAFileThatDoesNotExist) {
  const HOST_LINES lines;
  EXPECT_EQ(KPT_XML_READER().get_db_name(data_file("missing.xml")), "");
  EXPECT_THAT(lines.debug(), Not(Contains("Start XML parsing")));
}

TEST(XmlReader, LoadsNothingFromAFileThatDoesNotExist) {
  const LOADED loaded = load_data("missing.xml");
  EXPECT_FALSE(loaded.result);
}

TEST(XmlReader, LoadsNothingFromAFileWithAnErrorAtItsEnd) {
  const FOLDER folder;
  std::string file = read_file(data_file("three_maps.xml"));
  file.resize(file.size() - 5);
  const LOADED loaded = load(folder.file_of(file));
  EXPECT_FALSE(loaded.result);
  EXPECT_TRUE(loaded.db->get_reference_set()->is_empty());
}

TEST(XmlReader, SaysWhyAFileWasNotLoadedCompletely) {
  const FOLDER folder;
  KPT_XML_READER reader;
  const DATABASE db = new_database("d");
  EXPECT_FALSE(
      reader.load_kpt_xml(folder.file_of("<kpt_db name='d'><transformations_set/><more/></kpt_db>"), db.get()));
  EXPECT_EQ(reader.problem().kind, KPT_LOAD_PROBLEM::NOT_COMPLETE);
  EXPECT_EQ(reader.problem().message, "something follows the transformations");
}

TEST(XmlReader, LoadsOneFileAfterAnother) {
  KPT_XML_READER reader;
  const DATABASE first = new_database("first");
  const DATABASE second = new_database("second");
  EXPECT_TRUE(reader.load_kpt_xml(data_file("three_maps.xml"), first.get()));
  EXPECT_FALSE(reader.load_kpt_xml(data_file("missing.xml"), second.get()));
  EXPECT_TRUE(reader.load_kpt_xml(data_file("three_maps.xml"), second.get()));
  EXPECT_EQ(maps(*first), maps(*second));
}

TEST(XmlReader, MayNest) {
  KPT_XML_READER outer;
  { EXPECT_EQ(KPT_XML_READER().get_db_name(data_file("empty.xml")), "empty"); }
  EXPECT_EQ(outer.get_db_name(data_file("empty.xml")), "empty");
}

}  // namespace
