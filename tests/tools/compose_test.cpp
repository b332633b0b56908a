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
  EXPECT_THAT(good({"show", "all.xml", "q"}), HasSubstr("stuck_at_one"));
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

}  // namespace
