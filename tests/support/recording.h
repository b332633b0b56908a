// A database to record into, and the lines that the host gets meanwhile.
#ifndef TESTS_SUPPORT_RECORDING_H
#define TESTS_SUPPORT_RECORDING_H

#include <gtest/gtest.h>

#include "tests/support/databases.h"
#include "tests/support/host_lines.h"

namespace kpt_test {

class RECORDING : public testing::Test {
 protected:
  DATABASE db;
  HOST_LINES lines;
};

}  // namespace kpt_test

#endif
