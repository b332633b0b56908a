// report: what the program writes. tests/report tests what a browser shows.
#include "tool.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class REPORT : public TOOL_TEST {};

TEST_F(REPORT, WritesOneFileAndSaysNothing) {
  record("x.xml", DESIGN);
  EXPECT_EQ(good({"report", "x.xml", "-o", "x.html"}), "");
  EXPECT_THAT(names(), ElementsAre("x.html", "x.xml"));
  EXPECT_THAT(read("x.html"), StartsWith("<!DOCTYPE html>"));
}

TEST_F(REPORT, ContainsNoNameOfTheDatabaseAsItIs) {
  record("x.xml", R"({"event": "associate", "reference": "very_own_name", "transformed": "other_own_name"})");
  good({"report", "x.xml", "-o", "x.html", "--title", "own_title"});
  EXPECT_THAT(read("x.html"), Not(HasSubstr("own_")));
}

TEST_F(REPORT, IsWrittenForEveryDatabaseThatCanBeLoaded) {
  for (const auto& file : std::filesystem::directory_iterator(KPT_SOURCES "/tests/format/data")) {
    const bool loads = kptdb({"info", file.path()}).exit_code == 0;
    const RUN_RESULT result = kptdb({"report", file.path(), "-o", "x.html"});
    EXPECT_EQ(result.exit_code, loads ? 0 : 3) << file.path() << result.err;
    EXPECT_EQ(exists("x.html"), loads) << file.path();
    std::filesystem::remove(folder() / "x.html");
  }
}

TEST_F(REPORT, TakesItsTimeFromTheEnvironment) {
  record("x.xml", DESIGN);
  EXPECT_EQ(shell("for k in 1 2; do SOURCE_DATE_EPOCH=0 $KPTDB report x.xml -o $k.html; done; cmp 1.html 2.html").err,
            "");
}

TEST_F(REPORT, LeavesAnEarlierPageWhenTheDatabaseIsBad) {
  write("x.html", "earlier");
  write("x.xml", "<kpt_db");
  EXPECT_EQ(kptdb({"report", "x.xml", "-o", "x.html"}).exit_code, 3);
  EXPECT_EQ(read("x.html"), "earlier");
}

TEST_F(REPORT, NeedsADatabaseAndATarget) {
  EXPECT_EQ(kptdb({"report", "-o", "x.html"}).exit_code, 2);
  EXPECT_EQ(kptdb({"report", "x.xml"}).exit_code, 2);
}

}  // namespace
