// audit: compares claims with two simulations.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::HasSubstr;
using JSON = nlohmann::json;

std::string kept(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}

// Clock "c" and the signals a, b, each with one value in each period: the clock
// rises at 10, 20 and so on, and values change just after it.
std::string periods(const std::string& timescale, int unit, const std::string& name_a, const std::string& a,
                    const std::string& name_b, const std::string& b) {
  std::string text = "$timescale " + timescale + " $end\n$var wire 1 ! c $end\n$var wire 1 \" " + name_a +
                     " $end\n$var wire 1 # " + name_b + " $end\n$enddefinitions $end\n#0\n0!\n";
  for (std::size_t k = 0; k < a.size(); ++k) {
    const auto time = [&](std::size_t at) { return "#" + std::to_string(at * static_cast<std::size_t>(unit)) + "\n"; };
    text += time(10 * k + 1) + a[k] + "\"\n" + b[k] + "#\n" + time(10 * k + 5) + "0!\n" + time(10 * k + 10) + "1!\n";
  }
  return text;
}

class Audit : public TOOL_TEST {
 protected:
  void rtl(const std::string& a, const std::string& b) const { write("rtl.vcd", periods("1 ns", 1, "a", a, "b", b)); }
  void gate(const std::string& t, const std::string& u) const { write("gate.vcd", periods("1 ns", 1, "t", t, "u", u)); }
  RUN_RESULT audit(std::vector<std::string> more = {"--clock", "c"}) const {
    more.insert(more.begin(), {"audit", "d.xml", "rtl.vcd", "gate.vcd"});
    return kptdb(more);
  }
};

TEST_F(Audit, HoldsWhereTheValuesAgree) {
  record("d.xml", kept("a", "t") + kept("b", "u") + "{\"event\":\"retime_inverter\",\"register\":\"u\"}\n");
  rtl("x0110", "x0011");
  gate("x0110", "x1100");
  const RUN_RESULT result = audit();
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out, "d.xml: 2 claims at 5 moments: 2 checked, 0 violated\n");
}

TEST_F(Audit, TellsTheFirstViolationOfEachClaim) {
  record("d.xml", kept("a", "t") + kept("b", "u") + "{\"event\":\"retime_inverter\",\"register\":\"u\"}\n");
  rtl("0110", "0111");
  gate("0100", "1011");
  const RUN_RESULT result = audit();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out,
            "a: same as t: violated at 30 ns: 1 and 0\n"
            "b: inverse of u: violated at 30 ns: 1 and 1\n"
            "d.xml: 2 claims at 4 moments: 2 checked, 2 violated\n");
}

TEST_F(Audit, ChecksConstants) {
  record("d.xml", kept("a", "t") + kept("b", "u") +
                      "{\"event\":\"eliminate\",\"register\":\"t\",\"reason\":\"stuck_at_one\"}\n");
  rtl("x101", "0101");
  gate("0000", "0101");
  EXPECT_THAT(audit().out, HasSubstr("a: constant 1: violated at 30 ns: 0\n"));
}

TEST_F(Audit, ChecksTheCodesOfMachines) {
  record("d.xml",
         R"({"event":"associate_fsm","reference":["a"],"transformed":["t","u"],"states":[["0","10"],["1","01"]]})"
         "\n");
  rtl("x011", "0000");
  gate("x100", "x010");
  EXPECT_EQ(audit().out,
            "a: codes with t u: violated at 40 ns: 1 and 00\n"
            "d.xml: 1 claim at 4 moments: 1 checked, 1 violated\n");
}

TEST_F(Audit, ChecksReplicasAgainstTheSource) {
  record("d.xml", kept("a", "t") + "{\"event\":\"replicate\",\"register\":\"t\",\"replica\":\"u\"}\n");
  rtl("0101", "0000");
  gate("0101", "0111");
  EXPECT_THAT(audit().out, HasSubstr("u: same as a: violated at 30 ns: 1 and 0\n"));
}

TEST_F(Audit, SaysWhatWasNeverKnownNeverChangedAndNeverFound) {
  record("d.xml", kept("a", "t") + kept("b", "u") + kept("gone", "gone_too"));
  rtl("xxxx", "1111");
  gate("0101", "1111");
  EXPECT_EQ(audit().out,
            "d.xml: 2 claims at 4 moments: 1 checked, 0 violated\n"
            "  1 never known in both dumps\n"
            "  1 held without ever changing: weak evidence\n"
            "  2 registers not in the dumps\n");
}

TEST_F(Audit, RefusesToPassWhenNothingWasChecked) {
  record("d.xml", kept("a", "t"));
  rtl("xxxx", "1111");
  gate("0101", "1111");
  const RUN_RESULT result = audit();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("nothing was checked"));
}

// The edge itself changes registers; their values before it count.
TEST_F(Audit, LooksJustBeforeEachEdge) {
  record("d.xml", kept("a", "t"));
  const std::string header =
      "$timescale 1 ns $end\n$var wire 1 ! c $end\n$var wire 1 \" NAME $end\n$enddefinitions $end\n";
  std::string r = header;
  std::string t = header;
  r.replace(r.find("NAME"), 4, "a");
  t.replace(t.find("NAME"), 4, "t");
  write("rtl.vcd", r + "#0\n0!\n0\"\n#10\n1!\n1\"\n#15\n0!\n#20\n1!\n0\"\n");
  write("gate.vcd", t + "#0\n0!\n0\"\n#10\n1!\n#13\n1\"\n#15\n0!\n#20\n1!\n#23\n0\"\n");
  EXPECT_EQ(audit().out, "d.xml: 1 claim at 2 moments: 1 checked, 0 violated\n");
}

TEST_F(Audit, LooksAtFallingEdgesAtBothOrAtTimes) {
  record("d.xml", kept("a", "t"));
  rtl("0101", "0000");
  gate("0101", "0000");
  EXPECT_THAT(audit({"--clock", "c", "--edge", "falling"}).out, HasSubstr("at 3 moments"));
  EXPECT_THAT(audit({"--clock", "c", "--edge", "both"}).out, HasSubstr("at 7 moments"));
  EXPECT_THAT(audit({"--at", "12ns,22,1us"}).out, HasSubstr("at 2 moments"));
  EXPECT_THAT(audit({"--clock", "c", "--from", "25ns"}).out, HasSubstr("at 2 moments"));
}

TEST_F(Audit, ComparesTimesOfDifferentTimescales) {
  record("d.xml", kept("a", "t"));
  rtl("0101", "0000");
  write("gate.vcd", periods("100 ps", 10, "t", "0100", "u", "0000"));
  EXPECT_THAT(audit().out, HasSubstr("a: same as t: violated at 40 ns: 1 and 0\n"));
}

TEST_F(Audit, RefusesDumpsWhoseClocksDiffer) {
  record("d.xml", kept("a", "t"));
  rtl("0101", "0000");
  write("gate.vcd", periods("1 ns", 2, "t", "0101", "u", "0000"));
  const RUN_RESULT result = audit();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("the clocks of the dumps differ: an edge at 10 ns, the other at 20 ns"));
}

TEST_F(Audit, TakesTheClockOfTheSourceForANetlistWithoutOne) {
  record("d.xml", kept("a", "t"));
  rtl("0101", "0000");
  std::string dump = periods("1 ns", 1, "t", "0111", "u", "0000");
  dump.replace(dump.find(" c "), 3, " k ");
  write("gate.vcd", dump);
  EXPECT_THAT(audit().out, HasSubstr("a: same as t: violated at 30 ns: 0 and 1\n"));
}

TEST_F(Audit, SaysEverythingAsJson) {
  record("d.xml", kept("a", "t") + kept("b", "u"));
  rtl("0110", "0111");
  gate("0100", "0111");
  const JSON json = JSON::parse(audit({"--clock", "c", "--json"}).out);
  EXPECT_EQ(json["claims"], 2);
  EXPECT_EQ(json["checked"], 2);
  EXPECT_EQ(json["violations"].size(), 1U);
  EXPECT_EQ(json["violations"][0]["register"], "a");
  EXPECT_EQ(json["violations"][0]["claim"], "same as t");
  EXPECT_EQ(json["violations"][0]["time"], "30 ns");
  EXPECT_EQ(json["violations"][0]["values"], "1 and 0");
}

TEST_F(Audit, NeedsToKnowWhenToLook) {
  record("d.xml", kept("a", "t"));
  rtl("0110", "0111");
  gate("0100", "0111");
  EXPECT_EQ(audit({}).exit_code, 2);
  EXPECT_THAT(audit({}).err, HasSubstr("audit needs either --clock or --at"));
  EXPECT_THAT(audit({"--clock", "nosuch"}).err, HasSubstr("rtl.vcd: no signal nosuch"));
}

TEST_F(Audit, WritesTheStatusOfWhatItChecked) {
  record("d.xml", kept("a", "t") + kept("b", "u") + kept("gone", "gone_too"));
  rtl("0110", "0111");
  gate("0110", "0110");
  EXPECT_EQ(audit({"--clock", "c", "--write"}).exit_code, 1);
  const auto status = [&](const std::string& reg) {
    const std::string events = good({"export", "d.xml", "--format", "events"});
    const std::size_t at = events.find("\"" + reg + "\"");
    const std::string line = events.substr(at, events.find('\n', at) - at);
    const std::size_t word = line.find("\"status\":\"");
    return word == std::string::npos ? "" : line.substr(word + 10, line.find('"', word + 10) - word - 10);
  };
  EXPECT_EQ(status("a"), "claimed");
  EXPECT_EQ(status("b"), "refuted");
  EXPECT_EQ(status("gone"), "");
  // A pair that an audit refuted stays refuted after an audit of waves in which it holds.
  gate("0110", "0111");
  EXPECT_EQ(audit({"--clock", "c", "--write"}).exit_code, 0);
  EXPECT_EQ(status("b"), "refuted");
}

TEST_F(Audit, LeavesTheDatabaseAsItIsUnlessItIsToWrite) {
  record("d.xml", kept("a", "t"));
  const std::string before = read("d.xml");
  rtl("0110", "0000");
  gate("0110", "0000");
  EXPECT_EQ(audit().exit_code, 0);
  EXPECT_EQ(read("d.xml"), before);
}

// The column holds the value of the removed register and the inverse of the value of the remaining one.
TEST_F(Audit, DoesNotReadATableThatIsNotToBeRead) {
  record(
      "d.xml",
      R"({"event":"associate_fsm","reference":["a","b"],"transformed":["s","u"],"states":[["00","00"],["01","10"],["10","11"]]})"
      "\n"
      R"({"event":"replicate","register":"s","replica":"t"})"
      "\n"
      R"({"event":"retime_inverter","register":"t"})"
      "\n"
      R"({"event":"eliminate","register":"s","reason":"no_fanout"})"
      "\n");
  rtl("0010", "0100");
  gate("1001", "0010");
  const RUN_RESULT result = audit();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("nothing was checked"));
}

}  // namespace
