// Runs the real kptdb, as a user would, in a folder of the test's own.
//
// Ownership: a TOOL_TEST owns its folder and removes it.
#ifndef TESTS_TOOL_H
#define TESTS_TOOL_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

struct RUN_RESULT {
  int exit_code;  // negative: the signal that ended it
  std::string out;
  std::string err;
};

class TOOL_TEST : public testing::Test {
 protected:
  TOOL_TEST();
  ~TOOL_TEST() override;

  /// kptdb with these arguments, in the test's folder.
  RUN_RESULT kptdb(const std::vector<std::string>& arguments, const std::string& input = "") const;
  /// The same, which has to succeed and write nothing to standard error.
  std::string good(const std::vector<std::string>& arguments) const;
  /// Any command line, by the shell; "$KPTDB" is the tool.
  RUN_RESULT shell(const std::string& command) const;

  std::string write(const std::string& name, const std::string& text) const;
  std::string read(const std::string& name) const;
  bool exists(const std::string& name) const { return std::filesystem::exists(m_folder / name); }
  /// All names in the folder, sorted.
  std::vector<std::string> names() const;
  /// Records lines of events into a database file of that name.
  void record(const std::string& file, const std::string& events) const;
  std::filesystem::path folder() const { return m_folder; }

 private:
  std::filesystem::path m_folder;
};

/// A small design: two kept signals, one instance, a state machine, and one register for each event.
extern const char* const DESIGN;

#endif
