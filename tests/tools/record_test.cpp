// record: events become a database, and a refused event stops it with its line and the reason.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::json;

class Record : public TOOL_TEST {
 protected:
  // The message for the one event that is refused, after a good first line.
  std::string refusal(const std::string& event, int exit_code = 1) const {
    write("e.jsonl", R"({"event":"associate","reference":"a","transformed":"b"})"
                     "\n" +
                         event + "\n");
    const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml"});
    EXPECT_EQ(result.exit_code, exit_code);
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(exists("e.xml"));
    EXPECT_THAT(result.err, StartsWith("kptdb: e.jsonl:2: "));
    return result.err;
  }
};

TEST_F(Record, WritesWhatWasRecorded) {
  write("stage.jsonl", DESIGN);
  EXPECT_EQ(good({"record", "stage.jsonl", "-o", "stage.xml"}), "stage.xml: 12 events recorded\n");
  EXPECT_THAT(read("stage.xml"), StartsWith("<kpt_db name=\"stage\">\n"));
  EXPECT_THAT(names(), testing::ElementsAre("stage.jsonl", "stage.xml"));
}

TEST_F(Record, SaysSoAsJson) {
  write("stage.jsonl", DESIGN);
  const JSON json = JSON::parse(good({"record", "stage.jsonl", "-o", "stage.xml", "--json"}));
  EXPECT_EQ(json, JSON::parse(R"({"format":1,"recorded":12,"refused":[],"written":"stage.xml"})"));
}

TEST_F(Record, TakesTheNameItIsGiven) {
  write("stage.jsonl", DESIGN);
  good({"record", "stage.jsonl", "-o", "stage.xml", "--name", "top"});
  EXPECT_THAT(read("stage.xml"), StartsWith("<kpt_db name=\"top\">\n"));
}

TEST_F(Record, KeepsNamesThatXmlNeedsEscaped) {
  write("odd.jsonl", R"({"event":"associate","reference":"count<3>","transformed":"\"\u00e9\" & ]]>"})");
  good({"record", "odd.jsonl", "-o", "odd.xml"});
  EXPECT_THAT(read("odd.xml"), HasSubstr("<name>count&lt;3></name>"));
  EXPECT_THAT(read("odd.xml"), HasSubstr("<name>&quot;\xC3\xA9&quot; &amp; ]]&gt;</name>"));
  EXPECT_EQ(good({"check", "odd.xml"}), "odd.xml: no findings\n");
}

TEST_F(Record, NeedsANameForStandardInput) {
  EXPECT_EQ(kptdb({"record", "-", "-o", "x.xml"}, DESIGN).exit_code, 2);
  EXPECT_EQ(kptdb({"record", "-", "-o", "x.xml", "--name", "a\x01"}, DESIGN).exit_code, 2);
  EXPECT_EQ(kptdb({"record", "-", "-o", "x.xml", "--name", "x"}, DESIGN).exit_code, 0);
}

TEST_F(Record, PassesOverBlankLinesAndCarriageReturns) {
  write("e.jsonl", "\n{\"event\":\"associate\",\"reference\":\"a\",\"transformed\":\"b\"}\r\n\r\n  \n");
  EXPECT_EQ(good({"record", "e.jsonl", "-o", "e.xml"}), "e.xml: 1 event recorded\n");
}

TEST_F(Record, MakesAnEmptyDatabaseOfNoEvents) {
  write("e.jsonl", "");
  EXPECT_EQ(good({"record", "e.jsonl", "-o", "e.xml"}), "e.xml: 0 events recorded\n");
  EXPECT_EQ(good({"check", "e.xml"}), "e.xml: no findings\n");
}

// When the library gives a reason, its own words are printed.
TEST_F(Record, GivesTheLibrarysReason) {
  EXPECT_THAT(refusal(R"({"event":"replicate","register":"x","replica":"y"})"),
              HasSubstr("refused: replicate x as y: x does not exist in T"));
  EXPECT_THAT(refusal(R"({"event":"replicate","register":"b","replica":"b"})"), HasSubstr(": b already exists in T"));
  EXPECT_THAT(refusal(R"({"event":"merge","kept":"b","merged":"x"})"),
              HasSubstr("refused: merge x into b: Error: Can't find x in T set"));
  EXPECT_THAT(refusal(R"({"event":"retime_inverter","register":"x"})"), HasSubstr("Error: Can't find x in T set"));
}

// When it gives none, the tool finds a reason itself.
TEST_F(Record, FindsAReasonWhereTheLibraryIsSilent) {
  EXPECT_THAT(refusal(R"({"event":"associate","reference":"a","transformed":"c"})"),
              HasSubstr("refused: associate a with c: the reference register a exists already"));
  EXPECT_THAT(refusal(R"({"event":"associate","reference":"c","transformed":"b"})"),
              HasSubstr("the transformed register b exists already"));
  EXPECT_THAT(refusal(R"({"event":"associate_fsm","reference":["c"],"transformed":["b"],"states":[["0","1"]]})"),
              HasSubstr("the transformed register b exists already"));
  EXPECT_THAT(refusal(R"({"event":"eliminate","register":"x","reason":"no_fanout"})"),
              HasSubstr("there is no transformed signal register x"));
  EXPECT_THAT(refusal(R"({"event":"eliminate","register":"b","reason":"eliminated"})"),
              HasSubstr("an elimination is recorded with its reason only"));
}

TEST_F(Record, TellsTheBlanksOfALongReasonOnOneLine) {
  const RUN_RESULT result = kptdb({"record", "-", "--name", "x", "-o", "x.xml"},
                                  std::string(DESIGN) + R"({"event":"merge","kept":"s[0]","merged":"s[1]"})" + "\n");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("-:13: refused: merge s[1] into s[0]: Error: Merge not recorded - this is a merge "
                                    "between 2 FSM maps - this is not currently supported by Keypoint db"));
}

TEST_F(Record, RefusesEventsOnFurtherStateRegisters) {
  const RUN_RESULT result =
      kptdb({"record", "-", "--name", "x", "-o", "x.xml"},
            std::string(DESIGN) + R"({"event":"replicate","register":"s[1]","replica":"s_dup"})" + "\n");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("s[1] is a register of a state machine that the event cannot be recorded for"));
}

// A line that is not an event is unreadable input, not a refusal.
TEST_F(Record, TellsWhatIsWrongWithALine) {
  EXPECT_THAT(refusal("{\"event\":", 3), HasSubstr("not JSON: "));
  EXPECT_THAT(refusal("[1]", 3), HasSubstr("a JSON object is expected"));
  EXPECT_THAT(refusal("{}", 3), HasSubstr("\"event\" is missing"));
  EXPECT_THAT(refusal(R"({"event":1})", 3), HasSubstr("\"event\" is not a string"));
  EXPECT_THAT(refusal(R"({"event":"forget"})", 3), HasSubstr("unknown event \"forget\""));
  EXPECT_THAT(refusal(R"({"event":"merge","kept":"a"})", 3), HasSubstr("\"merged\" is missing"));
  EXPECT_THAT(refusal(R"({"event":"merge","kept":"a","merged":"b","into":"c"})", 3), HasSubstr("unknown key \"into\""));
  EXPECT_THAT(refusal(R"({"event":"retime_inverter","register":""})", 3), HasSubstr("\"register\" is empty"));
  EXPECT_THAT(refusal(R"({"event":"retime_inverter","register":"a\u0001b"})", 3),
              HasSubstr("\"register\" is \"a\\x01b\": a database file holds no control characters"));
  EXPECT_THAT(refusal("{\"event\":\"retime_inverter\",\"register\":\"\\uffff\"}", 3), HasSubstr("\\xEF\\xBF\\xBF"));
  EXPECT_THAT(refusal(R"({"event":"eliminate","register":"b","reason":"bored"})", 3),
              HasSubstr("unknown reason \"bored\""));
  EXPECT_THAT(refusal(R"({"event":"associate","reference":["x"],"transformed":"y"})", 3),
              HasSubstr("neither a name nor a block instance"));
  EXPECT_THAT(refusal(R"({"event":"associate","reference":{"name":"x"},"transformed":"y"})", 3),
              HasSubstr("\"entity\" is missing"));
}

TEST_F(Record, TellsWhatIsWrongWithAStateMachine) {
  const auto fsm = [&](const std::string& r, const std::string& t, const std::string& states) {
    return refusal(
        R"({"event":"associate_fsm","reference":)" + r + ",\"transformed\":" + t + ",\"states\":" + states + "}", 3);
  };
  EXPECT_THAT(fsm(R"(["x"])", R"(["y"])", "[]"), HasSubstr("\"states\" is not a list with entries"));
  EXPECT_THAT(fsm("[]", R"(["y"])", R"([["0","1"]])"), HasSubstr("\"reference\" is not a list with entries"));
  EXPECT_THAT(fsm(R"(["x","x"])", R"(["y"])", R"([["00","1"]])"), HasSubstr("\"reference\" names x twice"));
  EXPECT_THAT(fsm(R"(["x"])", R"(["y"])", R"([["00","1"]])"), HasSubstr("does not fit the 1 reference registers"));
  EXPECT_THAT(fsm(R"(["x"])", R"(["y"])", R"([["0","2"]])"), HasSubstr("not a string of 0 and 1"));
  EXPECT_THAT(fsm(R"(["x"])", R"(["y"])", R"([["0"]])"), HasSubstr("not a pair of codes"));
}

TEST_F(Record, KeepsGoingWhenToldTo) {
  write("e.jsonl",
        "{\"event\":\"associate\",\"reference\":\"a\",\"transformed\":\"b\"}\n"
        "{\"event\":\"merge\",\"kept\":\"b\",\"merged\":\"x\"}\n"
        "{\"event\":\"associate\",\"reference\":\"c\",\"transformed\":\"d\"}\n");
  const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml", "--keep-going"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "e.xml: 2 events recorded, 1 refused\n");
  EXPECT_THAT(result.err, StartsWith("kptdb: e.jsonl:2: refused: merge x into b: "));
  EXPECT_THAT(good({"show", "e.xml", "c"}), HasSubstr("d"));
}

TEST_F(Record, KeepsGoingOverLinesThatAreNoEvents) {
  write("e.jsonl", "nonsense\n{\"event\":\"associate\",\"reference\":\"a\",\"transformed\":\"b\"}\n");
  const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml", "--keep-going", "--json"});
  EXPECT_EQ(result.exit_code, 3);
  const JSON json = JSON::parse(result.out);
  EXPECT_EQ(json["recorded"], 1);
  EXPECT_EQ(json["written"], "e.xml");
  EXPECT_EQ(json["refused"][0]["line"], 1);
  EXPECT_EQ(json["refused"][0]["event"], nullptr);
}

TEST_F(Record, LeavesAnEarlierFileAloneWhenRefused) {
  write("e.xml", "what was there");
  write("e.jsonl", "nonsense\n");
  const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml", "--json"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(JSON::parse(result.out)["written"], nullptr);
  EXPECT_EQ(read("e.xml"), "what was there");
  EXPECT_EQ(kptdb({"record", "missing.jsonl", "-o", "e.xml"}).exit_code, 3);
  EXPECT_EQ(read("e.xml"), "what was there");
}

TEST_F(Record, SaysWhenItCannotWrite) {
  write("e.jsonl", DESIGN);
  const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "nowhere/e.xml"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("nowhere/e.xml: not written"));
  std::filesystem::create_directory(folder() / "dir");
  EXPECT_EQ(kptdb({"record", "e.jsonl", "-o", "dir"}).exit_code, 1);
  EXPECT_EQ(kptdb({"record", "dir", "-o", "e.xml"}).exit_code, 3);
}

TEST_F(Record, SurvivesHostileLines) {
  EXPECT_THAT(refusal(std::string(1000000, '['), 3), HasSubstr("nested too deeply"));
  EXPECT_THAT(refusal(std::string("\x00\xff\x1b[31m", 7), 3), HasSubstr("not JSON"));
  EXPECT_THAT(refusal(std::string((16U << 20) + 1, 'x'), 3), HasSubstr("too long"));
  EXPECT_THAT(refusal(std::string(DESIGN).substr(0, 40), 3), HasSubstr("not JSON"));
}

// Maps of any shape, the value of a transformed register, the passes of a fact, and ends.

TEST_F(Record, TakesAMapOfAnyShape) {
  record(
      "m.xml",
      R"({"event":"map","reference":[{"same":["p","q"],"inverse":["r"]}],"transformed":[{"inverse":[{"name":"u","entity":"e","type":"dff"}]}]})"
      "\n"
      R"({"event":"map","reference":[{"same":["s"]}],"transformed":[{"same":["t"]},{"same":["v"]}],"states":[["0","01"],["1","10"]]})"
      "\n"
      R"({"event":"map","reference":[{"inverse":["w"]}],"transformed":[],"status":"stuck_at_one"})"
      "\n");
  EXPECT_THAT(good({"show", "m.xml", "q"}), HasSubstr("transformed with the inverse: u"));
  EXPECT_THAT(good({"show", "m.xml", "s"}), HasSubstr("  1      1          10"));
  EXPECT_THAT(good({"show", "m.xml", "w"}), HasSubstr("\n  constant 1\n"));
}

TEST_F(Record, RefusesAMapThatTheLibraryRefusesAndTakesItAsItIs) {
  const std::string again = R"({"event":"map","reference":[{"same":["a"]}],"transformed":[{"same":["c"]}])";
  EXPECT_THAT(refusal(again + "}"), HasSubstr("refused: map a to c: Error: Map not recorded: a already exists"));
  record("m.xml", R"({"event":"associate","reference":"a","transformed":"b"})"
                  "\n" +
                      again + R"(,"as_it_is":true})" + "\n");
  EXPECT_THAT(good({"show", "m.xml", "a"}), HasSubstr("same value: c"));
}

TEST_F(Record, TellsWhatIsWrongWithAMap) {
  const auto map = [](const std::string& more) {
    return R"({"event":"map","reference":[{"same":["p"]}],)" + more + "}";
  };
  EXPECT_THAT(refusal(map(R"("transformed":{})"), 3), HasSubstr("\"transformed\" is not a list"));
  EXPECT_THAT(refusal(map(R"("transformed":["q"])"), 3), HasSubstr("an index of \"transformed\" is not an object"));
  EXPECT_THAT(refusal(map(R"("transformed":[{"equal":["q"]}])"), 3), HasSubstr("unknown key \"equal\""));
  EXPECT_THAT(refusal(map(R"("transformed":[],"states":[["0","1"]])"), 3),
              HasSubstr("the code \"1\" does not fit the 0 transformed registers"));
  EXPECT_THAT(refusal(map(R"("transformed":[],"status":"gone")"), 3), HasSubstr("unknown status \"gone\""));
  EXPECT_THAT(refusal(map(R"("transformed":[],"attributes":["pass"])"), 3),
              HasSubstr("\"attributes\" is not an object of texts"));
  EXPECT_THAT(refusal(map(R"("transformed":[],"states":[["0",""]],"columns":[1,0])"), 3),
              HasSubstr("\"columns\" stands beside \"states\" of a map as it is"));
}

TEST_F(Record, TurnsTheValueOfARegisterThatHasTheInverse) {
  const std::string kept = R"({"event":"associate","reference":"p","transformed":"q"})"
                           "\n";
  const std::string inverter = R"({"event":"retime_inverter","register":"q"})"
                               "\n";
  const std::string value = R"({"event":"eliminate","register":"q","value":0})"
                            "\n";
  record("same.xml", kept + value);
  EXPECT_THAT(good({"show", "same.xml", "p"}), HasSubstr("constant 0"));
  record("inverse.xml", kept + inverter + value);
  EXPECT_THAT(good({"show", "inverse.xml", "p"}), HasSubstr("constant 1"));
  record("both.xml", R"({"event":"map","reference":[{"inverse":["p"]}],"transformed":[{"inverse":["q"]}]})"
                     "\n" +
                         value);
  EXPECT_THAT(good({"show", "both.xml", "p"}), HasSubstr("constant 0"));
}

TEST_F(Record, WarnsOfAMapWhoseTableContradictsItself) {
  const std::string map = R"({"event":"map","reference":[{"same":["a"]}],"transformed":[{"same":["p"]}],)"
                          R"("states":[["0","0"],["0","1"]])";
  for (const char* const end : {"}\n", ",\"as_it_is\":true}\n"}) {
    write("m.jsonl", map + end);
    const RUN_RESULT result = kptdb({"record", "m.jsonl", "-o", "m.xml"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "kptdb: m.jsonl:1: warning: the reference code 0 faces the transformed codes 0 and 1\n");
    EXPECT_EQ(result.out, "m.xml: 1 event recorded\n");
  }
}

TEST_F(Record, DoesNotWarnOfATableOfOneSide) {
  write("m.jsonl", R"({"event":"map","reference":[{"same":["a"]},{"same":["b"]}],"transformed":[],)"
                   R"("states":[["00",""],["01",""]]})"
                   "\n");
  good({"record", "m.jsonl", "-o", "m.xml"});
}

TEST_F(Record, NamesThePackedFileLikeThePlainOne) {
  write("a.jsonl", R"({"event":"associate","reference":"p","transformed":"q"})"
                   "\n");
  EXPECT_EQ(shell("gzip -k a.jsonl").exit_code, 0);
  good({"record", "a.jsonl", "-o", "plain.xml"});
  good({"record", "a.jsonl.gz", "-o", "packed.xml"});
  EXPECT_EQ(read("packed.xml"), read("plain.xml"));
}

TEST_F(Record, RefusesTheValueOfABitOfAMachine) {
  const RUN_RESULT result = kptdb({"record", "-", "--name", "x", "-o", "x.xml"},
                                  std::string(DESIGN) + R"({"event":"eliminate","register":"s[0]","value":0})" + "\n");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("-:13: refused: eliminate s[0] (its value is 0): s[0] is a register of a state "
                                    "machine: its value is told by the table of a map"));
  EXPECT_THAT(refusal(R"({"event":"eliminate","register":"b","value":2})", 3), HasSubstr("neither 0 nor 1"));
  EXPECT_THAT(refusal(R"({"event":"eliminate","register":"b","value":1,"reason":"no_fanout"})", 3),
              HasSubstr("\"reason\" and \"value\" exclude each other"));
}

TEST_F(Record, KeepsWhereFactsComeFrom) {
  record("p.xml", R"({"event":"associate","reference":"p","transformed":"q","pass":"opt_dff","note":"first"})"
                  "\n"
                  R"({"event":"associate","reference":"p2","transformed":"q2","pass":"share"})"
                  "\n"
                  R"({"event":"retime_inverter","register":"q","pass":"abc","note":"second"})"
                  "\n"
                  R"({"event":"merge","kept":"q","merged":"q2","pass":"abc"})"
                  "\n");
  EXPECT_THAT(read("p.xml"), HasSubstr("name=\"pass\" value=\"opt_dff, abc, share\""));
  EXPECT_THAT(read("p.xml"), HasSubstr("name=\"note\" value=\"first; second\""));
}

TEST_F(Record, KnowsARegisterThatNoMapLists) {
  record("r.xml", R"({"event":"register","side":"reference","register":"alone","attributes":{"note":"why"}})"
                  "\n");
  EXPECT_THAT(read("r.xml"), HasSubstr("<name>alone</name>"));
  EXPECT_THAT(read("r.xml"), HasSubstr("name=\"note\" value=\"why\""));
  EXPECT_THAT(refusal(R"({"event":"register","side":"left","register":"x"})", 3), HasSubstr("unknown side \"left\""));
}

TEST_F(Record, TakesSeveralFilesInTheirOrder) {
  write("1.jsonl", R"({"event":"associate","reference":"p","transformed":"q"})"
                   "\n"
                   R"({"event":"end","events":1})"
                   "\n");
  write("2.jsonl", R"({"event":"retime_inverter","register":"q"})"
                   "\n"
                   R"({"event":"retime_inverter","register":"x"})"
                   "\n");
  const RUN_RESULT result = kptdb({"record", "1.jsonl", "2.jsonl", "-o", "o.xml", "--keep-going"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, StartsWith("kptdb: 2.jsonl:2: refused: retime an inverter through x"));
  EXPECT_EQ(result.out, "o.xml: 2 events recorded, 1 refused\n");
  EXPECT_THAT(read("o.xml"), StartsWith("<kpt_db name=\"1\">\n"));
}

TEST_F(Record, RefusesAnIncompleteFileWhenToldTo) {
  write("e.jsonl", R"({"event":"associate","reference":"p","transformed":"q"})"
                   "\n");
  for (const char* const more : {"--complete", "--keep-going"}) {
    const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml", "--complete", more});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.err, "kptdb: e.jsonl:1: the file has no end event, so it may be incomplete\n");
    EXPECT_FALSE(exists("e.xml"));
  }
  EXPECT_EQ(good({"record", "e.jsonl", "-o", "e.xml"}), "e.xml: 1 event recorded\n");
}

TEST_F(Record, HoldsAFileToItsEnd) {
  EXPECT_THAT(refusal(R"({"event":"end","events":2})", 3),
              HasSubstr("the end event counts 2 events, but the file has 1"));
  EXPECT_THAT(refusal(R"({"event":"end"})", 3), HasSubstr("\"events\" is missing"));
  EXPECT_THAT(refusal(R"({"event":"end","events":-1})", 3), HasSubstr("\"events\" is not a number of events"));
  write("e.jsonl", R"({"event":"end","events":0})"
                   "\n\n"
                   R"({"event":"retime_inverter","register":"q"})"
                   "\n");
  const RUN_RESULT result = kptdb({"record", "e.jsonl", "-o", "e.xml"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.err, "kptdb: e.jsonl:3: there is a line after the end event\n");
}

TEST_F(Record, RefusesAKeyThatStandsThereTwice) {
  EXPECT_THAT(refusal(R"({"event":"retime_inverter","register":"b","register":"c"})", 3),
              HasSubstr("the key \"register\" occurs twice"));
  EXPECT_THAT(
      refusal(R"({"event":"associate","reference":{"name":"x","name":"y","entity":"e","type":"t"},"transformed":"c"})",
              3),
      HasSubstr("the key \"name\" occurs twice"));
}

}  // namespace
