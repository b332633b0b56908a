// The memory of a map: its own block, as its class's operator new requests it,
// and every byte that the host counts.
#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "host/kpt_host.h"
#include "tests/support/host_lines.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

// Present when the program is built with the address checks: it sees every allocation of the process.
extern "C" __attribute__((weak)) int __sanitizer_install_malloc_and_free_hooks(void (*on_malloc)(const volatile void*,
                                                                                                 std::size_t),
                                                                               void (*on_free)(const volatile void*));

namespace {

using kpt_test::make_table;
using kpt_test::REGISTERS;

using MAP = KPT_TRANSFORMATION_IMPL;

std::size_t s_allocations = 0;
std::size_t s_allocated_bytes = 0;

void count_allocation(const volatile void*, std::size_t size) {
  ++s_allocations;
  s_allocated_bytes += size;
}

void ignore_release(const volatile void*) {}

bool allocations_are_seen() {
  static const bool seen = __sanitizer_install_malloc_and_free_hooks != nullptr &&
                           __sanitizer_install_malloc_and_free_hooks(count_allocation, ignore_release) != 0;
  return seen;
}

template <class ACTION>
std::size_t allocations_of(ACTION action) {
  const std::size_t before = s_allocations;
  action();
  return s_allocations - before;
}

unsigned long host_bytes() {
  unsigned long bytes = 0;
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    bytes += tracker.live_bytes;
  }
  return bytes;
}

TEST(MapSize, APlainMapOfOneRegisterASideIsItsOwnBlockAlone) {
  REGISTERS k;
  KPT_KEYPOINT* r = k["r"];
  KPT_KEYPOINT* t = k["t"];
  const unsigned long before = host_bytes();
  const std::unique_ptr<MAP> map(new MAP(r, t));
  const unsigned long bytes = sizeof(MAP) + host_bytes() - before;
  RecordProperty("plain_map_bytes", static_cast<int>(bytes));
  std::cout << "plain map, 1 register a side: " << bytes << " bytes" << std::endl;
  EXPECT_LE(bytes, 200U);
  EXPECT_EQ(bytes, sizeof(MAP));
}

TEST(MapSize, AStateMachineOf4RegistersASideAnd8States) {
  REGISTERS k;
  const KPT_KEYPOINT_LIST r = k.list("a b c d");
  const KPT_KEYPOINT_LIST t = k.list("w x y z");
  const KPT_STATE_TABLE_IMPL table = make_table(
      {"0000 1000", "0001 0100", "0010 0010", "0011 0001", "0100 1001", "0101 0101", "0110 0011", "0111 1111"});
  const unsigned long before = host_bytes();
  const std::unique_ptr<MAP> map(new MAP(r, t, table));
  const unsigned long bytes = sizeof(MAP) + sizeof(KPT_STATE_TABLE_IMPL) + host_bytes() - before;
  RecordProperty("fsm_map_bytes", static_cast<int>(bytes));
  std::cout << "FSM map, 4 registers a side, 8 states: " << bytes << " bytes" << std::endl;
  EXPECT_LE(bytes, 512U);
}

TEST(MapSize, APlainMapIsMadeInOneAllocation) {
  if (!allocations_are_seen()) {
    GTEST_SKIP() << "built without the address checks";
  }
  REGISTERS k;
  KPT_KEYPOINT* r = k["r"];
  KPT_KEYPOINT* t = k["t"];
  const std::size_t bytes_before = s_allocated_bytes;
  EXPECT_EQ(allocations_of([&] { const std::unique_ptr<MAP> map(new MAP(r, t)); }), 1U);
  EXPECT_EQ(s_allocated_bytes - bytes_before, sizeof(MAP));
  EXPECT_EQ(allocations_of([&] { const MAP map(r, t); }), 0U);
}

TEST(MapSize, LoadedSidesAreTakenOverNotCopied) {
  if (!allocations_are_seen()) {
    GTEST_SKIP() << "built without the address checks";
  }
  REGISTERS k;
  NI_PAIR_VECTOR r = k.side("a b c~d e|f~");
  NI_PAIR_VECTOR t = k.side("x y~|z~|w~");
  KPT_STATE_TABLE_IMPL table(100, 2, 3);
  table.set_transformed_entry(100, 3, true);
  NI_PAIR_VECTOR plain_r(r);
  NI_PAIR_VECTOR plain_t(t);
  EXPECT_EQ(allocations_of([&] { const MAP map(std::move(plain_r), std::move(plain_t), KPT_NOT_ELIMINATED); }), 0U);
  // The block of the table.
  EXPECT_EQ(allocations_of([&] { const MAP map(std::move(r), std::move(t), std::move(table), KPT_NOT_ELIMINATED); }),
            1U);
}

TEST(MapSize, QueriesOnAPlainMapAllocateNothing) {
  if (!allocations_are_seen()) {
    GTEST_SKIP() << "built without the address checks";
  }
  REGISTERS k;
  MAP map(k["r"], k["t"]);
  const MAP other(map);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  KPT_KEYPOINT* r = k["r"];
  KPT_KEYPOINT* t = k["t"];
  std::size_t visited = 0;
  EXPECT_EQ(allocations_of([&] {
              bool found = false;
              map.find_index_in_t_vector(t, &found);
              visited += found ? 1U : 0U;
              visited += map.get_r_representative(0) == r ? 1U : 0U;
              visited += map.get_r_representative_equivalents(0).size();
              visited += map.get_t_representative_inverted_equivalents(0).size();
              visited += map.get_t_registers_at_index(0).size();
              map.for_each_register_at_index(KPT_REFERENCE_SET, 0, [&](KPT_KEYPOINT*) { ++visited; });
              visited += map.association_is_positive_unate(0, 0) ? 1U : 0U;
              visited += map.state_table().get_num_states();
              visited += map == other ? 1U : 0U;
              visited += map.t_equals_r(other) ? 1U : 0U;
              visited += map.get_attribute("none").size();
              visited += handle.get_reference(0).is_null() ? 1U : 0U;
              visited += handle.get_transformed_equivalents(0).size();
              visited += handle.get_number_of_states();
            }),
            0U);
  EXPECT_EQ(visited, 10U);
}

TEST(MapSize, QueriesOnLargerGroupsAllocateNothingButTheListTheyReturn) {
  if (!allocations_are_seen()) {
    GTEST_SKIP() << "built without the address checks";
  }
  REGISTERS k;
  MAP map(k.side("a b c~d"), k.side("x~y z u"), make_table({"0 0", "1 1"}), KPT_NOT_ELIMINATED);
  const KPT_REGISTER_TRANSFORMATION handle(&map);
  std::size_t visited = 0;
  const auto visit = [&](KPT_KEYPOINT*) { ++visited; };
  EXPECT_EQ(allocations_of([&] {
              map.for_each_register_at_index(KPT_REFERENCE_SET, 0, visit);
              map.for_each_equivalent(KPT_REFERENCE_SET, 0, visit);
              map.for_each_inverted_equivalent(KPT_TRANSFORMED_SET, 0, visit);
              MAP::for_each_keypoint(map.t_vec(), visit);
              visited += map.association_is_negative_unate(0, 0) ? 1U : 0U;
              visited += map.t_equals_r(map) ? 1U : 0U;
            }),
            0U);
  EXPECT_EQ(visited, 14U);
  // The host starts an account at the first block of a type.
  visited += map.get_t_registers_at_index(0).size() + handle.get_transformed_inverted_equivalents(0).size();
  EXPECT_EQ(allocations_of([&] { visited += map.get_r_representative_equivalents(0).size(); }), 1U);
  EXPECT_EQ(allocations_of([&] { visited += map.get_t_representative_inverted_equivalents(0).size(); }), 1U);
  EXPECT_EQ(allocations_of([&] { visited += map.get_t_registers_at_index(0).size(); }), 1U);
  EXPECT_EQ(allocations_of([&] { visited += handle.get_reference_equivalents(0).size(); }), 1U);
  EXPECT_EQ(allocations_of([&] { visited += handle.get_transformed_inverted_equivalents(0).size(); }), 1U);
}

TEST(MapSize, WalksOfEmptyIndicesAllocateNothingOfTheirOwn) {
  if (!allocations_are_seen()) {
    GTEST_SKIP() << "built without the address checks";
  }
  REGISTERS k;
  const MAP map(k.side("~"), k.side(""), KPT_NOT_ELIMINATED);
  kpt_host::set_debug(false);
  EXPECT_EQ(allocations_of([&] { map.for_each_register_at_index(KPT_REFERENCE_SET, 0, [](KPT_KEYPOINT*) {}); }), 0U);
}

}  // namespace
