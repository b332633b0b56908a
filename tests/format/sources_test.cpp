// Every way to load a file gives the same result: the scanner of plain files, the
// general source, and the document tree, with which the others are compared.
#include <gmock/gmock.h>

#include <filesystem>

#include "db/kpt/kpt_xml_reader.h"
#include "tests/format/databases.h"
#include "tests/format/mutants.h"
#include "tests/support/load_outcome.h"
#include "tests/support/seed.h"

namespace {

using namespace kpt_test;

class LoadSources : public testing::Test {
 protected:
  void expect_agreement(const std::string& path) {
    const LOAD_OUTCOME document = load_outcome(path, LOAD_WAY::DOCUMENT);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::SCANNER_FIRST), document);
    EXPECT_EQ(load_outcome(path, LOAD_WAY::GENERAL_SOURCE), document);
    m_loaded += document.is_loaded ? 1 : 0;
  }

  FOLDER m_folder;
  int m_loaded = 0;

 private:
  const KPT_XML_READER m_reader;  // the parser starts once
};

std::vector<std::string> all_data_files() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(KPT_TEST_DATA)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

TEST_F(LoadSources, AgreeOnEveryFileThatTheTestsKeep) {
  for (const std::string& path : all_data_files()) {
    SCOPED_TRACE(path);
    expect_agreement(path);
  }
}

TEST_F(LoadSources, AgreeOnMutants) {
  std::vector<std::string> files;
  for (const std::string& path : all_data_files()) {
    files.push_back(read_file(path));
  }
  MUTANTS mutants(seed(), files);
  const int count = steps(2000);
  for (int k = 0; k < count && !HasFailure(); ++k) {
    const std::string mutant = mutants.next();
    SCOPED_TRACE("mutant " + std::to_string(k) + ":\n" + mutant);
    expect_agreement(m_folder.file_of(mutant));
  }
  EXPECT_GT(m_loaded, count / 10) << "the mutants are hardly ever files";
}

}  // namespace
