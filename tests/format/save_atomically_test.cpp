// Saving completely or not at all.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "db/kpt/kpt_keypoints_db.h"
#include "tests/format/databases.h"
#include "tests/format/system_calls.h"
#include "tests/support/host_lines.h"

namespace {

using namespace kpt_test;
using testing::ElementsAre;

constexpr char EARLIER[] = "of an earlier day";

DATABASE small_database() {
  DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  return db;
}

// Large enough for several writes.
DATABASE large_database() {
  DATABASE db = new_database("d");
  for (long id = 0; id < 40; ++id) {
    db->add_to_register_set(KPT_REFERENCE_SET, id, std::to_string(id) + std::string(100000, 'n'));
  }
  return db;
}

class SaveAtomically : public testing::Test {
 protected:
  FOLDER m_folder;
  std::string m_path = m_folder.file_of(EARLIER);
};

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
      SYSTEM_CALLS watched(SYSTEM_CALLS::KILL, static_cast<unsigned>(argument.front()));
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

// A name that a file cannot hold, and the reason.
struct NAMES {
  const char* why;
  std::string text;
};

class SaveAtomicallyNames : public SaveAtomically, public testing::WithParamInterface<NAMES> {
 protected:
  void expect_refused_for(KPT_KEYPOINTS_DB_IMPL& db, const std::string& name) {
    const HOST_LINES lines;
    EXPECT_FALSE(db.save_atomically(m_path));
    EXPECT_THAT(lines.debug(), ElementsAre("Error: register " + name +
                                           " cannot be saved: a file cannot hold its name, entity or type"));
    EXPECT_EQ(read_file(m_path), EARLIER);
    EXPECT_THAT(m_folder.names(), ElementsAre("db.xml"));
  }
};

TEST_P(SaveAtomicallyNames, RefusesItOfASignal) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_TRANSFORMED_SET, 1, GetParam().text);
  expect_refused_for(*db, GetParam().text.c_str());
}

TEST_P(SaveAtomicallyNames, RefusesItOfAnEntity) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "q", GetParam().text, "dff");
  expect_refused_for(*db, "q");
}

TEST_P(SaveAtomicallyNames, RefusesItOfARegisterType) {
  const DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "q", "u1", GetParam().text);
  expect_refused_for(*db, "q");
}

TEST_P(SaveAtomicallyNames, RefusesItOfADatabase) {
  const HOST_LINES lines;
  EXPECT_FALSE(new_database(GetParam().text)->save_atomically(m_path));
  EXPECT_THAT(lines.debug(), ElementsAre(std::string("Error: database ") + GetParam().text.c_str() +
                                         " cannot be saved: a file cannot hold its name"));
  EXPECT_EQ(read_file(m_path), EARLIER);
}

INSTANTIATE_TEST_SUITE_P(, SaveAtomicallyNames,
                         testing::Values(NAMES{"opens_a_tag", "a<b"}, NAMES{"starts_a_reference", "a&b"},
                                         NAMES{"ends_an_attribute", "a\"b"}, NAMES{"ends_a_section", "a]]>b"},
                                         NAMES{"tab", "a\tb"}, NAMES{"line_end", "a\nb"}, NAMES{"delete", "a\x7F"},
                                         NAMES{"beyond_ascii", "caf\xC3\xA9"}, NAMES{"nul", std::string("a\0b", 3)}),
                         [](const testing::TestParamInfo<NAMES>& p) { return p.param.why; });

TEST_F(SaveAtomically, RefusesADatabaseWithoutAName) {
  EXPECT_FALSE(new_database("")->save_atomically(m_path));
  EXPECT_EQ(read_file(m_path), EARLIER);
}

TEST_F(SaveAtomically, TakesEveryOtherCharacterAndGivesItBack) {
  const COUNTERS counters(0, 0);
  std::string all;
  for (char c = ' '; c <= '~'; ++c) {
    all += c == '<' || c == '&' || c == '"' ? "" : std::string(1, c);
  }
  const DATABASE db = new_database(all);
  db->add_to_register_set(KPT_REFERENCE_SET, 0, all + "]]");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "");
  db->add_to_register_set(KPT_REFERENCE_SET, 2, " ", all, "");
  EXPECT_TRUE(db->save_atomically(m_path));
  const LOADED loaded = load(m_path);
  EXPECT_TRUE(loaded.result);
  EXPECT_THAT(registers(*loaded.db->get_reference_set()), ElementsAre("0:" + all + "]]", "1:", "2: /" + all + "/"));
}

}  // namespace
