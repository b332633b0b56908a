// Loads while something happens to the file: a system call fails, the file is a
// pipe, it changes, or a database of its name appears.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>
#include <thread>
#include <utility>

#include "db/kpt/kpt.h"
#include "host/kpt_host.h"
#include "tests/format/databases.h"
#include "tests/format/system_calls.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::Contains;

std::string three_maps() { return read_file(data_file("three_maps.xml")); }

class LoadInTrouble : public testing::TestWithParam<bool> {
 protected:
  // The scanner does not read a file with a declaration, so the parser does.
  std::string text() const { return (GetParam() ? "<?xml version=\"1.0\"?>\n" : "") + three_maps(); }
  static std::string saved_by(const KPT_UNREGISTERED_DB& db) {
    const FOLDER folder;
    return db.save(folder.file("again.xml")) ? read_file(folder.file("again.xml")) : "";
  }

  FOLDER m_folder;
};

TEST_P(LoadInTrouble, IsWholeOrNotAtAllWhicheverSystemCallFails) {
  const std::string path = m_folder.file_of(text());
  const HOST_LINES lines;
  for (const int error : {EIO, EINTR}) {
    for (unsigned at = 0;; ++at) {
      KPT_LOAD_PROBLEM problem;
      KPT_UNREGISTERED_DB db;
      std::vector<std::string> calls;
      {
        SYSTEM_CALLS watched(SYSTEM_CALLS::FAILURE, at, error);
        watched.watch_all();
        db = KPT_UNREGISTERED_DB::load(path, &problem);
        calls = watched.names();
      }
      if (at >= calls.size()) {
        EXPECT_EQ(saved_by(db), three_maps());
        EXPECT_GT(at, 4U);
        break;
      }
      const std::string where = calls[at] + " " + std::to_string(at) + " error " + std::to_string(error);
      const bool is_retried = error == EINTR && (calls[at] == "open" || calls[at] == "read");
      ASSERT_EQ(db.is_null(), !problem.is_none()) << where;
      ASSERT_TRUE(!db.is_null() || !is_retried) << where;
      if (!db.is_null()) {
        ASSERT_EQ(saved_by(db), three_maps()) << where;
      }
    }
  }
}

TEST_P(LoadInTrouble, ReadsAPipe) {
  const std::string pipe = m_folder.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(pipe) << text(); });
  const KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::load(pipe);
  writer.join();
  EXPECT_EQ(saved_by(db), three_maps());
}

INSTANTIATE_TEST_SUITE_P(ThroughTheParser, LoadInTrouble, testing::Bool());

// Does something when the load issues a line with this beginning for the first time.
class AT_LINE {
 public:
  AT_LINE(const std::string& beginning, const std::function<void()>& act) {
    kpt_host::set_debug(true);
    kpt_host::set_debug_sink([this, beginning, act](const char*, const char* text) {
      m_lines.emplace_back(text);
      if (m_lines.back().starts_with(beginning) && !std::exchange(m_has_acted, true)) {
        act();
      }
    });
  }
  ~AT_LINE() {
    kpt_host::set_debug(false);
    kpt_host::set_debug_sink(nullptr);
  }
  AT_LINE(const AT_LINE&) = delete;
  AT_LINE& operator=(const AT_LINE&) = delete;

  const std::vector<std::string>& lines() const { return m_lines; }

 private:
  std::vector<std::string> m_lines;
  bool m_has_acted = false;
};

// A plain file is checked as a whole before it is read.
TEST(LoadOfAFileThatChanges, FailsWithALine) {
  const FOLDER folder;
  const std::string path = folder.file_of(three_maps());
  const AT_LINE change("Start XML parsing", [&] { write_file(path, three_maps().substr(0, 500)); });
  KPT_LOAD_PROBLEM problem;
  EXPECT_TRUE(KPT_UNREGISTERED_DB::load(path, &problem).is_null());
  EXPECT_THAT(change.lines(), Contains("Error: file " + path + " changed while it was read"));
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NOT_WELL_FORMED);
  EXPECT_EQ(problem.message, "the file changed while it was read");
}

// In a flow with several threads, another one can create it meanwhile.
TEST(LoadOfADatabaseWhoseNameIsTakenMeanwhile, FailsAndKeepsTheOther) {
  KPT_KEYPOINTS_MANAGER& manager = *KPT_KEYPOINTS_MANAGER::get_instance();
  const AT_LINE take("TIME: Load End Time: ", [&] { manager.create_keypoints_db("top"); });
  KPT_LOAD_PROBLEM problem;
  EXPECT_EQ(manager.load_db(data_file("three_maps.xml"), problem), nullptr);
  EXPECT_EQ(problem.kind, KPT_LOAD_PROBLEM::NAME_IS_TAKEN);
  EXPECT_THAT(take.lines(), Contains("DB called top already exists\n"));
  ASSERT_NE(manager.get_keypoints_db("top"), nullptr);
  EXPECT_EQ(manager.get_keypoints_db("top")->get_reference_set().size(), 0U);
  EXPECT_TRUE(manager.destroy_keypoints_db("top"));
  EXPECT_FALSE(manager.destroy_keypoints_db("top"));
}

}  // namespace
