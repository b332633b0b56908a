// Slots for objects whose constructors may fail.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "db/kpt/containers/kpt_pool.h"

namespace {

// It has a table of virtual functions before anything can fail, like a keypoint.
class OBJECT {
 public:
  explicit OBJECT(bool fails) : m_number(7) {
    if (fails) {
      throw std::bad_alloc();
    }
  }
  virtual ~OBJECT() = default;
  OBJECT(const OBJECT&) = delete;
  OBJECT& operator=(const OBJECT&) = delete;

  long number() const { return m_number; }

 private:
  long m_number;
};

class Pool : public testing::Test {
 protected:
  ~Pool() override {
    for (OBJECT* object : made) {
      std::destroy_at(object);
    }
  }
  OBJECT* make() { return made.emplace_back(pool.construct(false)); }

  KPT_POOL<OBJECT> pool;
  std::vector<OBJECT*> made;
};

TEST_F(Pool, PlaceOfAFailedConstructorIsTheNextToBeTaken) {
  EXPECT_THROW(pool.construct(true), std::bad_alloc);
  EXPECT_EQ(pool.count(), 0U);
  OBJECT* first = make();
  OBJECT* second = make();
  OBJECT* third = make();
  EXPECT_EQ(pool.count(), 3U);
  EXPECT_EQ(pool.at(0), first);
  EXPECT_EQ(pool.at(1), second);
  EXPECT_EQ(pool.at(2), third);
  EXPECT_EQ(third->number(), 7);
}

TEST_F(Pool, FailedConstructorLeavesZeros) {
  EXPECT_THROW(pool.construct(true), std::bad_alloc);
  const char zeros[sizeof(OBJECT)] = {};
  EXPECT_EQ(std::memcmp(static_cast<const void*>(pool.at(0)), zeros, sizeof zeros), 0);
}

TEST_F(Pool, FailedConstructorLosesNoPlaceThatWasGivenBack) {
  OBJECT* a = pool.construct(false);
  OBJECT* b = pool.construct(false);
  pool.destroy(a);
  pool.destroy(b);
  EXPECT_THROW(pool.construct(true), std::bad_alloc);
  EXPECT_EQ(make(), b);
  EXPECT_EQ(make(), a);
  EXPECT_EQ(make(), pool.at(2));
}

}  // namespace
