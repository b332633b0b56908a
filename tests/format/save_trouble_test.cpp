// Saves whose n-th system call fails, with every error that a disk has, or is
// the last one before the process is killed.
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "tests/format/databases.h"
#include "tests/format/save_fixture.h"
#include "tests/format/system_calls.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

std::size_t open_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// The system calls of a save, with the n-th broken.
class SAVE_WITH_TROUBLE {
 public:
  SAVE_WITH_TROUBLE(bool atomically, bool nameless, const std::string& path, SYSTEM_CALLS::TROUBLE trouble, unsigned at,
                    int error) {
    const DATABASE db = small_database();
    SYSTEM_CALLS watched(trouble, at, error);
    watched.watch_all();
    if (!nameless) {
      watched.refuse_nameless_files();
    }
    m_saved = atomically ? db->save_atomically(path) : db->save(path);
    m_calls = static_cast<unsigned>(watched.names().size());
    m_broken = at < m_calls ? watched.names()[at] : "nothing";
  }
  bool saved() const { return m_saved; }
  unsigned calls() const { return m_calls; }
  const std::string& broken() const { return m_broken; }

 private:
  bool m_saved;
  unsigned m_calls;
  std::string m_broken;
};

class SaveInTrouble : public SAVE_TEST, public testing::WithParamInterface<bool> {
 protected:
  // A save to `m_path` in a process of its own, which is killed before that call.
  int save_killed_at(unsigned at) const {
    const auto body = [](const std::string& argument) {
      const auto killed_at = static_cast<unsigned char>(argument.front());
      return SAVE_WITH_TROUBLE(true, !GetParam(), argument.substr(1), SYSTEM_CALLS::KILL, killed_at, 0).saved() ? 0 : 1;
    };
    return in_child(body, std::string(1, static_cast<char>(at)) + m_path);
  }

  // The temporary file of a save that was killed before it renamed it.
  std::string abandoned_file() const {
    unsigned at = 0;
    while (SAVE_WITH_TROUBLE(true, !GetParam(), m_path, SYSTEM_CALLS::FAILURE, at, EIO).broken() != "renameat") {
      ++at;
    }
    EXPECT_EQ(save_killed_at(at), -SIGKILL);
    EXPECT_EQ(m_folder.names().size(), 2U);
    return m_folder.file(m_folder.names().front());
  }
};

class PlainSaveInTrouble : public SAVE_TEST {};

TEST_P(SaveInTrouble, IsWholeOrNotAtAllWhicheverSystemCallFails) {
  const std::string after = saved(*small_database());
  const std::size_t descriptors = open_descriptors();
  for (const int error : {EIO, ENOSPC, EINTR, EACCES}) {
    for (unsigned at = 0;; ++at) {
      write_file(m_path, EARLIER);
      const SAVE_WITH_TROUBLE save(true, !GetParam(), m_path, SYSTEM_CALLS::FAILURE, at, error);
      const std::string where = save.broken() + " " + std::to_string(at) + " error " + std::to_string(error);
      ASSERT_EQ(read_file(m_path), save.saved() ? after : EARLIER) << where;
      ASSERT_THAT(m_folder.names(), ElementsAre("db.xml")) << where;
      ASSERT_EQ(open_descriptors(), descriptors) << where;
      if (at >= save.calls()) {
        EXPECT_TRUE(save.saved());
        EXPECT_GT(at, 10U);
        break;
      }
    }
  }
}

// A save that was killed left a file, which the next one takes away while its own calls fail. EEXIST says that
// another process was faster.
TEST_P(SaveInTrouble, IsWholeOrNotAtAllBesideAnAbandonedFileWhicheverSystemCallFails) {
  const std::string after = saved(*small_database());
  const std::string abandoned = abandoned_file();
  for (const int error : {EIO, EEXIST, EWOULDBLOCK}) {
    for (unsigned at = 0;; ++at) {
      write_file(abandoned, "of a save that was killed");
      write_file(m_path, EARLIER);
      const SAVE_WITH_TROUBLE save(true, !GetParam(), m_path, SYSTEM_CALLS::FAILURE, at, error);
      const std::string where = save.broken() + " " + std::to_string(at) + " error " + std::to_string(error);
      ASSERT_EQ(read_file(m_path), save.saved() ? after : EARLIER) << where;
      ASSERT_TRUE(small_database()->save_atomically(m_path));
      if (at >= save.calls()) {
        EXPECT_TRUE(save.saved());
        break;
      }
    }
  }
}

TEST_P(SaveInTrouble, IsWholeOrNotAtAllWhereNothingWasWhicheverSystemCallFails) {
  const std::string path = m_folder.file("new.xml");
  for (const int error : {EIO, EEXIST}) {
    for (unsigned at = 0;; ++at) {
      const SAVE_WITH_TROUBLE save(true, !GetParam(), path, SYSTEM_CALLS::FAILURE, at, error);
      const std::string where = save.broken() + " " + std::to_string(at) + " error " + std::to_string(error);
      ASSERT_EQ(::access(path.c_str(), F_OK) == 0, save.saved()) << where;
      if (save.saved()) {
        ASSERT_EQ(read_file(path), saved(*small_database())) << where;
        ::unlink(path.c_str());
      }
      if (at >= save.calls()) {
        EXPECT_TRUE(save.saved());
        break;
      }
    }
  }
}

TEST_P(SaveInTrouble, IsWholeOrNotAtAllWhicheverSystemCallItIsKilledBefore) {
  const std::string after = saved(*small_database());
  int result = -SIGKILL;
  for (unsigned at = 0; result == -SIGKILL; ++at) {
    write_file(m_path, EARLIER);
    result = save_killed_at(at);
    const std::string text = read_file(m_path);
    ASSERT_TRUE(text == EARLIER || text == after) << at;
    ASSERT_TRUE(small_database()->save_atomically(m_path)) << at;  // which removes what is left
    ASSERT_THAT(m_folder.names(), ElementsAre("db.xml")) << at;
  }
  EXPECT_EQ(result, 0);
}

// In place: what cannot be opened is left alone; what cannot be written is lost, and not told.
TEST_F(PlainSaveInTrouble, GoesOnWhateverFails) {
  const std::string after = saved(*small_database());
  const std::size_t descriptors = open_descriptors();
  for (const int error : {EIO, ENOSPC, EINTR, EACCES}) {
    for (unsigned at = 0;; ++at) {
      write_file(m_path, EARLIER);
      const SAVE_WITH_TROUBLE save(false, true, m_path, SYSTEM_CALLS::FAILURE, at, error);
      const bool is_interrupted = error == EINTR;
      const std::string text = read_file(m_path);
      ASSERT_EQ(save.saved(), save.broken() != "open" || is_interrupted) << save.broken() << error;
      ASSERT_EQ(text, !save.saved() ? EARLIER : save.broken() == "write" && !is_interrupted ? "" : after);
      ASSERT_EQ(open_descriptors(), descriptors);
      if (at >= save.calls()) {
        break;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(WhereEveryFileHasAName, SaveInTrouble, testing::Bool());

}  // namespace
