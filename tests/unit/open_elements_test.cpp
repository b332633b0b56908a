// The names of the open elements of a file.
#include "db/kpt/load/kpt_open_elements.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// With the readable bytes after its end that the class asks for.
class NAME {
 public:
  explicit NAME(const std::string& name)
      : m_bytes(name + std::string(2 * kpt_plain::BLOCK, '\0')), m_size(name.size()) {}
  std::string_view view() const { return {m_bytes.data(), m_size}; }

 private:
  std::string m_bytes;
  std::size_t m_size;
};

TEST(OpenElements, AreNoneAtTheStart) { EXPECT_TRUE(KPT_OPEN_ELEMENTS().empty()); }

TEST(OpenElements, TheLastIsFoundByItsWholeName) {
  KPT_OPEN_ELEMENTS open;
  open.push(NAME("kp_set").view());
  ASSERT_EQ(open.size_of_last(), 6U);
  EXPECT_TRUE(open.last_is_at(NAME("kp_set").view().data(), 6));
  EXPECT_TRUE(open.last_is_at(NAME("kp_set>").view().data(), 6));
  EXPECT_FALSE(open.last_is_at(NAME("kp_sat").view().data(), 6));
  EXPECT_FALSE(open.last_is_at(NAME("kp_se").view().data(), 6));
}

TEST(OpenElements, CloseFromTheLastToTheFirst) {
  std::vector<NAME> names;
  KPT_OPEN_ELEMENTS open;
  for (std::size_t size = 1; size < 100; ++size) {
    names.emplace_back(std::string(size, static_cast<char>('a' + size % 26)));
    open.push(names.back().view());
  }
  for (; !names.empty(); names.pop_back()) {
    const std::string_view name = names.back().view();
    ASSERT_EQ(open.size_of_last(), name.size());
    ASSERT_TRUE(open.last_is_at(name.data(), name.size()));
    open.pop(name.size());
  }
  EXPECT_TRUE(open.empty());
}

}  // namespace
