// What the library does when memory runs out inside the XML parser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include "db/kpt/kpt.h"
#include "tests/host/failing_allocation.h"
#include "tests/host/own_host.h"

namespace {

using kpt_test::s_allocations_left;
using own_host::record;
using testing::ElementsAre;

// A database that only the XML parser reads, because it has a document type.
class ParserOutOfMemory : public testing::Test {
 protected:
  ParserOutOfMemory() {
    std::ofstream(m_path) << "<!DOCTYPE kpt_db [<!ENTITY e 'x'>]><kpt_db name=\"d\"></kpt_db>";
    kpt_test::s_fails_for_good = false;
    record().debug = true;
  }
  ~ParserOutOfMemory() override {
    s_allocations_left = -1;
    record().debug = false;
    std::remove(m_path.c_str());
  }

  // One load whose n-th allocation fails.
  void load(long n) {
    record().debug_lines.clear();
    record().errors.clear();
    s_allocations_left = n;
    const KPT_KEYPOINTS_DB* const db = KPT_KEYPOINTS_MANAGER::get_instance()->load_db(m_path);
    s_allocations_left = -1;
    if (db != nullptr) {
      KPT_KEYPOINTS_MANAGER::get_instance()->destroy_keypoints_db(db->get_name());
    }
  }

  std::string m_path = testing::TempDir() + "parser_out_of_memory_" + std::to_string(::getpid()) + ".xml";
  std::string m_caught = "KPT: Caught Unknown XML exception while parsing file " + m_path;
};

// The first load of a process starts the parser, which first allocates memory of its own.
TEST_F(ParserOutOfMemory, BeforeItsFirstStartRefusesTheLoadAlone) {
  const long blocks = record().live_blocks;
  for (long n = 0; n < 50; ++n) {
    load(n);
    ASSERT_EQ(record().live_blocks, blocks) << n;
  }
}

TEST_F(ParserOutOfMemory, IsAnUnknownExceptionAndARefusedLoad) {
  for (long n = 0; n < 1000; ++n) {
    load(n);
    const std::vector<std::string>& lines = record().debug_lines;
    const auto caught = std::find(lines.begin(), lines.end(), m_caught);
    if (caught == lines.end()) {
      continue;
    }
    EXPECT_THAT(std::vector<std::string>(caught, lines.end()),
                ElementsAre(m_caught, "KPT: XML parse: file: " + m_path + ", nerrors: 0"));
    EXPECT_THAT(record().errors, ElementsAre("EKPT_OUT_OF_MEMORY: Keypoint Database " + m_path +
                                             " can be neither loaded nor saved: memory has run out"));
    return;
  }
  FAIL() << "no allocation of the parser failed";
}

}  // namespace
