// compose and explain: what stages say together, and the path of one register through them.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::HasSubstr;
using JSON = nlohmann::json;

std::string associate(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}
std::string retime(const std::string& t) { return R"({"event":"retime_inverter","register":")" + t + "\"}\n"; }
std::string eliminate(const std::string& t, const std::string& reason) {
  return R"({"event":"eliminate","register":")" + t + R"(","reason":")" + reason + "\"}\n";
}

class Compose : public TOOL_TEST {
 protected:
  // The first stage inverts q, and the second finds it constant.
  void record_inverted_constant() const {
    record("1.xml", associate("p", "p1") + associate("q", "q1") + retime("q1"));
    record("2.xml", associate("p1", "p2") + associate("q1", "q2") + eliminate("q2", "stuck_at_zero"));
  }
};

TEST_F(Compose, TellsTheFitAndWhatBecameOfTheRegisters) {
  record_inverted_constant();
  EXPECT_EQ(good({"compose", "1.xml", "2.xml", "-o", "all.xml"}),
            "stage 2 starts from 2 registers, 2 of them known to stage 1\n"
            "all.xml: 2 stages composed; of the reference registers 1 constant, 0 machine, 1 mapped, 0 without "
            "fanout, 0 unknown\n");
  EXPECT_THAT(good({"show", "all.xml", "q"}), HasSubstr("constant 1"));
}

TEST_F(Compose, SaysSoAsJson) {
  record_inverted_constant();
  const JSON result = JSON::parse(good({"compose", "1.xml", "2.xml", "-o", "all.xml", "--json"}));
  EXPECT_EQ(result["registers"]["constant"], 1);
  EXPECT_EQ(result["registers"]["without_fanout"], 0);
  EXPECT_EQ(result["fits"][0], "stage 2 starts from 2 registers, 2 of them known to stage 1");
}

TEST_F(Compose, RefusesStagesInTheWrongOrderAndWritesNothing) {
  record_inverted_constant();
  const RUN_RESULT result = kptdb({"compose", "2.xml", "1.xml", "-o", "all.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err,
            "kptdb: stage 2 does not follow stage 1: stage 2 starts from 2 registers, 0 of them known to stage 1\n");
  EXPECT_FALSE(exists("all.xml"));
}

TEST_F(Compose, ExplainsTheWayOfARegister) {
  record_inverted_constant();
  EXPECT_EQ(good({"explain", "q", "1.xml", "2.xml"}),
            "stage 1: q becomes q1, inverted\n"
            "stage 2: q1 is always 0\n"
            "together: q is always 1\n"
            "q: constant\n");
}

TEST_F(Compose, ExplainsTheWayAsJson) {
  record_inverted_constant();
  EXPECT_EQ(JSON::parse(good({"explain", "q", "1.xml", "2.xml", "--json"})), JSON::parse(R"({
    "format": 1, "register": "q", "side": "reference", "fate": "constant",
    "steps": [
      {"stage": 1, "register": "q", "text": "q becomes q1, inverted", "registers": [{"register": "q1", "inverted": true}]},
      {"stage": 2, "register": "q1", "text": "q1 is always 0", "registers": []}],
    "together": {"register": "q", "text": "q is always 1", "registers": []}})"));
  const JSON back = JSON::parse(good({"explain", "q1", "1.xml", "--transformed", "--json"}));
  EXPECT_EQ(back["steps"][0]["registers"], JSON::parse(R"([{"register": "q", "inverted": true}])"));
  EXPECT_EQ(back["fate"], nullptr);
}

TEST_F(Compose, ExplainsTheWayBack) {
  record_inverted_constant();
  EXPECT_EQ(good({"explain", "p2", "1.xml", "2.xml", "--transformed"}),
            "stage 2: p2 comes from p1\n"
            "stage 1: p1 comes from p\n"
            "together: p2 comes from p\n");
}

TEST_F(Compose, ExplainsNoneOfTwoBlockInstancesOfOneName) {
  record("1.xml", R"({"event":"associate","reference":{"name":"u","entity":"e","type":"dff"},"transformed":"a"})"
                  "\n"
                  R"({"event":"associate","reference":{"name":"u","entity":"e","type":"latch"},"transformed":"b"})"
                  "\n");
  const RUN_RESULT result = kptdb({"explain", "u", "1.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "kptdb: several block instances are called u\n");
}

TEST_F(Compose, ExplainsAndRefusesStagesInTheWrongOrder) {
  record_inverted_constant();
  const RUN_RESULT result = kptdb({"explain", "p1", "2.xml", "1.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "stage 1: p1 becomes p2\nstage 2: p2 is not mentioned\n");
  EXPECT_EQ(result.err,
            "kptdb: stage 2 does not follow stage 1: stage 2 starts from 2 registers, 0 of them known to stage 1\n");
  EXPECT_EQ(kptdb({"explain", "p1", "2.xml", "1.xml", "--share", "0"}).exit_code, 0);
}

// A union is what it is; where it differs from what its stages say, it is told.
class UniteAgainstComposition : public Compose {};

TEST_F(UniteAgainstComposition, SaysNothingWhereItIsRight) {
  record("1.xml", associate("p", "p1") + associate("q", "q1"));
  record("2.xml", associate("p1", "p2") + associate("q1", "q2") + retime("q2"));
  EXPECT_EQ(good({"unite", "1.xml", "2.xml", "-o", "u.xml"}),
            "stage 2 starts from 2 registers, 2 of them known to stage 1\n"
            "u.xml: 2 stages united, 2 reference registers\n");
}

TEST_F(UniteAgainstComposition, WarnsOfAConstantOfTheWrongSense) {
  record_inverted_constant();
  EXPECT_EQ(good({"unite", "1.xml", "2.xml", "-o", "u.xml"}),
            "stage 2 starts from 2 registers, 2 of them known to stage 1\n"
            "warning: 1 reference register: the union and the stages say constant, and not the same; for example q: "
            "constant 0 against constant 1\n"
            "u.xml: 2 stages united, 2 reference registers\n");
  EXPECT_THAT(good({"show", "u.xml", "q"}), HasSubstr("constant 0"));
}

TEST_F(UniteAgainstComposition, CountsWhatItWarnsOf) {
  record("1.xml", associate("p", "p1") + associate("q", "q1") + associate("r", "r1"));
  record("2.xml", associate("p1", "p2"));
  const JSON result = JSON::parse(good({"unite", "1.xml", "2.xml", "-o", "u.xml", "--json"}));
  EXPECT_EQ(result["fits"][0], "stage 2 starts from 1 registers, 1 of them known to stage 1");
  EXPECT_EQ(
      result["warnings"],
      JSON::parse(
          R"(["2 reference registers: the union says mapped, the stages say unknown; for example q: mapped q1 against unknown",
                            "2 transformed registers: the union says mapped, the stages say not known; for example q1: mapped q against not known"])"));
}

TEST_F(UniteAgainstComposition, WarnsOfStagesThatContradictEachOther) {
  record("1.xml", R"({"event":"map","reference":[{"same":["p"]}],"transformed":[{"same":["a","b"]}]})"
                  "\n");
  record("2.xml", R"({"event":"map","reference":[{"same":["a"],"inverse":["b"]}],"transformed":[{"same":["c"]}]})"
                  "\n");
  EXPECT_THAT(
      good({"unite", "1.xml", "2.xml", "-o", "u.xml"}),
      HasSubstr("warning: the stages say nothing together: stages 1 and 2 say that these are equal and inverse"));
}

}  // namespace
