// Standard input and output, and gzip-compressed files, wherever a command takes a file.
#include <nlohmann/json.hpp>

#include "tool.h"

namespace {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::json;

class Streams : public TOOL_TEST {
 protected:
  void SetUp() override {
    record("d.xml", DESIGN);
    write("d.jsonl", DESIGN);
  }
};

TEST_F(Streams, EveryQuestionReadsStandardInput) {
  for (const std::string command : {"info -", "show - 'count[0]'", "list -", "stats -", "check -", "diff - d.xml",
                                    "export - --format csv", "explain 'count[0]' -"}) {
    const std::string from_file =
        command.substr(0, command.find('-')) + "d.xml" + command.substr(command.find('-') + 1);
    const RUN_RESULT piped = shell("cat d.xml | \"$KPTDB\" " + command);
    EXPECT_EQ(piped.exit_code, 0) << command << ": " << piped.err;
    EXPECT_EQ(piped.err, "") << command;
    if (command != "check -") {
      EXPECT_EQ(piped.out, shell("\"$KPTDB\" " + from_file).out) << command;
    }
  }
}

TEST_F(Streams, ARedirectedFileIsReadLikeAPipe) {
  EXPECT_EQ(shell("\"$KPTDB\" info - <d.xml").out, good({"info", "d.xml"}));
}

TEST_F(Streams, ResultsGoToStandardOutputAndReportsToStandardError) {
  const RUN_RESULT recorded = kptdb({"record", "d.jsonl", "--name", "design", "-o", "-"});
  EXPECT_EQ(recorded.out, read("d.xml"));
  EXPECT_EQ(recorded.err, "-: 12 events recorded\n");
  const RUN_RESULT composed = kptdb({"compose", "d.xml", "d.xml", "--share", "0", "-o", "-", "--json"});
  EXPECT_THAT(composed.out, StartsWith("<kpt_db "));
  EXPECT_EQ(JSON::parse(composed.err)["written"], "-");
  const RUN_RESULT united = kptdb({"unite", "d.xml", "d.xml", "-o", "-"});
  EXPECT_THAT(united.out, StartsWith("<kpt_db "));
  EXPECT_THAT(united.err, HasSubstr("2 stages united"));
  EXPECT_EQ(kptdb({"export", "d.xml", "--format", "csv", "-o", "-"}).out, good({"export", "d.xml", "--format", "csv"}));
  EXPECT_THAT(kptdb({"report", "d.xml", "-o", "-"}).out, StartsWith("<!"));
  EXPECT_THAT(names(), ElementsAre("d.jsonl", "d.xml"));
}

TEST_F(Streams, CommandsFollowEachOtherThroughPipes) {
  const RUN_RESULT result = shell(
      "\"$KPTDB\" record d.jsonl -o - 2>/dev/null | gzip | \"$KPTDB\" compose - d.xml --share 0 -o - 2>/dev/null | "
      "\"$KPTDB\" info -");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_THAT(result.out, StartsWith("database d\n"));
}

TEST_F(Streams, FilesArePackedByTheirNameAndUnpackedByTheirContent) {
  good({"record", "d.jsonl", "--name", "design", "-o", "d.xml.gz"});
  EXPECT_EQ(shell("gzip -dc d.xml.gz").out, read("d.xml"));
  EXPECT_EQ(good({"info", "d.xml.gz"}), good({"info", "d.xml"}));
  std::filesystem::rename(folder() / "d.xml.gz", folder() / "packed");
  EXPECT_EQ(good({"info", "packed"}), good({"info", "d.xml"}));
  shell("gzip -k d.jsonl");
  good({"record", "d.jsonl.gz", "--name", "design", "-o", "e.xml"});
  EXPECT_EQ(read("e.xml"), read("d.xml"));
  good({"export", "packed", "--format", "csv", "-o", "d.csv.gz"});
  EXPECT_EQ(shell("gzip -dc d.csv.gz").out, good({"export", "d.xml", "--format", "csv"}));
}

TEST_F(Streams, TheSameFactsArePackedToTheSameBytes) {
  good({"record", "d.jsonl", "-o", "a.gz"});
  good({"record", "d.jsonl", "-o", "b.gz"});
  EXPECT_EQ(read("a.gz"), read("b.gz"));
}

TEST_F(Streams, APackedFileIsThereWholeOrNotAtAll) {
  write("a.gz", "what was there");
  EXPECT_EQ(kptdb({"record", "-", "--name", "x", "-o", "a.gz"}, "nonsense\n").exit_code, 3);
  EXPECT_EQ(read("a.gz"), "what was there");
  EXPECT_EQ(kptdb({"record", "d.jsonl", "-o", "nowhere/a.gz"}).err,
            "kptdb: nowhere/a.gz: not written: No such file or directory\n");
}

TEST_F(Streams, APackedFileThatIsCutShortIsRefused) {
  good({"record", "d.jsonl", "-o", "d.xml.gz"});
  write("cut.gz", read("d.xml.gz").substr(0, 200));
  const RUN_RESULT result = kptdb({"info", "cut.gz"});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.err, "kptdb: cut.gz: it ends within packed data\n");
  EXPECT_EQ(kptdb({"record", "cut.gz", "-o", "x.xml"}).exit_code, 3);
}

TEST_F(Streams, ErrorsOfAStreamKeepLineAndColumn) {
  const RUN_RESULT result = kptdb({"info", "-"}, "<kpt_db name=\"d\">\n</kpt_bd>\n");
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_THAT(result.err, ContainsRegex("standard input at line number 2, column number [0-9]+ "));
  EXPECT_EQ(kptdb({"info", "-"}, "<kpt_db name=\"d\">\n<transformations_set/>\n<more/>\n</kpt_db>\n").err,
            "kptdb: standard input:3: something follows the transformations\n");
}

TEST_F(Streams, FindingsOfAPackedStreamKeepTheirLines) {
  std::string text = read("d.xml");
  write("d.xml", text.replace(text.find("<name>carry<"), 12, "<name>zero<"));
  const RUN_RESULT result = shell("gzip -c d.xml | \"$KPTDB\" check -");
  EXPECT_EQ(result.exit_code, 1);
  const std::string of_file = kptdb({"check", "d.xml"}).out;
  std::string expected;
  for (std::size_t at = 0, end = 0; (end = of_file.find('\n', at)) != std::string::npos; at = end + 1) {
    expected += "-" + of_file.substr(at + 5, end - at - 4);
  }
  EXPECT_EQ(result.out, expected);
}

TEST_F(Streams, StandardInputIsNamedOnce) {
  const std::vector<std::vector<std::string>> commands = {
      {"diff", "-", "-"},
      {"unite", "-", "-", "-o", "u.xml"},
      {"compose", "-", "-", "--share", "0", "-o", "c.xml"},
      {"explain", "carry", "-", "-"},
      {"report", "-", "--against", "-", "-o", "r.html"},
      {"show", "-", "--names-from", "-"},
      {"wave", "-", "-", "-o", "w.vcd"},
      {"audit", "-", "-", "g.vcd", "--at", "1ns"},
      {"export", "-", "--format", "gtkwave", "--dump", "-", "-o", "views"},
  };
  for (const std::vector<std::string>& command : commands) {
    const RUN_RESULT result = kptdb(command, read("d.xml"));
    EXPECT_EQ(result.exit_code, 2) << command.front();
    EXPECT_EQ(result.err, "kptdb: standard input is named twice\n") << command.front();
    EXPECT_EQ(result.out, "") << command.front();
  }
  const RUN_RESULT recorded = kptdb({"record", "-", "-", "--name", "x", "-o", "x.xml"}, DESIGN);
  EXPECT_EQ(recorded.exit_code, 2);
  EXPECT_EQ(recorded.err, "kptdb: standard input is named twice\n");
  EXPECT_THAT(names(), ElementsAre("d.jsonl", "d.xml"));
}

TEST_F(Streams, AUnionReadsStandardInputOnce) {
  good({"unite", "d.xml", "d.xml", "-o", "of_files.xml"});
  const RUN_RESULT result = kptdb({"unite", "-", "d.xml", "-o", "of_stream.xml"}, read("d.xml"));
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(read("of_stream.xml"), read("of_files.xml"));
}

TEST_F(Streams, StandardOutputIsNamedOnce) {
  for (const std::string command :
       {"record d.jsonl", "unite d.xml d.xml", "report d.xml", "export d.xml", "completion bash"}) {
    const RUN_RESULT result = shell("\"$KPTDB\" " + command + " -o - -o -");
    const std::string name = command.substr(0, command.find(' '));
    EXPECT_EQ(result.exit_code, 2) << command;
    std::string expected = "kptdb: ";
    expected.append(name).append(": --output is given 2 times, but may be given once (kptdb help ");
    expected.append(name).append(" tells more)\n");
    EXPECT_EQ(result.err, expected);
    EXPECT_EQ(result.out, "") << command;
  }
}

TEST_F(Streams, AnEventFileIsToldFromADatabase) {
  for (const char* command : {"info", "check", "list"}) {
    const RUN_RESULT result = kptdb({command, "d.jsonl"});
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.err, "kptdb: d.jsonl: this is an event file: use kptdb record\n");
  }
}

TEST_F(Streams, AnEmptyStreamIsNoDatabase) {
  EXPECT_EQ(kptdb({"info", "-"}).err, "kptdb: standard input:1: the file is empty\n");
}

TEST_F(Streams, AFullStandardOutputIsSaid) {
  const RUN_RESULT result = shell("\"$KPTDB\" record d.jsonl -o - >/dev/full");
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_THAT(result.err, HasSubstr("standard output: not written"));
}

}  // namespace
