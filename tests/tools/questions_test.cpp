// info, show and list: questions about one database.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using JSON = nlohmann::json;

class Questions : public TOOL_TEST {
 protected:
  void SetUp() override { record("d.xml", DESIGN); }
  JSON json(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    return JSON::parse(good(arguments));
  }
  JSON answer(const std::string& name) const { return json({"show", "d.xml", name})["registers"][0]; }
};

TEST_F(Questions, InfoCountsRegistersMapsAndAnswers) {
  const JSON info = json({"info", "d.xml"});
  EXPECT_EQ(info["name"], "design");
  EXPECT_EQ(info["registers"]["reference"], JSON::parse(R"({"signals":7,"instances":1})"));
  EXPECT_EQ(info["registers"]["transformed"], JSON::parse(R"({"signals":6,"instances":1})"));
  EXPECT_EQ(info["maps"]["1:1"], 1);
  EXPECT_EQ(info["maps"]["n:m"], 2);
  EXPECT_EQ(info["maps"]["fsm"], 1);
  EXPECT_EQ(info["maps"]["open"], 0);
  EXPECT_EQ(info["maps"]["eliminated"]["stuck_at_zero"], 1);
  EXPECT_EQ(info["maps"]["eliminated"]["no_fanout"], 1);
  EXPECT_EQ(info["maps"]["eliminated"]["stuck_at_one"], 0);
  EXPECT_EQ(info["coverage"], JSON::parse(R"({"mapped":4,"machine":2,"constant":1,"without_fanout":1,"unknown":0})"));
  EXPECT_FALSE(info.contains("memory"));
}

TEST_F(Questions, InfoIsATableForPeople) {
  const std::string text = good({"info", "d.xml"});
  EXPECT_THAT(text, HasSubstr("database design\n"));
  EXPECT_THAT(text, ContainsRegex("reference +7 +1 +8\n"));
  EXPECT_THAT(text, ContainsRegex("eliminated stuck_at_zero +1\n"));
  EXPECT_THAT(
      text,
      ContainsRegex(
          "mapped +4 +50.0%\nmachine +2 +25.0%\nconstant +1 +12.5%\nwithout fanout +1 +12.5%\nunknown +0 +0.0%\n"));
  EXPECT_THAT(text, Not(HasSubstr("peak")));
}

TEST_F(Questions, InfoShowsMemoryByType) {
  EXPECT_THAT(good({"info", "d.xml", "--memory"}), HasSubstr("peak bytes"));
  const JSON memory = json({"info", "d.xml", "--memory"})["memory"];
  ASSERT_FALSE(memory.empty());
  EXPECT_TRUE(memory[0].contains("type"));
  EXPECT_GE(memory[0]["peak_bytes"], memory[0]["live_bytes"]);
}

// The status of a machine is about its first reference register. Its code tells that q is 1 and p is 0.
TEST_F(Questions, ConstantOfAMachineIsNotTakenForThatOfItsSuccessors) {
  record("c.xml", R"({"event":"map","reference":[{"same":["a"]}],"transformed":[{"same":["p"]},{"same":["q"]}],)"
                  R"("states":[["1","01"]],"status":"stuck_at_one"})"
                  "\n");
  EXPECT_THAT(good({"show", "c.xml", "a"}), HasSubstr("constant 1"));
  EXPECT_THAT(good({"show", "c.xml", "p", "q"}), Not(HasSubstr("constant")));
  EXPECT_EQ(json({"list", "c.xml", "--side", "transformed", "--fate", "machine"})["registers"].size(), 2U);
}

TEST_F(Questions, InfoOfADatabaseWithoutRegistersHasNoShares) {
  record("empty.xml", "");
  EXPECT_THAT(good({"info", "empty.xml"}), ContainsRegex("mapped +0 +-\n"));
}

TEST_F(Questions, ShowTellsOfAReplicatedAndRetimedRegister) {
  const JSON count = answer("count[0]");
  EXPECT_EQ(count["side"], "reference");
  EXPECT_EQ(count["partners"], JSON::parse(R"([{"name":"count_reg[0]"}])"));
  EXPECT_EQ(count["inverted_partners"], JSON::parse(R"([{"name":"count_dup"}])"));
  EXPECT_EQ(count["unateness"], JSON::parse(R"(["positive"])"));
  EXPECT_EQ(answer("count_dup")["inverted_partners"], JSON::parse(R"([{"name":"count[0]"}])"));
  EXPECT_EQ(answer("count_dup")["inverted_equivalents"], JSON::parse(R"([{"name":"count_reg[0]"}])"));
  EXPECT_THAT(good({"show", "d.xml", "count[0]"}),
              HasSubstr("transformed with the same value: count_reg[0]\n  transformed with the inverse: count_dup\n"));
}

TEST_F(Questions, ShowTellsOfMergedRegisters) {
  EXPECT_EQ(answer("carry")["equivalents"], JSON::parse(R"([{"name":"count[1]"}])"));
  EXPECT_EQ(answer("carry")["partners"], JSON::parse(R"([{"name":"count_reg[1]"}])"));
  EXPECT_THAT(good({"show", "d.xml", "carry"}), HasSubstr("kept in a group\n"));
}

TEST_F(Questions, ShowTellsWhyARegisterWent) {
  EXPECT_EQ(answer("zero")["fate"], "constant");
  EXPECT_EQ(answer("zero")["map"]["elimination"], "stuck_at_zero");
  EXPECT_THAT(good({"show", "d.xml", "spare"}), HasSubstr("\n  without fanout\n"));
}

TEST_F(Questions, AConstantIsTheValueOfTheRegisterItself) {
  record("m.xml",
         R"({"event":"map","reference":[{"same":["p"],"inverse":["q"]}],"transformed":[],"status":"stuck_at_one"})"
         "\n");
  EXPECT_THAT(good({"show", "m.xml", "p"}), HasSubstr("\n  constant 1\n"));
  EXPECT_THAT(good({"show", "m.xml", "q"}), HasSubstr("\n  constant 0\n"));
  EXPECT_THAT(good({"list", "m.xml"}), ContainsRegex(" p +always 1\n.* q +always 0\n"));
}

TEST_F(Questions, ShowSaysWhyARegisterIsUnknown) {
  std::string text = read("d.xml");
  const std::string status = "elim_type=\"no_fanout\"";
  ASSERT_NE(text.find(status), std::string::npos);
  write("open.xml", std::string(text).replace(text.find(status), status.size(), "elim_type=\"not_eliminated\""));
  EXPECT_THAT(good({"show", "open.xml", "spare"}),
              HasSubstr("\n  unknown: its map lists no transformed register and gives no reason\n"));
  write("bare.xml", std::string(text).replace(text.find(status), status.size(), "elim_type=\"eliminated\""));
  EXPECT_THAT(good({"show", "bare.xml", "spare"}),
              HasSubstr("\n  unknown: it was eliminated, and no reason is given\n"));
  write("lost.xml", text.insert(text.find("</key_points_set>"),
                                "<key_point id=\"90\" type=\"register\"><name>lost</name></key_point>\n"));
  EXPECT_THAT(good({"show", "lost.xml", "lost"}), HasSubstr("\n  unknown: no map lists it\n"));
}

TEST_F(Questions, ShowHasTheStateTableAsATable) {
  const std::string text = good({"show", "d.xml", "state[0]"});
  EXPECT_THAT(text, HasSubstr("transformed state registers: s[0], s[1], s[2]\n"));
  EXPECT_THAT(text, HasSubstr("reference columns: state[1], state[0]\n"));
  EXPECT_THAT(text, ContainsRegex("state +reference +transformed\n +0 +00 +100\n +1 +01 +010\n +2 +10 +001\n"));
  EXPECT_EQ(answer("state[0]")["index"], 1);
  EXPECT_EQ(answer("state[0]")["map"]["states"], JSON::parse(R"([["00","100"],["01","010"],["10","001"]])"));
}

TEST_F(Questions, ShowFindsBlockInstancesAndBothSides) {
  EXPECT_THAT(good({"show", "d.xml", "u1/q"}),
              HasSubstr("reference register u1/q (u1, dff), id 5\n  kept one to one\n"));
  EXPECT_EQ(json({"show", "d.xml", "u1/q"})["registers"].size(), 2U);
  EXPECT_EQ(json({"show", "d.xml", "u1/q", "--side", "transformed"})["registers"].size(), 1U);
}

TEST_F(Questions, ShowNamesARegisterThatIsClose) {
  const RUN_RESULT result = kptdb({"show", "d.xml", "conut[0]"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "kptdb: d.xml: no register conut[0]; did you mean count[0]?\n");
  EXPECT_EQ(kptdb({"show", "d.xml", "nothing_of_the_kind"}).err, "kptdb: d.xml: no register nothing_of_the_kind\n");
  EXPECT_EQ(kptdb({"show", "d.xml", "carry", "--side", "transformed"}).exit_code, 1);
  const RUN_RESULT as_json = kptdb({"show", "d.xml", "conut[0]", "--json"});
  EXPECT_EQ(as_json.exit_code, 1);
  EXPECT_EQ(JSON::parse(as_json.out),
            JSON::parse(R"({"format":1,"registers":[],"missing":[{"name":"conut[0]","close":"count[0]"}]})"));
}

TEST_F(Questions, ListFiltersBySideKindFateAndName) {
  const auto count = [&](std::vector<std::string> filters) {
    filters.insert(filters.begin(), {"list", "d.xml"});
    return json(filters)["registers"].size();
  };
  EXPECT_EQ(count({}), 15U);
  EXPECT_EQ(count({"--side", "reference"}), 8U);
  EXPECT_EQ(count({"--kind", "instance"}), 2U);
  EXPECT_EQ(count({"--fate", "constant"}), 1U);
  EXPECT_EQ(count({"--status", "unknown"}), 0U);
  EXPECT_EQ(count({"--name", "count*"}), 5U);
  EXPECT_EQ(count({"--name", "count[?]"}), 2U);
  EXPECT_EQ(count({"--name", "*[0]", "--side", "reference", "--status", "mapped"}), 1U);
}

TEST_F(Questions, ListIsATableForPeople) {
  EXPECT_THAT(good({"list", "d.xml", "--name", "zero"}),
              ContainsRegex("reference +signal +constant +eliminated +zero +always 0\n"));
  EXPECT_THAT(good({"list", "d.xml", "--name", "count[0]"}), HasSubstr("count_reg[0], count_dup\n"));
}

TEST_F(Questions, JsonNamesTheKindOfMap) {
  const JSON entry = json({"list", "d.xml", "--name", "state[1]"})["registers"][0];
  EXPECT_EQ(entry["map"], "fsm");
  EXPECT_EQ(entry["partners"].size(), 3U);
}

TEST_F(Questions, WrongUseIs2) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"forget"},
                                             {"info"},
                                             {"info", "d.xml", "e.xml"},
                                             {"info", "d.xml", "--loud"},
                                             {"show", "d.xml"},
                                             {"show", "d.xml", "x", "--side", "left"},
                                             {"list", "d.xml", "--fate", "lost"},
                                             {"diff", "d.xml"},
                                             {"unite", "d.xml", "-o", "x.xml"},
                                             {"unite", "d.xml", "d.xml"},
                                             {"record", "d.xml"},
                                             {"export", "d.xml"},
                                             {"export", "d.xml", "--format", "pdf"}}) {
    const RUN_RESULT result = kptdb(arguments);
    EXPECT_EQ(result.exit_code, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err, "");
  }
}

TEST_F(Questions, HelpAndVersionAreDone) {
  EXPECT_THAT(good({"--help"}), HasSubstr("Exit codes"));
  EXPECT_THAT(good({"record", "--help"}), HasSubstr("--keep-going"));
  EXPECT_THAT(good({"--version"}), HasSubstr("kptdb "));
}

TEST_F(Questions, SaysWhenStandardOutputIsFull) {
  const RUN_RESULT result = shell("\"$KPTDB\" info d.xml >/dev/full");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("standard output: not written"));
}

}  // namespace
