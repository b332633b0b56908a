// export: Tcl, EQY, SQLite and viewers, read by their own programs where a package has them.
#include "tool.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string kept(const std::string& r, const std::string& t) {
  return R"({"event":"associate","reference":")" + r + R"(","transformed":")" + t + "\"}\n";
}

const char* const MACHINE =
    R"({"event":"associate_fsm","reference":["s[1]","s[0]"],"transformed":["h[0]","h[1]","h[2]"],)"
    R"("states":[["00","100"],["01","010"],["10","001"]]})"
    "\n";

class ExportFacts : public TOOL_TEST {
 protected:
  std::string exported(const std::string& format, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"export", "d.xml", "--format", format});
    return good(more);
  }
  std::string tcl(const std::string& commands) const {
    good({"export", "d.xml", "--format", "tcl", "-o", "d.tcl"});
    write("ask.tcl", "source d.tcl\n" + commands);
    const RUN_RESULT result = shell("tclsh ask.tcl");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.out;
  }
  std::string sql(const std::string& query) const {
    write("query.sql", query);
    const RUN_RESULT result = shell("sqlite3 d.db <query.sql");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return result.out;
  }
};

TEST_F(ExportFacts, TclGivesBackAnyName) {
  write("events.jsonl",
        kept("plain", "t") + kept("odd {name}; [exit] $x \\\\ end", "other {net}") + kept("a::b(c)d", "n#1"));
  good({"record", "events.jsonl", "-o", "d.xml"});
  EXPECT_EQ(tcl("puts [lsort [array names kpt::net]]\nforeach n [lsort [array names kpt::net]] { puts $kpt::net($n) }\n"
                "puts [info exists kpt::net(odd\\ \\{name\\}\\;\\ \\[exit\\]\\ \\$x\\ \\\\\\ end)]\n"),
            "a::b(c)d {odd {name}; [exit] $x \\ end} plain\nn#1\nother {net}\nt\n1\n");
}

TEST_F(ExportFacts, TclSaysPinsSensesCopiesConstantsAndMachines) {
  record("d.xml", R"({"event":"associate","reference":"p","transformed":{"name":"_1_","entity":"DFF","type":"Q"}})"
                  "\n" +
                      kept("a", "t") + kept("b", "u") + kept("c", "v") + MACHINE +
                      "{\"event\":\"retime_inverter\",\"register\":\"t\"}\n"
                      "{\"event\":\"replicate\",\"register\":\"u\",\"replica\":\"u2\"}\n"
                      "{\"event\":\"eliminate\",\"register\":\"v\",\"reason\":\"stuck_at_one\"}\n");
  EXPECT_EQ(tcl("puts $kpt::pin(p)\nputs $kpt::sense(p)\nputs $kpt::net(a)\nputs $kpt::sense(a)\n"
                "puts $kpt::copies(b)\nputs [info exists kpt::copies(a)]\nputs $kpt::constant(c)\n"
                "lassign $kpt::fsm(s\\[0\\]) machine column\nputs $column\n"
                "puts [dict get $kpt::machine($machine) reference]\n"
                "puts [dict get $kpt::machine($machine) transformed]\nputs [dict get $kpt::machine($machine) codes]\n"),
            "_1_/Q\nsame\nt\ninverse\n{net u same} {net u2 same}\n0\n1\n1\n{s[1]} {s[0]}\n"
            "{net {h[0]} same} {net {h[1]} same} {net {h[2]} same}\n{00 100} {01 010} {10 001}\n");
}

// Registers of a large map are found by a table, and those of a small one without.
TEST_F(ExportFacts, EveryRegisterOfASmallAndOfALargeMapHasItsOwnValue) {
  for (const int count : {2, 16, 17, 40}) {
    std::string names;
    std::string values;
    for (int k = 1; k < count; ++k) {
      names += (k > 1 ? ",\"r" : "\"r") + std::to_string(k) + '"';
      values += "1\n";
    }
    record("d.xml", R"({"event":"map","reference":[{"same":[)" + names + R"(],"inverse":["r0"]}],"transformed":[{}],)" +
                        R"("status":"stuck_at_one"})" + "\n");
    EXPECT_EQ(tcl("for {set k 0} {$k < " + std::to_string(count) + "} {incr k} { puts $kpt::constant(r$k) }\n"),
              "0\n" + values);
  }
}

TEST_F(ExportFacts, EqyEscapesNamesAndCountsWhatItCannotSay) {
  record("d.xml", kept("u.q[3]", "_9_[0]") + kept("a", "t") + kept("b", "v") + MACHINE +
                      "{\"event\":\"retime_inverter\",\"register\":\"t\"}\n"
                      "{\"event\":\"eliminate\",\"register\":\"v\",\"reason\":\"stuck_at_one\"}\n");
  EXPECT_EQ(exported("eqy", {"--module", "top"}),
            "[match top]\n"
            "gold-match u\\.q\\[3\\] _9_\\[0\\]\n"
            "\n# EQY cannot be told of 1 register inverted and 1 register constant, of 1 state machine whose wires "
            "have two names\n# or inverted bits, and of 0 registers whose names its patterns cannot hold.\n");
}

TEST_F(ExportFacts, EqyRecodesAMachineWhoseWireKeepsItsName) {
  record("d.xml", R"({"event":"associate_fsm","reference":["s[1]","s[0]"],"transformed":["s[0]","s[1]","s[2]"],)"
                  R"("states":[["00","100"],["01","010"],["10","001"]]})"
                  "\n");
  EXPECT_THAT(exported("eqy", {"--module", "top"}), HasSubstr("[recode top s]\n00 001\n01 010\n10 100\n"));
}

TEST_F(ExportFacts, SurferMapsCodesOfTheVectorFromTheLeft) {
  record("d.xml", MACHINE);
  good({"export", "d.xml", "--format", "surfer", "-o", "maps"});
  EXPECT_EQ(read("maps/machine_1.txt"), "Name = s[1:0]\nBits = 3\n0b001 00\n0b010 01\n0b100 10\n");
}

TEST_F(ExportFacts, GtkwaveNamesBitsAsTheDumpHasThem) {
  record("d.xml", kept("q[0]", "a") + kept("q[1]", "b[2]") + kept("r", "c") + MACHINE +
                      "{\"event\":\"retime_inverter\",\"register\":\"c\"}\n");
  write("g.vcd",
        "$scope module tb $end\n$var wire 1 ! a $end\n$var wire 4 \" b [3:0] $end\n$var wire 1 # \\c $end\n"
        "$var wire 3 $ h [0:2] $end\n$upscope $end\n$enddefinitions $end\n");
  good({"export", "d.xml", "--format", "gtkwave", "--dump", "g.vcd", "--scope", "tb", "-o", "view"});
  const std::string text = read("view/design.gtkw");
  EXPECT_THAT(text, HasSubstr("@22\n#{q[1:0]} (1)tb.b[3:0] tb.a\n@68\n+{r} tb.\\c\n"));
  EXPECT_THAT(text, HasSubstr("#{s[1:0]} (0)tb.h[0:2] (1)tb.h[0:2] (2)tb.h[0:2]\n"));
  EXPECT_EQ(read("view/machine_1.txt"), "# s[1:0]\n001 10\n010 01\n100 00\n");
}

TEST_F(ExportFacts, SqliteAnswersWithOneRowARegister) {
  record("d.xml", kept("a", "t") + kept("b", "u") + kept("c", "v") + kept("d", "w") + MACHINE +
                      "{\"event\":\"retime_inverter\",\"register\":\"t\"}\n"
                      "{\"event\":\"replicate\",\"register\":\"u\",\"replica\":\"u2\"}\n"
                      "{\"event\":\"eliminate\",\"register\":\"v\",\"reason\":\"stuck_at_one\"}\n"
                      "{\"event\":\"eliminate\",\"register\":\"w\",\"reason\":\"no_fanout\"}\n");
  good({"export", "d.xml", "--format", "sqlite", "-o", "d.db"});
  EXPECT_EQ(
      sql("SELECT design, name, status, constant, successor, sense, copies FROM answers ORDER BY name;"),
      "design|a|mapped||t|inverse|1\ndesign|b|mapped||u|same|2\ndesign|c|constant|1|||0\ndesign|d|without_fanout||||0\n"
      "design|s[0]|machine||||0\ndesign|s[1]|machine||||0\n");
  EXPECT_EQ(sql("SELECT reference, transformed FROM states ORDER BY state;"), "00|100\n01|010\n10|001\n");
  EXPECT_EQ(sql("PRAGMA user_version;"), "2\n");
  for (const char* which : {"design = 'design' AND name = 'a'", "name = 'a'"}) {
    EXPECT_THAT(sql(std::string("EXPLAIN QUERY PLAN SELECT * FROM answers WHERE ") + which + ";"),
                Not(HasSubstr("SCAN")));
  }
}

TEST_F(ExportFacts, SqliteListsTheMembersOfAMap) {
  record("d.xml", kept("a", "t") + kept("b", "u") + MACHINE +
                      "{\"event\":\"retime_inverter\",\"register\":\"u\"}\n"
                      "{\"event\":\"replicate\",\"register\":\"u\",\"replica\":\"u2\"}\n");
  good({"export", "d.xml", "--format", "sqlite", "-o", "d.db"});
  EXPECT_EQ(sql("SELECT m.map, m.side, m.place, r.name, m.column_, m.inverse FROM members m JOIN registers r ON "
                "r.design = m.design AND r.side = m.side AND r.register = m.register ORDER BY 1, 2, 3;"),
            "0|0|0|a|0|0\n0|1|0|t|0|0\n1|0|0|b|0|0\n1|1|0|u|0|1\n1|1|1|u2|0|1\n"
            "2|0|0|s[1]|0|0\n2|0|1|s[0]|1|0\n2|1|0|h[0]|0|0\n2|1|1|h[1]|1|0\n2|1|2|h[2]|2|0\n");
  EXPECT_THAT(sql("EXPLAIN QUERY PLAN SELECT * FROM members WHERE design = 'design' AND map = 1;"),
              Not(HasSubstr("SCAN")));
}

TEST_F(ExportFacts, SqliteHasEveryRegisterOfALongList) {
  std::string events;
  for (int k = 0; k < 100; ++k) {
    events += kept("r" + std::to_string(k), "t" + std::to_string(k));
  }
  record("d.xml", events);
  good({"export", "d.xml", "--format", "sqlite", "-o", "d.db"});
  EXPECT_EQ(sql("SELECT count(*) FROM answers WHERE successor = 't' || substr(name, 2) AND sense = 'same';"), "100\n");
}

TEST_F(ExportFacts, SqliteReplacesAFileWhole) {
  record("d.xml", kept("a", "t"));
  write("d.db", "something else");
  good({"export", "d.xml", "--format", "sqlite", "-o", "d.db"});
  EXPECT_EQ(sql("SELECT count(*) FROM answers;"), "1\n");
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "sqlite", "-o", "no/such/folder.db"}).exit_code, 1);
}

TEST_F(ExportFacts, RefusesOptionsThatDoNotFit) {
  record("d.xml", kept("a", "t"));
  EXPECT_THAT(kptdb({"export", "d.xml", "--format", "sqlite"}).err, HasSubstr("--format sqlite needs -o"));
  for (const char* format : {"sqlite", "surfer"}) {
    EXPECT_THAT(kptdb({"export", "d.xml", "--format", format, "-o", "-"}).err,
                HasSubstr(std::string("--format ") + format + " needs -o and the name of a "));
  }
  EXPECT_THAT(kptdb({"export", "d.xml", "--format", "gtkwave", "--dump", "g.vcd", "-o", "-"}).err,
              HasSubstr("--format gtkwave needs -o and the name of a folder"));
  EXPECT_EQ(shell("ls ./- 2>&1").exit_code, 2);
  EXPECT_THAT(kptdb({"export", "d.xml", "--format", "gtkwave", "-o", "v"}).err, HasSubstr("needs --dump"));
  EXPECT_THAT(kptdb({"export", "d.xml", "--format", "tcl", "--append"}).err, HasSubstr("need --format sqlite"));
  EXPECT_THAT(kptdb({"export", "d.xml", "--format", "tcl", "--scope", "x"}).err, HasSubstr("need --format gtkwave"));
}

}  // namespace
