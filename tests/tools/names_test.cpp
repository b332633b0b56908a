// Questions about many registers: patterns, lists of names, filters, and counts by instance.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::json;

class Names : public TOOL_TEST {
 protected:
  void SetUp() override { record("d.xml", DESIGN); }
  // The names that a command prints, in order.
  std::vector<std::string> found(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    const RUN_RESULT result = kptdb(arguments);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> names;
    const JSON answer = JSON::parse(result.out);
    for (const JSON& reg : answer["registers"]) {
      names.push_back(reg["name"]);
    }
    return names;
  }
  std::vector<std::string> listed(std::vector<std::string> filters) const {
    filters.insert(filters.begin(), {"list", "d.xml"});
    return found(filters);
  }
};

TEST_F(Names, ShowAnswersSeveralNamesInTheirOrder) {
  EXPECT_THAT(found({"show", "d.xml", "zero", "carry"}), ElementsAre("zero", "carry"));
  EXPECT_THAT(good({"show", "d.xml", "zero", "carry"}),
              ContainsRegex("^reference register zero[^\n]*\n[^\n]*\n\nreference register carry"));
}

TEST_F(Names, ShowTakesGlobs) {
  EXPECT_THAT(found({"show", "d.xml", "count[?]"}), ElementsAre("count[0]", "count[1]"));
  EXPECT_THAT(found({"show", "d.xml", "*a*e", "--side", "reference"}), ElementsAre("spare"));
}

TEST_F(Names, ShowTakesExtendedRegularExpressions) {
  EXPECT_THAT(found({"show", "d.xml", "-E", "^(zero|spare)$"}), ElementsAre("zero", "spare"));
  EXPECT_THAT(found({"show", "d.xml", "-E", "pare"}), ElementsAre("spare"));
  const RUN_RESULT result = kptdb({"show", "d.xml", "-E", "a("});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, StartsWith("kptdb: a( is no regular expression: "));
}

TEST_F(Names, ShowMayTakeCapitalsForSmallLetters) {
  EXPECT_THAT(found({"show", "d.xml", "-i", "ZERO", "Car*"}), ElementsAre("zero", "carry"));
  EXPECT_THAT(found({"show", "d.xml", "-i", "-E", "^ZE"}), ElementsAre("zero"));
  EXPECT_EQ(kptdb({"show", "d.xml", "ZERO"}).exit_code, 1);
}

TEST_F(Names, ShowReadsNamesFromAFile) {
  write("names", "spare\n\nzero\r\n");
  EXPECT_THAT(found({"show", "d.xml", "--names-from", "names"}), ElementsAre("spare", "zero"));
  const RUN_RESULT piped = kptdb({"show", "d.xml", "--names-from", "-"}, "carry\n");
  EXPECT_THAT(piped.out, StartsWith("reference register carry"));
  EXPECT_EQ(kptdb({"show", "d.xml", "--names-from", "missing"}).err, "kptdb: missing: No such file or directory\n");
}

TEST_F(Names, ShowAnswersWhatItFindsAndNamesWhatItDoesNot) {
  const RUN_RESULT result = kptdb({"show", "d.xml", "zer0", "carry", "none_of_that_kind"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.out, StartsWith("reference register carry"));
  EXPECT_EQ(result.err,
            "kptdb: d.xml: no register zer0; did you mean zero?\nkptdb: d.xml: no register none_of_that_kind\n");
}

TEST_F(Names, ListSaysWhenNoNameMatches) {
  const RUN_RESULT result = kptdb({"list", "d.xml", "--name", "none*"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "kptdb: d.xml: no register matches none*\n");
  EXPECT_EQ(kptdb({"list", "d.xml", "--fate", "unknown"}).exit_code, 0);
}

TEST_F(Names, ListTakesExpressionsAndAnyCase) {
  EXPECT_THAT(listed({"--name", "^z", "-E"}), ElementsAre("zero"));
  EXPECT_THAT(listed({"--name", "ZERO", "-i"}), ElementsAre("zero"));
}

TEST_F(Names, ListFiltersByFate) {
  EXPECT_THAT(listed({"--fate", "constant", "--side", "reference"}), ElementsAre("zero"));
  EXPECT_THAT(listed({"--fate", "without_fanout"}), ElementsAre("spare"));
  EXPECT_THAT(listed({"--fate", "machine", "--side", "reference"}), ElementsAre("state[1]", "state[0]"));
}

TEST_F(Names, ListFiltersByHierarchy) {
  EXPECT_THAT(listed({"--under", "u1"}), ElementsAre("u1/q", "u1/q"));
  EXPECT_THAT(listed({"--under", "u1/", "--side", "reference"}), ElementsAre("u1/q"));
  EXPECT_THAT(listed({"--under", "u"}), ElementsAre());
  EXPECT_THAT(listed({"--under", "count"}), ElementsAre());
}

TEST_F(Names, ListFiltersByPass) {
  std::string text = read("d.xml");
  const std::string map = "<transformation elim_type=\"stuck_at_zero\">";
  ASSERT_NE(text.find(map), std::string::npos);
  write("d.xml", text.insert(text.find(map) + map.size(), "<attribute name=\"pass\" value=\"opt_dff, opt_clean\"/>"));
  EXPECT_THAT(listed({"--pass", "opt_clean"}), ElementsAre("zero"));
  EXPECT_THAT(listed({"--pass", "opt"}), ElementsAre());
  EXPECT_EQ(good({"check", "d.xml"}), "d.xml: no findings\n");
}

TEST_F(Names, StatsCountByInstanceAsATree) {
  EXPECT_EQ(good({"stats", "d.xml"}),
            "instance  registers  mapped  machine  constant  without fanout  unknown  answered\n"
            "(all)     8          4       2        1         1               0        100.0%\n"
            "  u1      1          1       0        0         0               0        100.0%\n");
}

TEST_F(Names, StatsGoAsDeepAsAsked) {
  record("h.xml", R"({"event":"associate","reference":"top/a/b/c","transformed":"x"})"
                  "\n"
                  R"({"event":"associate","reference":"top/a/d","transformed":"y"})"
                  "\n");
  const auto paths = [&](const std::string& depth) {
    std::vector<std::string> result;
    const JSON stats = JSON::parse(good({"stats", "h.xml", "--depth", depth, "--json"}));
    for (const JSON& instance : stats["instances"]) {
      result.push_back(instance["path"].get<std::string>() + " " + instance["registers"].dump());
    }
    return result;
  };
  EXPECT_THAT(paths("1"), ElementsAre(" 2", "top 2"));
  EXPECT_THAT(paths("0"), ElementsAre(" 2", "top 2", "top/a 2", "top/a/b 1"));
}

TEST_F(Names, CoverageBelowTheBoundIsAFailure) {
  std::string text = read("d.xml");
  write("d.xml", text.insert(text.find("</key_points_set>"),
                             "<key_point id=\"90\" type=\"register\"><name>lost</name></key_point>\n"));
  EXPECT_EQ(kptdb({"info", "d.xml", "--fail-under", "88.8"}).exit_code, 0);
  const RUN_RESULT result = kptdb({"info", "d.xml", "--fail-under", "90"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err, "kptdb: d.xml: 88.9% of the reference registers have an answer (8 of 9), less than 90%\n");
  EXPECT_EQ(result.out, good({"info", "d.xml"}));
  EXPECT_THAT(kptdb({"check", "d.xml", "--fail-under", "90"}).err, HasSubstr("less than 90%"));
  EXPECT_EQ(kptdb({"info", "d.xml", "--fail-under", "101"}).exit_code, 2);
}

TEST_F(Names, CheckFindsACodeThatFacesSeveral) {
  record(
      "m.xml",
      R"({"event":"associate_fsm","reference":["a","b"],"transformed":["p","q"],"states":[["00","01"],["01","10"]]})");
  std::string text = read("m.xml");
  // The reference code of the second state becomes that of the first.
  const std::size_t at = text.find("<value index=\"1\"> 1", text.find("<state index=\"1\">"));
  ASSERT_NE(at, std::string::npos);
  write("m.xml", text.replace(at, 19, "<value index=\"1\"> 0"));
  EXPECT_THAT(kptdb({"check", "m.xml"}).out,
              HasSubstr("error [table-contradictory] the reference code 00 faces the transformed codes 01 and 10\n"));
}

TEST_F(Names, RecordRefusesACodeThatFacesSeveral) {
  const auto refusal = [&](const std::string& states) {
    return kptdb({"record", "-", "--name", "x", "-o", "x.xml"},
                 R"({"event":"associate_fsm","reference":["a"],"transformed":["p"],"states":)" + states + "}\n");
  };
  EXPECT_EQ(refusal(R"([["0","0"],["0","1"]])").exit_code, 1);
  EXPECT_EQ(refusal(R"([["0","0"],["0","1"]])").err,
            "kptdb: -:1: refused: associate state machine a with p: the reference code 0 faces the transformed codes 0 "
            "and 1\n");
  EXPECT_THAT(refusal(R"([["0","1"],["1","1"]])").err,
              HasSubstr("the transformed code 1 faces the reference codes 0 and 1\n"));
  EXPECT_EQ(refusal(R"([["0","1"],["0","1"]])").exit_code, 0);
}

}  // namespace
