// How the tool communicates: help, hints, reasons, colours, progress, JSON for programs, completions.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using JSON = nlohmann::json;

class Manners : public TOOL_TEST {
 protected:
  void SetUp() override { record("d.xml", DESIGN); }
};

TEST_F(Manners, HelpIsThereInEveryWayOneAsksForIt) {
  const std::string help = good({"--help"});
  EXPECT_EQ(good({}), help);
  EXPECT_EQ(good({"help"}), help);
  EXPECT_EQ(good({"help", "show"}), good({"show", "--help"}));
  const RUN_RESULT result = kptdb({"help", "shwo"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_EQ(result.err, "kptdb: no command shwo; did you mean show?\n");
}

TEST_F(Manners, ACommandThatIsNoneIsAnsweredWithTheNearest) {
  const RUN_RESULT result = kptdb({"shwo", "d.xml", "carry"});
  EXPECT_EQ(result.exit_code, 2);
  EXPECT_EQ(result.err, "kptdb: no command shwo; did you mean show? (kptdb help lists them)\n");
  EXPECT_EQ(kptdb({"frobnicate"}).err, "kptdb: no command frobnicate (kptdb help lists them)\n");
}

TEST_F(Manners, AnOptionThatIsNoneIsAnsweredWithTheNearest) {
  EXPECT_EQ(kptdb({"info", "d.xml", "--memroy"}).err,
            "kptdb: info: no option --memroy; did you mean --memory? (kptdb help info tells more)\n");
  EXPECT_EQ(kptdb({"list", "d.xml", "--sdie=reference"}).err,
            "kptdb: list: no option --sdie; did you mean --side? (kptdb help list tells more)\n");
  EXPECT_EQ(kptdb({"info", "d.xml", "e.xml"}).err,
            "kptdb: info: one argument too many: e.xml (kptdb help info tells more)\n");
}

TEST_F(Manners, MessagesTellTheReason) {
  EXPECT_EQ(kptdb({"info", "nodir/z.xml"}).err, "kptdb: nodir/z.xml: No such file or directory\n");
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "csv", "-o", "nodir/z.csv"}).err,
            "kptdb: nodir/z.csv: not written: No such file or directory\n");
  EXPECT_THAT(kptdb({"compose", "d.xml", "d.xml", "--share", "0", "-o", "nodir/z.xml"}).err,
              HasSubstr("nodir/z.xml: not written: "));
}

TEST_F(Manners, ColoursAreForTerminalsAndWhoAsks) {
  EXPECT_THAT(good({"show", "d.xml", "carry"}), Not(HasSubstr("\033")));
  EXPECT_THAT(good({"show", "d.xml", "carry", "--color", "always"}), StartsWith("\033[1mreference register carry"));
  EXPECT_THAT(kptdb({"--color", "always", "info", "z.xml"}).err, StartsWith("\033[31mkptdb:\033[0m z.xml"));
  EXPECT_EQ(kptdb({"info", "d.xml", "--color", "pink"}).exit_code, 2);
}

TEST_F(Manners, ATerminalIsColouredUnlessNoColorSaysOtherwise) {
  const auto on_terminal = [&](const std::string& environment) {
    return shell(environment + " script -qec \"$KPTDB show d.xml carry\" /dev/null </dev/null").out;
  };
  EXPECT_THAT(on_terminal("TERM=xterm"), HasSubstr("\033[1m"));
  EXPECT_THAT(on_terminal("TERM=xterm NO_COLOR=1"), Not(HasSubstr("\033[1m")));
  EXPECT_THAT(on_terminal("TERM=dumb"), Not(HasSubstr("\033[1m")));
}

TEST_F(Manners, ProgressTellsHowMuchOfAllIsDone) {
  const RUN_RESULT check = kptdb({"check", "d.xml", "--progress"});
  EXPECT_THAT(check.err, ContainsRegex("reading d.xml: [0-9.]+ of [0-9.]+ MB, [0-9]+%"));
  EXPECT_THAT(check.err, ContainsRegex("checking names: 1 of 15 registers, 6%"));
  EXPECT_THAT(kptdb({"diff", "d.xml", "d.xml", "--progress"}).err, ContainsRegex("comparing: 1 of 30 registers"));
  EXPECT_THAT(kptdb({"check", "d.xml"}).err, Not(HasSubstr("reading")));
  EXPECT_THAT(check.err, HasSubstr("checking maps: 1 of 6 maps, 16%"));
  const RUN_RESULT unite = kptdb({"unite", "d.xml", "d.xml", "-o", "u.xml", "--progress"});
  EXPECT_THAT(unite.err, HasSubstr("uniting d.xml: 1 of 33 registers and maps, 3%"));
  EXPECT_THAT(unite.err, ContainsRegex("writing u.xml: 1 of [0-9]+ registers and maps, [0-9]+%"));
  EXPECT_THAT(kptdb({"compose", "d.xml", "d.xml", "--share", "0", "-o", "c.xml", "--progress"}).err,
              HasSubstr("composing: 1 of 65 registers and maps, 1%"));
}

TEST_F(Manners, ProgressTellsHowMuchOfAllIsExported) {
  const auto told = [&](const std::string& format) {
    return kptdb({"export", "d.xml", "--format", format, "-o", "out", "--progress"}).err;
  };
  for (const char* format : {"json", "csv", "dot"}) {
    EXPECT_THAT(told(format), HasSubstr("exporting: 1 of 21 registers and maps, 4%")) << format;
  }
  EXPECT_THAT(told("events"), HasSubstr("exporting: 1 of 6 maps, 16%"));
  for (const char* format : {"tcl", "eqy"}) {
    EXPECT_THAT(told(format), HasSubstr("exporting: 1 of 8 registers, 12%")) << format;
  }
  EXPECT_THAT(told("sqlite"), HasSubstr("exporting registers: 1 of 8 registers, 12%"));
  EXPECT_THAT(told("sqlite"), HasSubstr("exporting maps: 1 of 6 maps, 16%"));
}

TEST_F(Manners, AShortWorkShowsNoProgressOnATerminal) {
  EXPECT_THAT(shell("script -qec \"$KPTDB info d.xml\" /dev/null </dev/null").out, Not(HasSubstr("reading")));
}

TEST_F(Manners, JsonHasAFormatAndFiveWords) {
  const JSON list = JSON::parse(good({"list", "d.xml", "--side", "reference", "--json"}));
  EXPECT_EQ(list["format"], 1);
  std::string words;
  for (const JSON& reg : list["registers"]) {
    words += reg["fate"].get<std::string>() + " ";
  }
  EXPECT_EQ(words, "mapped mapped mapped constant without_fanout machine machine mapped ");
}

TEST_F(Manners, JsonTellsOfFailuresToo) {
  const RUN_RESULT unreadable = kptdb({"info", "z.xml", "--json"});
  EXPECT_EQ(unreadable.exit_code, 3);
  EXPECT_EQ(JSON::parse(unreadable.out),
            JSON::parse(R"({"format":1,"error":{"exit_code":3,"text":"z.xml: No such file or directory"}})"));
  EXPECT_EQ(JSON::parse(kptdb({"info", "--json"}).out)["error"]["exit_code"], 2);
  EXPECT_EQ(JSON::parse(kptdb({"inof", "--json"}).out)["error"]["exit_code"], 2);
  EXPECT_EQ(kptdb({"export", "z.xml", "--json", "-o", "out"}).out, "");
  EXPECT_EQ(JSON::parse(kptdb({"list", "d.xml", "--name", "none", "--json"}).out)["registers"].size(), 0U);
}

TEST_F(Manners, InfoSaysWhatOpenAndUnknownMean) {
  const std::string text = good({"info", "d.xml"});
  EXPECT_THAT(text, HasSubstr("open: the map lists registers of one side alone and gives no reason\n"));
  EXPECT_THAT(text, HasSubstr("\nunknown: the database does not say what became of the register\n"));
}

TEST_F(Manners, CompletionsKnowEveryCommandAndOption) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const std::string script = good({"completion", shell});
    for (const char* word : {"record", "stats", "ignore-case", "fail-under", "without_fanout", "encfile"}) {
      EXPECT_THAT(script, HasSubstr(word)) << shell;
    }
  }
}

TEST_F(Manners, CompletionsWorkInBash) {
  write("complete",
        "source <(\"$KPTDB\" completion bash)\n"
        "try() { COMP_WORDS=(kptdb \"$@\"); COMP_CWORD=$#; COMPREPLY=(); _kptdb; echo \"${COMPREPLY[@]}\"; }\n"
        "try s; try list --fa; try list --fate w; try list --status u; try help sh; try --col\n");
  EXPECT_EQ(shell("export KPTDB; bash complete").out, "show stats\n--fate\nwithout_fanout\nunknown\nshow\n--color\n");
}

}  // namespace
