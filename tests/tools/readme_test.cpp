// The README's command-line session and the example events, word by word.
#include <fstream>
#include <iterator>
#include <regex>

#include "tool.h"

namespace {

std::string file_text(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// All blocks of a guide, one behind the other.
std::string guide(const std::string& name) {
  const std::string text = file_text(std::string(KPT_SOURCES) + "/docs/" + name);
  const std::string fence = "```console\n";
  std::string blocks;
  for (std::size_t at = 0; (at = text.find(fence, at)) != std::string::npos;) {
    at += fence.size();
    blocks += text.substr(at, text.find("```", at) - at);
  }
  return blocks;
}

// The session's block: what stands between the marker and the end of the code behind it.
std::string block(const std::string& marker) {
  const std::string text = file_text(std::string(KPT_SOURCES) + "/README.md");
  const std::size_t at = text.find("<!-- " + marker + " -->");
  if (at == std::string::npos) {
    return {};
  }
  const std::size_t begin = text.find("```console\n", at) + 11;
  return text.substr(begin, text.find("```", begin) - begin);
}

class Readme : public TOOL_TEST {
 protected:
  // Runs every line after "$ ", and compares the output with the lines below it.
  void expect_session(const std::string& session) const {
    ASSERT_NE(session, "");
    std::string command;
    std::string expected;
    std::istringstream lines(session + "$ \n");
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("$ ", 0) != 0) {
        expected += line + "\n";
        continue;
      }
      if (!command.empty()) {
        const RUN_RESULT result = shell("kptdb() { \"$KPTDB\" \"$@\"; }; " + command);
        EXPECT_EQ(result.out + result.err, expected) << command;
      }
      command = line.substr(2);
      expected.clear();
    }
  }
};

TEST_F(Readme, TheCommandLineExamplePrintsWhatItSays) { expect_session(block("command-line example")); }

TEST_F(Readme, TheGuideOfTheToolPrintsWhatItSays) {
  for (const char* stage : {"synthesis", "optimisation"}) {
    const std::string name = std::string("uart_tx_") + stage + ".jsonl";
    write(name, file_text(std::string(KPT_SOURCES) + "/examples/events/" + name));
  }
  expect_session(guide("kptdb.md"));
}

TEST_F(Readme, TheLibrarySessionPrintsWhatItSays) {
  const RUN_RESULT result = shell("'" KPT_SOURCES "/examples/session' \"$KPTDB\" .");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out + result.err, block("library session"));
}

}  // namespace
