// Runs the recording example as it is built and compares all its output, byte for byte.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

struct RUN {
  std::string output;
  int status;
};

RUN run(const char* program) {
  RUN result{"", -1};
  std::FILE* pipe = popen(program, "r");
  if (pipe == nullptr) {
    return result;
  }
  char block[4096];
  for (std::size_t n = 0; (n = std::fread(block, 1, sizeof block, pipe)) > 0;) {
    result.output.append(block, n);
  }
  result.status = pclose(pipe);
  return result;
}

std::string text_of_file(const char* name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(RecordExample, RecordsEveryKindOfEventAndTellsWhatBecameOfEachRegister) {
  const RUN example = run(RECORD_EXAMPLE);
  EXPECT_EQ(example.status, 0);
  EXPECT_EQ(example.output, text_of_file(RECORD_EXAMPLE_OUTPUT));
}

TEST(RecordExample, SaysTheSameOnEveryRun) {
  const RUN first = run(RECORD_EXAMPLE);
  EXPECT_FALSE(first.output.empty());
  EXPECT_EQ(run(RECORD_EXAMPLE).output, first.output);
}

}  // namespace
