// diff and check: the differences of two databases, and the faults of one.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::HasSubstr;
using JSON = nlohmann::json;

class Diff : public TOOL_TEST {};

std::string associate(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}

TEST_F(Diff, FindsNothingBetweenADatabaseAndItself) {
  record("a.xml", DESIGN);
  record("b.xml", DESIGN);
  EXPECT_EQ(good({"diff", "a.xml", "b.xml"}), "");
  EXPECT_EQ(good({"diff", "a.xml", "b.xml", "--json"}), "{\n  \"format\": 1,\n  \"differences\": []\n}\n");
}

// Ids, order and orientation belong to the text and are not facts.
TEST_F(Diff, GoesByFacts) {
  record("a.xml",
         associate("a", "x") + associate("b", "y") +
             R"({"event":"associate_fsm","reference":["p","q"],"transformed":["s"],"states":[["01","1"],["00","0"]]})");
  record("b.xml",
         R"({"event":"associate_fsm","reference":["q","p"],"transformed":["s"],"states":[["00","0"],["10","1"]]})"
         "\n" +
             associate("b", "y") + associate("a", "x"));
  EXPECT_EQ(good({"diff", "a.xml", "b.xml"}), "");
}

TEST_F(Diff, TellsEveryDifference) {
  record("a.xml", associate("a", "x") + associate("b", "y") + associate("c", "z"));
  record("b.xml", associate("a", "x") + associate("b", "z") + associate("d", "y"));
  const RUN_RESULT result = kptdb({"diff", "a.xml", "b.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "~ reference register b: 1:1 with y -> 1:1 with z\n"
            "- reference register c: 1:1 with z\n"
            "+ reference register d: 1:1 with y\n"
            "~ transformed register y: 1:1 with b -> 1:1 with d\n"
            "~ transformed register z: 1:1 with c -> 1:1 with b\n");
}

TEST_F(Diff, SeesEliminationsPolarityAndStates) {
  const std::string fsm =
      R"({"event":"associate_fsm","reference":["p"],"transformed":["s"],"states":[["0","0"],["1","1"]]})"
      "\n";
  const std::string other_fsm =
      R"({"event":"associate_fsm","reference":["p"],"transformed":["s"],"states":[["0","1"],["1","0"]]})"
      "\n";
  record("a.xml", associate("a", "x") + associate("b", "y") + fsm);
  record("b.xml", associate("a", "x") + associate("b", "y") + other_fsm +
                      R"({"event":"eliminate","register":"x","reason":"no_fanout"})"
                      "\n"
                      R"({"event":"retime_inverter","register":"y"})"
                      "\n");
  const std::string out = kptdb({"diff", "a.xml", "b.xml"}).out;
  EXPECT_THAT(out, HasSubstr("~ reference register a: 1:1 with x -> without fanout\n"));
  EXPECT_THAT(out, HasSubstr("~ reference register b: 1:1 with y -> 1:1 with ~y\n"));
  EXPECT_THAT(out, HasSubstr("~ reference register p: fsm with s, with other relatives or another state table\n"));
  const JSON json = JSON::parse(kptdb({"diff", "a.xml", "b.xml", "--json"}).out);
  EXPECT_EQ(json["differences"][0]["difference"], "changed");
  EXPECT_EQ(json["differences"][0]["second"]["elimination"], "no_fanout");
}

TEST_F(Diff, NamesTheFileItCannotRead) {
  record("a.xml", DESIGN);
  const RUN_RESULT result = kptdb({"diff", "a.xml", "missing.xml"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.err, "kptdb: missing.xml: No such file or directory\n");
}

class Check : public TOOL_TEST {
 protected:
  // Records the design, changes the text of the file, and checks the result.
  RUN_RESULT check_changed(const std::string& from, const std::string& to) const {
    record("d.xml", DESIGN);
    std::string text = read("d.xml");
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    write("d.xml", text.replace(at, from.size(), to));
    return kptdb({"check", "d.xml"});
  }
  void expect_finding(const std::string& from, const std::string& to, const std::string& finding) const {
    const RUN_RESULT result = check_changed(from, to);
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr(finding));
  }
  void expect_no_finding(const std::string& event) const {
    record("d.xml", event + "\n");
    EXPECT_EQ(good({"check", "d.xml"}), "d.xml: no findings\n");
  }
};

TEST_F(Check, HasNothingAgainstAGoodFile) {
  record("d.xml", DESIGN);
  EXPECT_EQ(good({"check", "d.xml"}), "d.xml: no findings\n");
  EXPECT_EQ(JSON::parse(good({"check", "d.xml", "--json"})), JSON::parse(R"({"format":1,"findings":[]})"));
}

TEST_F(Check, FindsWhatIsWrongWithIds) {
  expect_finding("<kp id=\"1\">", "<kp id=\"77\">",
                 "error [id-unresolved] no reference register has the id 77 that is listed here\n");
  expect_finding("<kp id=\"1\">", "<kp id=\"one\">", "error [id-invalid] \"one\" is not an id\n");
  expect_finding("<kp id=\"1\">", "<kp id=\"99999999999\">", "[id-invalid]");
  expect_finding("<key_point id=\"1\"", "<key_point id=\"0\"",
                 "d.xml:6: error [id-duplicate] reference id 0 is taken since line 3\n");
}

TEST_F(Check, FindsNamesThatAreTakenOrEmpty) {
  expect_finding("<name>carry<", "<name>zero<",
                 "error [name-duplicate] reference register zero takes the place of an earlier one\n");
  expect_finding("<name>carry<", "<name><", "warning [name-empty] the register's name is empty\n");
}

// XML 1.1 has these characters, and such a file can be read.
TEST_F(Check, FindsNamesThatNoSavedFileHolds) {
  expect_finding("<kpt_db name=\"design", "<?xml version=\"1.1\"?><kpt_db name=\"d&#1;",
                 "d.xml:1: error [name-unreadable] no file that is saved can hold the database's name \"d\\x01\"\n");
}

TEST_F(Check, FindsRegistersWithoutAMapAndMapsWithoutRegisters) {
  expect_finding("</key_points_set>",
                 "<key_point id=\"90\" type=\"register\"><name>lost</name></key_point></key_points_set>",
                 "warning [register-unmapped] reference register lost has no map\n");
  expect_finding("</transformations_set>", "<transformation/></transformations_set>",
                 "warning [map-empty] the map lists no register\n");
  expect_finding("elim_type=\"stuck_at_zero\"", "elim_type=\"not_eliminated\"",
                 "warning [map-one-sided] the map lists no transformed register and gives no reason\n");
  expect_finding("<kp id=\"1\">", "<kp id=\"0\">", "[register-repeated] reference register count[0] is listed 2 times");
}

TEST_F(Check, HasNothingAgainstMapsOfOneSideThatSaySomething) {
  expect_no_finding(R"({"event":"map","reference":[{"same":["p","q"]}],"transformed":[]})");
  expect_no_finding(R"({"event":"map","reference":[],"transformed":[{"same":["p"],"inverse":["q"]}]})");
  expect_no_finding(R"({"event":"map","reference":[],"transformed":[{"same":["p"]}],"status":"stuck_at_one"})");
  expect_no_finding(R"({"event":"map","reference":[],"transformed":[{"same":["p"]}],"attributes":{"partial":"yes"}})");
}

TEST_F(Check, FindsWhatIsWrongWithTables) {
  expect_finding("num_reference_registers=\"2\"", "num_reference_registers=\"3\"",
                 "error [table-width] the state table has 3 columns for 2 indices of its reference side\n");
  expect_finding("num_states=\"3\"", "num_states=\"2\"",
                 "warning [table-incomplete] 3 states and 15 values are listed, 2 and 10 claimed\n");
  expect_finding("num_states=\"3\"", "num_states=\"three\"", "[table-invalid]");
  expect_finding("num_states=\"3\"", "num_states=\"0\"", "[table-empty]");
}

TEST_F(Check, FindsTablesThatAreNotCanonical) {
  record("d.xml",
         R"({"event":"associate_fsm","reference":["p"],"transformed":["s","t"],"states":[["0","01"],["1","10"]]})");
  const RUN_RESULT result = kptdb({"check", "d.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.out, HasSubstr("warning [table-not-canonical] two transformed columns of the state table are "
                                    "equal or opposite in every state\n"));
}

TEST_F(Check, FindsWhatALoadPassesOver) {
  expect_finding("type=\"register\"", "type=\"keypoint\"",
                 "d.xml:3: warning [keypoint-ignored] keypoint count[0] is not read");
  expect_finding("elim_type=\"stuck_at_zero\"", "elim_type=\"bored\"",
                 "[elimination-unknown] \"bored\" is no reason for an elimination\n");
  expect_finding("<state_table ", "<note/><state_table ",
                 "error [element-unexpected] element note does not belong here\n");
}

TEST_F(Check, CountsLinesPastCommentsAndQuotes) {
  const RUN_RESULT result =
      check_changed("<key_points_set type=\"reference\">\n",
                    "<!-- one\ntwo <key_point> -->\n<key_points_set type=\"reference\">\n"
                    "<key_point id=\"0\" type=\"register\"><name><![CDATA[x]]></name></key_point>\n");
  EXPECT_THAT(result.out, HasSubstr("d.xml:6: error [id-duplicate] reference id 0 is taken since line 5\n"));
}

TEST_F(Check, GivesFindingsAsJson) {
  record("d.xml", DESIGN);
  std::string text = read("d.xml");
  write("d.xml", text.replace(text.find("<kp id=\"1\">"), 10, "<kp id=\"77\""));
  const RUN_RESULT result = kptdb({"check", "d.xml", "--json"});
  EXPECT_EQ(result.exit_code, 1);
  const JSON finding = JSON::parse(result.out)["findings"][0];
  EXPECT_EQ(finding["severity"], "warning");
  EXPECT_EQ(finding["file"], "d.xml");
  EXPECT_TRUE(finding["line"].is_number());
}

}  // namespace
