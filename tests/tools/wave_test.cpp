// wave: a dump of the netlist under the names of the source.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::HasSubstr;
using JSON = nlohmann::json;

std::string kept(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}

std::string inverted(const std::string& r, const std::string& t) {
  return kept(r, t) + R"({"event":"retime_inverter","register":")" + t + "\"}\n";
}

const char* const MACHINE = R"({"event":"associate_fsm","reference":["s[1]","s[0]"],"transformed":["h0","h1","h2"],)"
                            R"("states":[["00","100"],["01","010"],["10","001"]]})"
                            "\n";

class Wave : public TOOL_TEST {
 protected:
  /// A dump with these variables in scope tb.dut, and these values.
  std::string dump(const std::string& variables, const std::string& values) const {
    return write("gate.vcd", "$timescale 1 ns $end\n$scope module tb $end\n$scope module dut $end\n" + variables +
                                 "$upscope $end\n$upscope $end\n$enddefinitions $end\n" + values);
  }
  /// The text after the header of the result, with blanks for line ends.
  std::string shown(const std::string& more = "") const {
    const RUN_RESULT result = shell("\"$KPTDB\" wave d.xml gate.vcd --scope tb.dut -o rtl.vcd " + more + " >report");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    std::string text = read("rtl.vcd");
    text.erase(0, text.find("$enddefinitions $end\n") + 21);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }
  std::string header() const {
    const std::string text = read("rtl.vcd");
    return text.substr(0, text.find("$enddefinitions"));
  }
  RUN_RESULT failed() const { return kptdb({"wave", "d.xml", "gate.vcd", "--scope", "tb.dut", "-o", "rtl.vcd"}); }
};

TEST_F(Wave, JoinsTheBitsOfAVectorAndTurnsInvertedOnes) {
  record("d.xml", kept("q[0]", "a") + inverted("q[1]", "b") + kept("q[2]", "c"));
  dump("$var wire 1 ! a $end\n$var wire 1 \" b $end\n$var wire 1 # c $end\n", "#0\n0!\n0\"\n0#\n#5\n1!\n1\"\n#9\n");
  EXPECT_EQ(shown(), "#0 $dumpvars b010 ! $end #5 b001 ! #9 ");
  EXPECT_THAT(header(), HasSubstr("$var reg 3 ! q [2:0] $end"));
}

TEST_F(Wave, MakesTwoVectorsOfOneWithAGap) {
  record("d.xml", kept("q[0]", "a") + kept("q[2]", "b"));
  dump("$var wire 1 ! a $end\n$var wire 1 \" b $end\n", "#0\n0!\n1\"\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! 0\" $end ");
  EXPECT_THAT(header(), HasSubstr("$var reg 1 ! q [2] $end\n$var reg 1 \" q [0] $end"));
}

TEST_F(Wave, BuildsTheHierarchyOfTheNames) {
  record("d.xml", kept("u1.u2.q", "a") + kept("u1.r", "b"));
  dump("$var wire 1 ! a $end\n$var wire 1 \" b $end\n", "#0\n");
  shown("--to-scope top");
  EXPECT_THAT(header(), HasSubstr("$scope module top $end\n$scope module u1 $end\n$var reg 1 ! r $end\n"
                                  "$scope module u2 $end\n$var reg 1 \" q $end\n$upscope $end\n$upscope $end\n"
                                  "$upscope $end\n"));
}

TEST_F(Wave, FindsAnInstanceByItsPin) {
  record("d.xml", R"({"event":"associate","reference":"q","transformed":{"name":"u1._3_","entity":"DFF","type":"Q"}})"
                  "\n");
  dump(
      "$scope module u1 $end\n$scope module _3_ $end\n$var wire 1 ! Q $end\n$var wire 1 \" D $end\n"
      "$upscope $end\n$upscope $end\n",
      "#0\n1!\n0\"\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! $end ");
}

TEST_F(Wave, ShowsConstantsAndRepeatsMergedRegisters) {
  record("d.xml", kept("a", "ta") + kept("b", "tb") + kept("c", "tc") +
                      "{\"event\":\"merge\",\"kept\":\"ta\",\"merged\":\"tb\"}\n"
                      "{\"event\":\"eliminate\",\"register\":\"tc\",\"reason\":\"stuck_at_one\"}\n");
  dump("$var wire 1 ! ta $end\n", "#0\n0!\n#3\n1!\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 0! 0\" 1# $end #3 1! 1\" ");
}

TEST_F(Wave, LeavesRegistersWithoutASuccessorOutOrShowsThemAsX) {
  record("d.xml", kept("a", "ta") + kept("b", "tb") +
                      "{\"event\":\"eliminate\",\"register\":\"tb\",\"reason\":\"no_fanout\"}\n");
  dump("$var wire 1 ! ta $end\n", "#0\n0!\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 0! $end ");
  EXPECT_THAT(read("report"), HasSubstr("  1 without a successor\n"));
  EXPECT_EQ(shown("--with-unknown"), "#0 $dumpvars 0! x\" $end ");
}

TEST_F(Wave, ShowsOnlyWhatMatches) {
  record("d.xml", kept("a", "ta") + kept("b", "tb"));
  dump("$var wire 1 ! ta $end\n$var wire 1 \" tb $end\n", "#0\n0!\n1\"\n");
  EXPECT_EQ(shown("--only 'b*'"), "#0 $dumpvars 1! $end ");
}

TEST_F(Wave, DecodesAMachineAndCountsUnknownCodes) {
  record("d.xml", MACHINE);
  dump("$var wire 1 ! h0 $end\n$var wire 1 \" h1 $end\n$var wire 1 # h2 $end\n",
       "#0\n1!\n0\"\n0#\n#10\n0!\n1\"\n#20\n1#\n#30\n0\"\n#40\nx#\n");
  EXPECT_EQ(shown(), "#0 $dumpvars b00 ! $end #10 b01 ! #20 bxx ! #30 b10 ! #40 bxx ! ");
  EXPECT_THAT(read("report"), HasSubstr("  a state machine had a code that its table does not list: 1 time, "
                                        "first s[1] at 20\n"));
}

// Only what the other columns leave open is x.
TEST_F(Wave, DecodesAMachineOfWhichTheDumpLacksARegister) {
  record("d.xml", MACHINE);
  dump("$var wire 1 ! h0 $end\n", "#0\n1!\n#5\n0!\n");
  EXPECT_EQ(shown(), "#0 $dumpvars b00 ! $end #5 bxx ! ");
}

TEST_F(Wave, ShowsXWhereReplicasDisagreeAndSaysSo) {
  record("d.xml", kept("a", "t") + "{\"event\":\"replicate\",\"register\":\"t\",\"replica\":\"t2\"}\n");
  dump("$var wire 1 ! t $end\n$var wire 1 \" t2 $end\n", "#0\n0!\n0\"\n#5\n1!\n1\"\n#6\n0!\n#7\n0\"\n#8\nx\"\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 0! $end #5 1! #6 x! #7 0! #8 ");
  EXPECT_THAT(read("report"), HasSubstr("  copies of a register disagreed: 1 time, first a at 6\n"));
}

TEST_F(Wave, ShowsWhatATimeEndsWith) {
  record("d.xml", kept("a", "t"));
  dump("$var wire 1 ! t $end\n", "#0\n0!\n#5\n1!\n0!\n#5\n1!\n0!\n#8\n1!\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 0! $end #8 1! ");
}

TEST_F(Wave, KeepsXAndZ) {
  record("d.xml", kept("a", "t") + inverted("b", "u"));
  dump("$var wire 1 ! t $end\n$var wire 1 \" u $end\n", "#0\nz!\nz\"\n#5\nx!\n1\"\n");
  EXPECT_EQ(shown(), "#0 $dumpvars z! x\" $end #5 x! 0\" ");
}

TEST_F(Wave, ReadsVectorsOfEitherDirectionShortValuesAndAliases) {
  record("d.xml", kept("a", "v[6]") + kept("b", "up[1]") + kept("c", "alias"));
  dump("$var wire 8 ! v [7:0] $end\n$var wire 4 \" up[0:3] $end\n$var wire 1 # alias $end\n$var wire 1 # other $end\n",
       "#0\nb1000000 !\nb100 \"\n1#\n#1\nbx !\nbz00 \"\n#2\nb1 !\nb0 \"\n#3\nB01000000 !\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! 1\" 1# $end #1 x! z\" #2 0! 0\" #3 1! ");
}

TEST_F(Wave, KnowsFlattenedEscapedAndSingleBitsByTheSameName) {
  record("d.xml", kept("a", "u.q") + kept("b", "w[3]") + kept("c", "m[1][2]") + kept("d", "x[0]"));
  dump(
      "$var wire 1 ! \\u.q $end\n$var wire 1 \" \\w[3] $end\n$var wire 4 # \\m[1] [3:0] $end\n"
      "$var wire 1 $ x [0] $end\n",
      "#0\n1!\n1\"\nb100 #\n1$\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! 1\" 1# 1$ $end ");
}

TEST_F(Wave, TakesNoSignalWhoseNameStandsForTwo) {
  record("d.xml", kept("a", "u.q") + kept("b", "t"));
  dump("$var wire 1 ! \\u.q $end\n$scope module u $end\n$var wire 1 \" q $end\n$upscope $end\n$var wire 1 # t $end\n",
       "#0\n1!\n0\"\n1#\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! $end ");
  EXPECT_THAT(read("report"), HasSubstr("  1 ambiguous"));
}

TEST_F(Wave, PassesOverNumbersTextsCommentsAndWhatProgramsAdd) {
  record("d.xml", kept("a", "t"));
  dump(
      "$attrbegin misc 02 x 1 $end\n$var real 64 ! r $end\n$var wire 1 \" t $end\n$var string 1 # s $end\n"
      "$var event 1 $ e $end\n$var parameter 32 % P $end\n",
      "$comment #7 1! $end\n#0\n$dumpvars\nr1.5 !\n1\"\nshello #\n1$\nb11 %\n$end\n#4\n$dumpoff\nrNaN !\nx\"\n$end\n"
      "#9\n$dumpon\n1\"\n$end\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! $end #4 x! #9 1! ");
}

TEST_F(Wave, ReadsIdentifiersOfAnyLength) {
  record("d.xml", kept("a", "t") + kept("b", "u"));
  dump("$var wire 1 ~~~~~~~~~~~~~~~~~~~~~~~~ t $end\n$var wire 1 ~~~ u $end\n",
       "#0\n1~~~~~~~~~~~~~~~~~~~~~~~~\n0~~~\n");
  EXPECT_EQ(shown(), "#0 $dumpvars 1! 0\" $end ");
}

TEST_F(Wave, ReadsAPipeAndWhatGzipPacked) {
  record("d.xml", kept("a", "t"));
  dump("$var wire 1 ! t $end\n", "#0\n1!\n");
  const std::string plain = shown();
  EXPECT_EQ(shell("gzip -k gate.vcd && \"$KPTDB\" wave d.xml gate.vcd.gz --scope tb.dut >gz.vcd 2>report && "
                  "cat gate.vcd | \"$KPTDB\" wave d.xml - --scope tb.dut >pipe.vcd 2>report && "
                  "cmp gz.vcd rtl.vcd && cmp pipe.vcd rtl.vcd")
                .exit_code,
            0);
}

TEST_F(Wave, SaysWhatItWroteAsJson) {
  record("d.xml", kept("a", "t") + kept("b", "gone"));
  dump("$var wire 1 ! t $end\n", "#0\n1!\n");
  const JSON json = JSON::parse(good({"wave", "d.xml", "gate.vcd", "--scope", "tb.dut", "-o", "rtl.vcd", "--json"}));
  EXPECT_EQ(json["registers"], 1);
  EXPECT_EQ(json["from_the_dump"], 1);
  EXPECT_EQ(json["not_in_the_dump"], 1);
  EXPECT_EQ(json["unknown_codes"]["count"], 0);
}

TEST_F(Wave, RefusesADumpWithoutAnyOfTheRegisters) {
  record("d.xml", kept("a", "t"));
  dump("$var wire 1 ! other $end\n", "#0\n");
  const RUN_RESULT result = failed();
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("gate.vcd: it has none of the registers of d.xml in scope tb.dut; see --scope"));
  EXPECT_FALSE(exists("rtl.vcd"));
}

TEST_F(Wave, NamesTheScopesWhenThereIsNoneOfThatName) {
  record("d.xml", kept("a", "t"));
  dump("$var wire 1 ! t $end\n", "#0\n");
  const RUN_RESULT result = kptdb({"wave", "d.xml", "gate.vcd", "--scope", "tb.dtu"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_THAT(result.err, HasSubstr("gate.vcd: no scope tb.dtu; the first ones are tb, tb.dut"));
}

struct MALFORMED {
  const char* name;
  const char* dump;
  const char* reason;
};

class MalformedDump : public Wave, public testing::WithParamInterface<MALFORMED> {};

TEST_P(MalformedDump, IsRefusedWithItsLine) {
  record("d.xml", kept("a", "t"));
  write("gate.vcd", GetParam().dump);
  const RUN_RESULT result = kptdb({"wave", "d.xml", "gate.vcd", "-o", "rtl.vcd"});
  EXPECT_EQ(result.exit_code, 3) << result.err;
  EXPECT_THAT(result.err, HasSubstr(GetParam().reason));
  EXPECT_FALSE(exists("rtl.vcd"));
}

#define T_HEADER "$var wire 1 ! t $end\n$enddefinitions $end\n"
INSTANTIATE_TEST_SUITE_P(
    Dumps, MalformedDump,
    testing::Values(MALFORMED{"Empty", "", "gate.vcd:1: the file ends within the header"},
                    MALFORMED{"NoDump", "library x;\n", "gate.vcd:1: no declaration: library"},
                    MALFORMED{"OpenVariable", "$var wire 1 ! t\n$var wire 1 \" u $end\n",
                              "gate.vcd:2: a declaration without $end before $var"},
                    MALFORMED{"NoSize", "$var wire one ! t $end\n", "gate.vcd:1: no size of a variable: one"},
                    MALFORMED{"WrongRange", "$var wire 4 ! t [7:0] $end\n",
                              "gate.vcd:1: the range [7:0] is not one of 4 bits"},
                    MALFORMED{"TwoSizes", "$var wire 4 ! t $end\n$var wire 2 ! u $end\n",
                              "gate.vcd:2: the identifier ! has 4 bits elsewhere"},
                    MALFORMED{"Upscope", "$upscope $end\n", "gate.vcd:1: $upscope outside of every scope"},
                    MALFORMED{"Undeclared", T_HEADER "#0\n1?\n", "gate.vcd:4: no variable has the identifier ?"},
                    MALFORMED{"NoIdentifier", T_HEADER "#0\n1\n", "gate.vcd:4: a value without an identifier"},
                    MALFORMED{"TooLong", T_HEADER "#0\nb01 !\n", "gate.vcd:4: a value of 2 bits for a signal of 1"},
                    MALFORMED{"NoBit", T_HEADER "#0\nb2 !\n", "gate.vcd:4: no bit: 2"},
                    MALFORMED{"EmptyVector", T_HEADER "#0\nb !\n", "gate.vcd:4: a value of 0 bits"},
                    MALFORMED{"CutOff", T_HEADER "#0\nb1", "gate.vcd:4: the file ends within a value"},
                    MALFORMED{"NoTime", T_HEADER "#zero\n", "gate.vcd:3: no time: #zero"},
                    MALFORMED{"Backwards", T_HEADER "#5\n#4\n", "gate.vcd:4: time runs back from 5 to 4"},
                    MALFORMED{"Extended", T_HEADER "#0\npD 6 0 !\n", "gate.vcd:4: this is an extended dump of ports"},
                    MALFORMED{"NoValue", T_HEADER "#0\nhello\n", "gate.vcd:4: no variable has the identifier ello"},
                    MALFORMED{"HugeTime", T_HEADER "#99999999999999999999\n", "gate.vcd:3: no time"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(Wave, RefusesPackedDataThatIsCutOff) {
  record("d.xml", kept("a", "t"));
  dump("$var wire 1 ! t $end\n", "#0\n1!\n");
  const RUN_RESULT result = shell(
      "gzip gate.vcd && head -c 60 gate.vcd.gz >cut.gz && \"$KPTDB\" wave d.xml cut.gz --scope tb.dut -o rtl.vcd");
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_THAT(result.err, HasSubstr("cut.gz: it ends within packed data"));
}

}  // namespace
