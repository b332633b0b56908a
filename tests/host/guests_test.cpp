#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "h/mem_alloc_sys.h"
#include "host/kpt_host.h"

namespace {

using testing::Contains;
using testing::Not;

class GUEST {
 public:
  explicit GUEST(const char* file) : m_library(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}
  ~GUEST() { dlclose(m_library); }
  GUEST(const GUEST&) = delete;
  GUEST& operator=(const GUEST&) = delete;

  unsigned long allocate() const {
    return reinterpret_cast<unsigned long (*)()>(dlsym(m_library, "guest_allocates"))();
  }

 private:
  void* m_library;
};

std::vector<std::string> types() {
  std::vector<std::string> names;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    names.push_back(tracker.type);
  }
  return names;
}

TEST(Guests, ShareOneHost) {
  const GUEST one(GUEST_ONE);
  const GUEST two(GUEST_TWO);
  EXPECT_EQ(one.allocate(), 105U);
  EXPECT_EQ(two.allocate(), 105U);
  EXPECT_THAT(types(), Contains("one::OWN").Times(1));
  EXPECT_THAT(types(), Contains("two::OWN").Times(1));
}

TEST(Guests, TakeTheirTrackersAlong) {
  const GUEST one(GUEST_ONE);
  EXPECT_EQ(one.allocate(), 105U);
  {
    const GUEST two(GUEST_TWO);
    EXPECT_EQ(two.allocate(), 105U);
  }
  EXPECT_THAT(types(), Contains("one::OWN"));
  EXPECT_THAT(types(), Not(Contains("two::OWN")));
}

TEST(Guests, ALibraryMayComeBack) {
  for (int round = 0; round < 3; ++round) {
    const GUEST one(GUEST_ONE);
    EXPECT_EQ(one.allocate(), 105U);
    EXPECT_THAT(types(), Contains("one::OWN").Times(1));
  }
}

}  // namespace
