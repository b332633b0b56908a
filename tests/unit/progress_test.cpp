// How far the long operations say that they have come.
#include "db/kpt/kpt_progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/host_lines.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TOLD : public KPT_PROGRESS {
 public:
  void at(std::size_t done, std::size_t all) override {
    m_done.push_back(done);
    m_all = all;
  }
  const std::vector<std::size_t>& done() const { return m_done; }
  std::size_t all() const { return m_all; }

 private:
  std::vector<std::size_t> m_done;
  std::size_t m_all = 0;
};

// A stage of 2,000 registers and maps, which leads from names that begin with one text to others.
KPT_UNREGISTERED_DB stage(const std::string& from, const std::string& to) {
  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("stage");
  for (int k = 0; k < 2000; ++k) {
    db->associate_registers_signal_to_signal(from + std::to_string(k), to + std::to_string(k));
  }
  return db;
}

TEST(Progress, OfASaveCountsRegistersAndMaps) {
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("kpt_progress_" + std::to_string(::getpid()) + ".xml");
  TOLD told;
  ASSERT_TRUE(stage("a", "b").save_atomically(file.string(), &told));
  std::filesystem::remove(file);
  EXPECT_EQ(told.all(), 6000U);
  EXPECT_THAT(told.done(), ElementsAre(1, 1025, 2049, 3073, 4097, 5121, 6000));
}

TEST(Progress, OfASaveThatFailsDoesNotEnd) {
  TOLD told;
  EXPECT_FALSE(stage("a", "b").save_atomically("/no/folder/d.xml", &told));
  EXPECT_TRUE(told.done().empty() || told.done().back() < told.all());
}

TEST(Progress, OfATextThatCannotBeSavedDoesNotBegin) {
  const kpt_test::HOST_LINES lines;
  KPT_UNREGISTERED_DB db = KPT_UNREGISTERED_DB::create("d");
  db->associate_registers_signal_to_signal("\x01", "b");
  TOLD told;
  EXPECT_FALSE(db.save_atomically("never.xml", &told));
  EXPECT_THAT(told.done(), IsEmpty());
}

// Every register, every map, and twice the registers of the first netlist and once those of the last.
TEST(Progress, OfACompositionCountsTheRegistersAndMapsOfAllStages) {
  const KPT_UNREGISTERED_DB first = stage("a", "b");
  const KPT_UNREGISTERED_DB second = stage("b", "c");
  const KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  TOLD told;
  KPT_COMPOSITION_OPTIONS options;
  options.progress = &told;
  ASSERT_TRUE(all->compose({*first, *second}, options));
  EXPECT_EQ(told.all(), 8000U + 4000U + 6000U);
  std::vector<std::size_t> expected;
  for (std::size_t done = 1; done < told.all(); done += 1024) {
    expected.push_back(done);
  }
  expected.push_back(told.all());
  EXPECT_EQ(told.done(), expected);
}

TEST(Progress, OfACompositionThatIsRefusedDoesNotEnd) {
  const KPT_UNREGISTERED_DB first = stage("a", "b");
  const KPT_UNREGISTERED_DB all = KPT_UNREGISTERED_DB::create("all");
  TOLD told;
  KPT_COMPOSITION_OPTIONS options;
  options.progress = &told;
  EXPECT_FALSE(all->compose({*first, *first}, options));
  EXPECT_LT(told.done().back(), told.all());
}

// The registers between the stages, those of the last netlist, and the maps of each of three loops.
TEST(Progress, OfAUnionCountsRegistersAndTheMapsOfItsLoops) {
  const KPT_UNREGISTERED_DB first = stage("a", "b");
  const KPT_UNREGISTERED_DB second = stage("b", "c");
  TOLD told;
  ASSERT_TRUE(first->unite(*second, &told));
  EXPECT_EQ(told.all(), 2000U + 2000U + 6000U);
  EXPECT_THAT(told.done(), ElementsAre(1, 1025, 4001, 5025, 6049, 7073, 8097, 9121, 10000));
}

// The pass-through maps are not known before, so the loops have more maps than counted.
TEST(Progress, OfAUnionNeverExceedsTheWhole) {
  const KPT_UNREGISTERED_DB first = stage("a", "b");
  const KPT_UNREGISTERED_DB second = stage("c", "d");
  TOLD told;
  ASSERT_TRUE(first->unite(*second, &told));
  for (std::size_t k = 1; k < told.done().size(); ++k) {
    EXPECT_LE(told.done()[k - 1], told.done()[k]);
  }
  EXPECT_EQ(told.done().back(), told.all());
}

TEST(Progress, ChangesNoResult) {
  TOLD told;
  const KPT_UNREGISTERED_DB first = stage("a", "b");
  const KPT_UNREGISTERED_DB second = stage("b", "c");
  ASSERT_TRUE(first->unite(*second, &told));
  EXPECT_EQ(first->get_reference_register_transformation("a7").get_transformed(0).get_name(), "c7");
  EXPECT_EQ(first->get_transformation_set().size(), 2000U);
}

}  // namespace
