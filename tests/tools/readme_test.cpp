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

// The block of a session: from the marker to the end of the code after it.
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

TEST_F(Readme, TheLibrarySessionPrintsWhatItSays) {
  const RUN_RESULT result = shell("'" KPT_SOURCES "/examples/session' \"$KPTDB\" .");
  EXPECT_EQ(result.exit_code, 0);
  EXPECT_EQ(result.out + result.err, block("library session"));
}

}  // namespace
