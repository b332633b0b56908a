// What a writer puts into its file.
//
// Ownership: plain values.
#ifndef TESTS_FORMAT_WRITTEN_H
#define TESTS_FORMAT_WRITTEN_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "db/kpt/kpt_xml_writer.h"
#include "tests/format/databases.h"

namespace kpt_test {

// The text that a writer puts into its file.
inline std::string written(const std::function<void(KPT_XML_WRITER&)>& steps) {
  const FOLDER folder;
  {
    KPT_XML_WRITER writer(folder.file("out"));
    EXPECT_TRUE(writer.start_file());
    steps(writer);
  }
  return read_file(folder.file("out"));
}

}  // namespace kpt_test

#endif
