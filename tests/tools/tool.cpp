#include "tool.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

const char* const DESIGN =
    R"({"event":"associate","reference":"count[0]","transformed":"count_reg[0]"}
{"event":"associate","reference":"count[1]","transformed":"count_reg[1]"}
{"event":"associate","reference":"carry","transformed":"carry_reg"}
{"event":"associate","reference":"zero","transformed":"zero_reg"}
{"event":"associate","reference":"spare","transformed":"spare_reg"}
{"event":"associate","reference":{"name":"u1/q","entity":"u1","type":"dff"},"transformed":{"name":"u1/q","entity":"u1","type":"sdff"}}
{"event":"associate_fsm","reference":["state[1]","state[0]"],"transformed":["s[0]","s[1]","s[2]"],"states":[["00","100"],["01","010"],["10","001"]]}
{"event":"replicate","register":"count_reg[0]","replica":"count_dup"}
{"event":"retime_inverter","register":"count_dup"}
{"event":"merge","kept":"count_reg[1]","merged":"carry_reg"}
{"event":"eliminate","register":"zero_reg","reason":"stuck_at_zero"}
{"event":"eliminate","register":"spare_reg","reason":"no_fanout"}
)";

namespace {

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    result += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return result + "'";
}

std::filesystem::path new_folder() {
  std::string name = std::filesystem::temp_directory_path() / "kptdb_test_XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    ADD_FAILURE() << "no folder for the test";
  }
  return name;
}

}  // namespace

TOOL_TEST::TOOL_TEST() : m_folder(new_folder()) {}

TOOL_TEST::~TOOL_TEST() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

// The streams go to files outside the folder, so that a test does not find them there.
RUN_RESULT TOOL_TEST::shell(const std::string& command) const {
  const std::string base = m_folder.string();
  const std::string line = "cd " + quoted(base) + " && KPTDB=" + quoted(KPTDB_PATH) + " && { " + command + "\n} >" +
                           quoted(base + ".out") + " 2>" + quoted(base + ".err");
  const int status = std::system(line.c_str());
  RUN_RESULT result{WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contents(base + ".out"),
                    contents(base + ".err")};
  std::filesystem::remove(base + ".out");
  std::filesystem::remove(base + ".err");
  return result;
}

RUN_RESULT TOOL_TEST::kptdb(const std::vector<std::string>& arguments, const std::string& input) const {
  std::string line = "printf %s " + quoted(input) + " | \"$KPTDB\"";
  for (const std::string& argument : arguments) {
    line += " " + quoted(argument);
  }
  return shell(line);
}

std::string TOOL_TEST::good(const std::vector<std::string>& arguments) const {
  const RUN_RESULT result = kptdb(arguments);
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.err, "");
  return result.out;
}

std::string TOOL_TEST::write(const std::string& name, const std::string& text) const {
  std::ofstream(m_folder / name, std::ios::binary) << text;
  return name;
}

std::string TOOL_TEST::read(const std::string& name) const { return contents(m_folder / name); }

std::vector<std::string> TOOL_TEST::names() const {
  std::vector<std::string> result;
  for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
    result.push_back(entry.path().filename());
  }
  std::sort(result.begin(), result.end());
  return result;
}

void TOOL_TEST::record(const std::string& file, const std::string& events) const {
  const RUN_RESULT result = kptdb({"record", "-", "--name", "design", "-o", file}, events);
  ASSERT_EQ(result.exit_code, 0) << result.err;
}
