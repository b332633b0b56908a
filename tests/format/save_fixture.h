// What the tests of saving completely or not at all share: a small database, and a
// file of an earlier day in a folder of its own.
//
// Ownership: the fixture owns the folder and removes it.
#ifndef TESTS_FORMAT_SAVE_FIXTURE_H
#define TESTS_FORMAT_SAVE_FIXTURE_H

#include <gtest/gtest.h>

#include <string>

#include "tests/format/databases.h"

namespace kpt_test {

inline constexpr char EARLIER[] = "of an earlier day";

inline DATABASE small_database() {
  DATABASE db = new_database("d");
  db->add_to_register_set(KPT_REFERENCE_SET, 1, "a");
  return db;
}

class SAVE_TEST : public testing::Test {
 protected:
  FOLDER m_folder;
  std::string m_path = m_folder.file_of(EARLIER);
};

}  // namespace kpt_test

#endif
