#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include "db/kpt/kpt_register_texts.h"
#include "db/kpt/kpt_types.h"
#include "tests/support/seed.h"

namespace {

// The rule, applied byte by byte.
std::uint64_t by_the_byte(std::uint64_t h, std::string_view text) {
  for (const char c : text) {
    h = h * 17 + static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<signed char>(c)));
  }
  return h;
}

std::string random_bytes(std::mt19937& random, std::size_t length) {
  std::string text;
  for (std::size_t k = 0; k < length; ++k) {
    text += static_cast<char>(random() & 0xFFU);
  }
  return text;
}

TEST(StringHash, OfTheEmptyTextIsTheStartValue) {
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()(std::string_view()), 0U);
  EXPECT_EQ(kpt_hash_bytes(12345, ""), 12345U);
}

TEST(StringHash, MultipliesBySeventeenAndAddsEachByte) {
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("a"), 97U);
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("ab"), 97U * 17 + 98);
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("q_a"), (113U * 17 + 95) * 17 + 97);
}

TEST(StringHash, TakesBytesAsSigned) {
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("\xFF"), static_cast<std::size_t>(-1));
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("\x80"), static_cast<std::size_t>(-128));
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("\x01\xFF"), 16U);
}

TEST(StringHash, CountsZeroBytes) {
  using namespace std::string_view_literals;
  EXPECT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()("a\0"sv), 97U * 17);
  EXPECT_NE(STL_CASE_SENSITIVE_HASH_COMPARE()("a\0"sv), STL_CASE_SENSITIVE_HASH_COMPARE()("a"sv));
}

TEST(StringHash, IsTheByteRuleForEveryLength) {
  std::mt19937 random(kpt_test::seed());
  for (std::size_t length = 0; length <= 64; ++length) {
    for (int k = 0; k < 50; ++k) {
      const std::string text = random_bytes(random, length);
      ASSERT_EQ(STL_CASE_SENSITIVE_HASH_COMPARE()(text), by_the_byte(0, text)) << "length " << length;
    }
  }
}

TEST(StringHash, IsTheByteRuleAtEveryAlignment) {
  std::mt19937 random(kpt_test::seed());
  const std::string text = random_bytes(random, 100);
  for (std::size_t from = 0; from < 16; ++from) {
    for (std::size_t length = 0; length <= 64; ++length) {
      const std::string_view part = std::string_view(text).substr(from, length);
      ASSERT_EQ(kpt_hash_bytes(7, part), by_the_byte(7, part));
    }
  }
}

TEST(StringHash, IsTheByteRuleForBytesOfOneValue) {
  for (const char byte : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
    for (std::size_t length = 0; length <= 64; ++length) {
      const std::string text(length, byte);
      ASSERT_EQ(kpt_hash_bytes(0, text), by_the_byte(0, text));
    }
  }
}

TEST(StringHash, ContinuesWhereAnotherTextEnded) {
  std::mt19937 random(kpt_test::seed());
  const std::string text = random_bytes(random, 40);
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    const std::string_view whole = text;
    ASSERT_EQ(kpt_hash_bytes(kpt_hash_bytes(0, whole.substr(0, cut)), whole.substr(cut)), by_the_byte(0, whole));
  }
}

TEST(StringHash, ComparesByteWiseAndCaseSensitive) {
  using namespace std::string_view_literals;
  const STL_CASE_SENSITIVE_HASH_COMPARE equal;
  EXPECT_TRUE(equal("reg"sv, "reg"sv));
  EXPECT_FALSE(equal("reg"sv, "Reg"sv));
  EXPECT_FALSE(equal("reg"sv, "reg\0"sv));
  EXPECT_NE(equal("reg"sv), equal("Reg"sv));
}

TEST(StringPairHash, IsThatOfBothTextsOneBehindTheOther) {
  const KPT_STRINGPAIR_HASH_COMPARE hash;
  EXPECT_EQ(hash({"state_reg", "dff"}), by_the_byte(0, "state_regdff"));
  EXPECT_EQ(hash({"state_reg", ""}), STL_CASE_SENSITIVE_HASH_COMPARE()("state_reg"));
  EXPECT_EQ(hash({"", ""}), 0U);
}

// Nothing separates the two texts, so these two pairs have the same hash; only
// the comparison distinguishes them.
TEST(StringPairHash, DoesNotSeeWhereTheFirstTextEnds) {
  const KPT_STRINGPAIR_HASH_COMPARE pairs;
  EXPECT_EQ(pairs({"ab", "c"}), pairs({"a", "bc"}));
  EXPECT_FALSE(pairs({"ab", "c"}, {"a", "bc"}));
}

TEST(StringPairHash, ComparesTheFirstThenTheSecondText) {
  const KPT_STRINGPAIR_HASH_COMPARE equal;
  EXPECT_TRUE(equal({"a", "b"}, {"a", "b"}));
  EXPECT_FALSE(equal({"a", "b"}, {"a", "c"}));
  EXPECT_FALSE(equal({"a", "b"}, {"c", "b"}));
}

// Names with one string hash are easy to make, so an index that used it could be made slow.
TEST(RegisterTexts, NamesOfOneStringHashHaveManyHashes) {
  std::set<std::uint32_t> hashes;
  for (unsigned choice = 0; choice < 256; ++choice) {
    std::string name;
    for (unsigned bit = 0; bit < 8; ++bit) {
      name += (choice >> bit & 1U) != 0 ? "as" : "bb";
    }
    ASSERT_EQ(kpt_hash_bytes(0, name), kpt_hash_bytes(0, "bbbbbbbbbbbbbbbb"));
    hashes.insert(KPT_REGISTER_TEXTS(name).hash);
  }
  EXPECT_GT(hashes.size(), 250U);
}

// Salted hashes of 32 bits are equal by chance once in four billion pairs.
TEST(RegisterTexts, EveryByteOfANameCounts) {
  for (std::size_t size = 1; size < 40; ++size) {
    const std::string name(size, 'n');
    for (std::size_t k = 0; k < size; ++k) {
      std::string other = name;
      other[k] = 'm';
      EXPECT_NE(KPT_REGISTER_TEXTS(name).hash, KPT_REGISTER_TEXTS(other).hash) << size << " " << k;
    }
  }
}

TEST(RegisterTexts, TheLengthOfANameCounts) {
  std::set<std::uint32_t> hashes;
  for (std::size_t size = 0; size < 40; ++size) {
    hashes.insert(KPT_REGISTER_TEXTS(std::string(size, '\0')).hash);
  }
  EXPECT_EQ(hashes.size(), 40U);
}

TEST(RegisterTexts, HashDependsOnNothingBesideTheText) {
  for (std::size_t size = 0; size < 40; ++size) {
    const std::string text = std::string(size, 'n');
    for (std::size_t at = 0; at < 9; ++at) {
      const std::string around = std::string(at, '<') + text + std::string(9, '>');
      EXPECT_EQ(KPT_REGISTER_TEXTS(std::string_view(around).substr(at, size)).hash, KPT_REGISTER_TEXTS(text).hash);
    }
  }
}

TEST(RegisterTexts, HashIsOfNameAndTypeAndNotOfTheEntity) {
  EXPECT_EQ(KPT_REGISTER_TEXTS("u", "E", "dff").hash, KPT_REGISTER_TEXTS("u", "F", "dff").hash);
  EXPECT_NE(KPT_REGISTER_TEXTS("u", "E", "dff").hash, KPT_REGISTER_TEXTS("u", "E", "latch").hash);
  EXPECT_NE(KPT_REGISTER_TEXTS("u", "E", "dff").hash, KPT_REGISTER_TEXTS("v", "E", "dff").hash);
}

}  // namespace
