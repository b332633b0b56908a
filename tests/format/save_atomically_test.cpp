// Saving completely or not at all.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "db/kpt/kpt_keypoints_db.h"
#include "tests/format/databases.h"
#include "tests/format/save_fixture.h"
#include "tests/format/system_calls.h"
#include "tests/support/host_lines.h"
#include "tests/support/load_outcome.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

// Large enough for several writes.
DATABASE large_database() {
  DATABASE db = new_database("d");
  for (long id = 0; id < 40; ++id) {
    db->add_to_register_set(KPT_REFERENCE_SET, id, std::to_string(id) + std::string(100000, 'n'));
  }
  return db;
}

class SaveAtomically : public SAVE_TEST {};

TEST_F(SaveAtomically, WritesWhatSaveWrites) {
  const DATABASE db = large_database();
  EXPECT_TRUE(db->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), saved(*db));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_F(SaveAtomically, IsAnOperationOfTheHandle) {
  const DATABASE db = small_database();
  EXPECT_TRUE(KPT_KEYPOINTS_DB(db.get()).save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), saved(*db));
}

TEST_F(SaveAtomically, MakesAFileThatWasNotThere) {
  EXPECT_TRUE(small_database()->save_atomically(m_folder.file("new.xml")));
  EXPECT_EQ(read_file(m_folder.file("new.xml")), saved(*small_database()));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml", "new.xml"));
}

TEST_F(SaveAtomically, LinksAFileThatWasNotThereStraightToItsName) {
  const DATABASE db = small_database();
  const SYSTEM_CALLS calls;
  EXPECT_TRUE(db->save_atomically(m_folder.file("new.xml")));
  EXPECT_THAT(calls.names(), ElementsAre("write", "fsync", "linkat", "fsync"));
}

TEST_F(SaveAtomically, WritesBesideTheTargetWhereEveryFileHasAName) {
  SYSTEM_CALLS calls;
  calls.refuse_nameless_files();
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), saved(*small_database()));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_F(SaveAtomically, TakesANameWithoutAFolderFromWhereTheProcessStands) {
  const auto body = [](const std::string& folder) {
    return ::chdir(folder.c_str()) == 0 && small_database()->save_atomically("db.xml") ? 0 : 1;
  };
  EXPECT_EQ(in_child(body, m_folder.path()), 0);
  EXPECT_EQ(read_file(m_path), saved(*small_database()));
}

TEST_F(SaveAtomically, GivesTheNewFileThePermissionsOfTheEarlierOne) {
  ASSERT_EQ(::chmod(m_path.c_str(), 0640), 0);
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  struct stat state {};
  ASSERT_EQ(::stat(m_path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0640U);
}

// A group of the process's own other than that of its files; any for a privileged process.
gid_t other_group() {
  if (::geteuid() == 0) {
    return 23456;
  }
  std::vector<gid_t> groups(64);
  groups.resize(static_cast<std::size_t>(std::max(::getgroups(64, groups.data()), 0)));
  const auto other = std::find_if(groups.begin(), groups.end(), [](gid_t group) { return group != ::getegid(); });
  return other == groups.end() ? ::getegid() : *other;
}

TEST_F(SaveAtomically, GivesTheNewFileTheOwnerAndTheGroupOfTheEarlierOne) {
  const uid_t owner = ::geteuid() == 0 ? 12345 : ::geteuid();
  ASSERT_EQ(::chown(m_path.c_str(), owner, other_group()), 0);
  ASSERT_EQ(::chmod(m_path.c_str(), 0660), 0);
  const HOST_LINES lines;
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  struct stat state {};
  ASSERT_EQ(::stat(m_path.c_str(), &state), 0);
  EXPECT_EQ(state.st_uid, owner);
  EXPECT_EQ(state.st_gid, other_group());
  EXPECT_EQ(state.st_mode & 0777U, 0660U);
  EXPECT_THAT(lines.errors(), testing::IsEmpty());
}

// A file system that takes no byte would keep the save from ending.
TEST_F(SaveAtomically, FailsWhenAWriteWritesNothing) {
  {
    const SYSTEM_CALLS calls(SYSTEM_CALLS::NOTHING_WRITTEN);
    EXPECT_FALSE(small_database()->save_atomically(m_folder.file("new.xml")));
    EXPECT_THAT(calls.names(), ElementsAre("write"));
  }
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

// What the earlier group might do is not for the members of another one.
TEST_F(SaveAtomically, SaysWhenTheOwnerAndTheGroupCannotBeKept) {
  ASSERT_EQ(::chmod(m_path.c_str(), 0664), 0);
  SYSTEM_CALLS calls;
  calls.pretend_others({true, true, false});
  const HOST_LINES lines;
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  EXPECT_THAT(calls.names(),
              ElementsAre("fchown", "fchown", "fchmod", "write", "fsync", "linkat", "renameat", "fsync"));
  EXPECT_EQ(read_file(m_path), saved(*small_database()));
  EXPECT_THAT(lines.errors(),
              ElementsAre("Keypoint Database " + m_path +
                          " is saved, but the owner or the group of the earlier file could not be kept"));
  EXPECT_THAT(lines.error_tags(), ElementsAre("EKPT_OWNER_NOT_KEPT"));
  struct stat state {};
  ASSERT_EQ(::stat(m_path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0644U);
}

struct OTHERS_CASE {
  const char* name;
  SYSTEM_CALLS::OTHERS others;
  bool is_told;
  mode_t mode;
};
void PrintTo(const OTHERS_CASE& others, std::ostream* out) { *out << others.name; }

class SaveAtomicallyOverOthersFiles : public SaveAtomically, public testing::WithParamInterface<OTHERS_CASE> {};

TEST_P(SaveAtomicallyOverOthersFiles, KeepsWhatItMayAndTellsTheRest) {
  ASSERT_EQ(::chmod(m_path.c_str(), 0664), 0);
  SYSTEM_CALLS calls;
  calls.pretend_others(GetParam().others);
  const HOST_LINES lines;
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  EXPECT_EQ(lines.error_tags().size(), GetParam().is_told ? 1U : 0U);
  struct stat state {};
  ASSERT_EQ(::stat(m_path.c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, GetParam().mode);
}

INSTANTIATE_TEST_SUITE_P(
    , SaveAtomicallyOverOthersFiles,
    testing::Values(OTHERS_CASE{"of_another_owner", {true, false, false}, true, 0664},
                    OTHERS_CASE{"of_another_group", {false, true, false}, true, 0644},
                    OTHERS_CASE{"of_another_group_that_may_get_them", {false, true, true}, false, 0664},
                    OTHERS_CASE{"of_another_owner_and_such_a_group", {true, true, true}, true, 0664}),
    [](const testing::TestParamInfo<OTHERS_CASE>& p) { return p.param.name; });

// A rename would not ask.
TEST_F(SaveAtomically, RefusesAFileThatMayNotBeWrittenAsSaveDoes) {
  ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(m_path.c_str(), 0444), 0);
  const auto body = [](const std::string& path) {
    const uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) {
      return 2;
    }
    return small_database()->save_atomically(path) || small_database()->save(path) ? 1 : 0;
  };
  EXPECT_EQ(in_child(body, m_path), 0);
  EXPECT_EQ(read_file(m_path), EARLIER);
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

// Each of its names is taken by a save that is still under way.
TEST_F(SaveAtomically, FailsWhenEveryTemporaryNameIsInUse) {
  SYSTEM_CALLS calls;
  calls.refuse_nameless_files();
  calls.pretend_all_is_locked();
  EXPECT_FALSE(small_database()->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), EARLIER);
}

TEST_F(SaveAtomically, LeavesTheEarlierFileToItsOtherNames) {
  ASSERT_EQ(::link(m_path.c_str(), m_folder.file("other.xml").c_str()), 0);
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), saved(*small_database()));
  EXPECT_EQ(read_file(m_folder.file("other.xml")), EARLIER);
}

TEST_F(SaveAtomically, FailsOnAPipeAndKeepsIt) {
  const std::string pipe = m_folder.file("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(small_database()->save_atomically(pipe));
  struct stat state {};
  ASSERT_EQ(::stat(pipe.c_str(), &state), 0);
  EXPECT_TRUE(S_ISFIFO(state.st_mode));
}

TEST_F(SaveAtomically, ReplacesTheFileBehindALinkAndKeepsTheLink) {
  const std::string link = m_folder.file("link.xml");
  ASSERT_EQ(::symlink("db.xml", link.c_str()), 0);
  EXPECT_TRUE(small_database()->save_atomically(link));
  EXPECT_EQ(read_file(m_path), saved(*small_database()));
  struct stat state {};
  ASSERT_EQ(::lstat(link.c_str(), &state), 0);
  EXPECT_TRUE(S_ISLNK(state.st_mode));
}

// A target that must not be changed.
void expect_refused(const std::string& path) {
  const HOST_LINES lines;
  EXPECT_FALSE(small_database()->save_atomically(path));
  EXPECT_THAT(lines.debug(), ElementsAre("Error: cannot write " + std::string(path.c_str())));
}

TEST_F(SaveAtomically, FailsInAFolderThatIsNotThere) {
  expect_refused(m_folder.file("missing/db.xml"));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_F(SaveAtomically, FailsOnAFolder) { expect_refused(m_folder.path()); }

TEST_F(SaveAtomically, FailsOnANameThatEndsInAFolder) {
  expect_refused(m_folder.path() + "/");
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_F(SaveAtomically, FailsOnAnEmptyName) { expect_refused(""); }

TEST_F(SaveAtomically, FailsOnANameWithANul) {
  expect_refused(m_path + std::string("\0.bak", 5));
  EXPECT_EQ(read_file(m_path), EARLIER);
}

TEST_F(SaveAtomically, FailsOnADeviceAndKeepsIt) {
  expect_refused("/dev/null");
  struct stat state {};
  ASSERT_EQ(::stat("/dev/null", &state), 0);
  EXPECT_TRUE(S_ISCHR(state.st_mode));
}

TEST_F(SaveAtomically, FailsOnALinkThatLeadsNowhere) {
  ASSERT_EQ(::symlink("missing.xml", m_folder.file("link.xml").c_str()), 0);
  expect_refused(m_folder.file("link.xml"));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml", "link.xml"));
}

TEST_F(SaveAtomically, KeepsTheEarlierFileWhenTheDiskIsFull) {
  const auto body = [](const std::string& path) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1 << 20, 1 << 20};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return large_database()->save_atomically(path) ? 1 : 0;
  };
  EXPECT_EQ(in_child(body, m_path), 0);
  EXPECT_EQ(read_file(m_path), EARLIER);
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_F(SaveAtomically, KeepsTheEarlierFileInAFolderThatMayNotBeWritten) {
  ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
  const auto body = [](const std::string& path) {
    const uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) {
      return 2;
    }
    return small_database()->save_atomically(path) ? 1 : 0;
  };
  EXPECT_EQ(in_child(body, m_path), 0);
  EXPECT_EQ(read_file(m_path), EARLIER);
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

class SaveAtomicallyBroken : public SaveAtomically, public testing::WithParamInterface<bool> {
 protected:
  // The calls of a save that succeeds.
  std::vector<std::string> calls() const {
    const std::string other = m_folder.file_of(EARLIER, "other.xml");
    const DATABASE db = large_database();
    SYSTEM_CALLS watched;
    break_in(watched);
    EXPECT_TRUE(db->save_atomically(other));
    ::unlink(other.c_str());
    return watched.names();
  }

  // Saves to `m_path` in a process of its own, which is killed before that call.
  int save_killed_at(unsigned at) const {
    const auto body = [](const std::string& argument) {
      const DATABASE db = large_database();
      SYSTEM_CALLS watched(SYSTEM_CALLS::KILL, static_cast<unsigned char>(argument.front()));
      break_in(watched);
      return db->save_atomically(argument.substr(1)) ? 0 : 1;
    };
    return in_child(body, std::string(1, static_cast<char>(at)) + m_path);
  }

  static void break_in(SYSTEM_CALLS& watched) {
    if (GetParam()) {
      watched.refuse_nameless_files();
    }
  }
};

TEST_P(SaveAtomicallyBroken, TakesTheStepsInThisOrder) {
  std::vector<std::string> expected{"fchmod", "write", "write", "write", "write", "fsync"};
  if (!GetParam()) {
    expected.emplace_back("linkat");
  }
  expected.insert(expected.end(), {"renameat", "fsync"});
  EXPECT_EQ(calls(), expected);
}

TEST_P(SaveAtomicallyBroken, KeepsTheEarlierFileWhicheverStepFails) {
  const DATABASE db = large_database();
  const unsigned steps = static_cast<unsigned>(calls().size());
  for (unsigned at = 0; at + 1 < steps; ++at) {
    {
      SYSTEM_CALLS watched(SYSTEM_CALLS::FAILURE, at);
      break_in(watched);
      EXPECT_FALSE(db->save_atomically(m_path)) << at;
    }
    EXPECT_EQ(read_file(m_path), EARLIER) << at;
    EXPECT_THAT(m_folder.names(), ElementsAre("db.xml")) << at;
  }
}

// The new file is complete and in place, and the earlier one is gone, so false
// would not help.
TEST_P(SaveAtomicallyBroken, SucceedsWhenTheFolderCannotBeSynced) {
  const DATABASE db = large_database();
  const unsigned last = static_cast<unsigned>(calls().size()) - 1;
  {
    SYSTEM_CALLS watched(SYSTEM_CALLS::FAILURE, last);
    break_in(watched);
    EXPECT_TRUE(db->save_atomically(m_path));
  }
  EXPECT_EQ(read_file(m_path), saved(*db));
  EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
}

TEST_P(SaveAtomicallyBroken, LeavesNothingWhereNothingWasWhicheverStepFails) {
  const DATABASE db = large_database();
  for (unsigned at = 0; at < 5; ++at) {  // up to the sync of the file itself
    SYSTEM_CALLS watched(SYSTEM_CALLS::FAILURE, at);
    break_in(watched);
    EXPECT_FALSE(db->save_atomically(m_folder.file("new.xml"))) << at;
    EXPECT_THAT(m_folder.names(), ElementsAre("db.xml")) << at;
  }
}

TEST_P(SaveAtomicallyBroken, LeavesOneFileOrTheOtherWheneverItIsKilled) {
  const std::string after = saved(*large_database());
  const unsigned steps = static_cast<unsigned>(calls().size());
  for (unsigned at = 0; at <= steps; ++at) {
    EXPECT_TRUE(small_database()->save_atomically(m_path));  // this removes what the last save left
    write_file(m_path, EARLIER);
    EXPECT_EQ(save_killed_at(at), at < steps ? -SIGKILL : 0);
    EXPECT_TRUE(read_file(m_path) == (at + 1 < steps ? EARLIER : after)) << at;
  }
}

TEST_P(SaveAtomicallyBroken, RemovesWhatAnEarlierOneLeftThatWasKilled) {
  const unsigned steps = static_cast<unsigned>(calls().size());
  for (unsigned at = 0; at < steps; ++at) {
    save_killed_at(at);
    save_killed_at(at);
    SYSTEM_CALLS watched;
    break_in(watched);
    EXPECT_TRUE(small_database()->save_atomically(m_path)) << at;
    EXPECT_THAT(m_folder.names(), ElementsAre("db.xml")) << at;
  }
}

// The step before the rename, when the new file has a temporary name.
TEST_P(SaveAtomicallyBroken, LeavesAloneWhatAnotherProcessHasUnderWay) {
  save_killed_at(static_cast<unsigned>(calls().size()) - 2);
  const std::vector<std::string> both = m_folder.names();
  ASSERT_EQ(both.size(), 2U);
  const std::string theirs = m_folder.file(both.front());
  const std::string their_bytes = read_file(theirs);
  const int file = ::open(theirs.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(file, LOCK_EX | LOCK_NB), 0);
  SYSTEM_CALLS watched;
  break_in(watched);
  EXPECT_TRUE(small_database()->save_atomically(m_path));
  ::close(file);
  EXPECT_EQ(read_file(theirs), their_bytes);
  EXPECT_EQ(m_folder.names(), both);
}

INSTANTIATE_TEST_SUITE_P(WhereEveryFileHasAName, SaveAtomicallyBroken, testing::Bool());

}  // namespace
