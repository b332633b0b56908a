// Any bytes as the database files of two stages, which are united. The second
// stage must not change, every register of the union must lead to a map and every
// index entry to a map of the union, and the saved union must load.
//
// The two files are separated by the bytes "====". Without them the one
// file is both stages, so every seed of the loader is a seed here. When the
// size of the input is odd, maps that the first stage does not reach are
// copied.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "fuzz/database.h"
#include "host/kpt_host.h"
#include "tests/support/index_checker.h"

namespace {

using namespace kpt_fuzz;

constexpr std::string_view SEPARATOR = "====";
// With larger tables a union spends seconds on copies and reaches no other code.
constexpr std::uint64_t MOST_UNITED_BITS = std::uint64_t{1} << 24U;
// Each input is saved and loaded several times.
constexpr std::uint64_t MOST_SAVED_BITS = std::uint64_t{1} << 16U;

void require(bool holds, const char* otherwise) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", otherwise);
    std::abort();
  }
}

using KEYPOINTS = kpt_test::INDEX_FACTS::KEYPOINTS;

KEYPOINTS keypoints_in_sets_and_maps(KPT_KEYPOINTS_DB_IMPL& db) {
  KEYPOINTS all;
  for (const KPT_KEYPOINT_SET_IMPL* set : {db.get_reference_set(), db.get_transformed_set()}) {
    for (const KPT_KEYPOINT* k : set->get_list_of_keypoints()) {
      all.insert(k);
    }
  }
  for (const KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
    for (const NI_PAIR_VECTOR* side : {&map->r_vec(), &map->t_vec()}) {
      for (const NI_PAIR& pair : *side) {
        all.insert(pair.first.begin(), pair.first.end());
        all.insert(pair.second.begin(), pair.second.end());
      }
    }
  }
  return all;
}

// A union may erase, change and add any entry. What remains to check: an entry
// leads to a map of the set, and null has none.
void check_indexes(KPT_KEYPOINTS_DB_IMPL& db) {
  const KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
  const KEYPOINTS all = keypoints_in_sets_and_maps(db);
  const kpt_test::EXPLANATIONS facts{{all, all, all, maps.index_size(KPT_REFERENCE_SET)},
                                     {all, all, all, maps.index_size(KPT_TRANSFORMED_SET)}};
  for (const std::string& difference : kpt_test::index_differences(db, facts)) {
    require(false, difference.c_str());
  }
}

void check_that_every_register_has_a_map(KPT_KEYPOINTS_DB_IMPL& db) {
  const KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
  db.get_reference_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    require(maps.get_map_of_r_keypoint(k) != nullptr, "a reference register without a map");
    return true;
  });
  db.get_transformed_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    require(maps.get_map_of_t_keypoint(k) != nullptr, "a transformed register without a map");
    return true;
  });
}

void unite(KPT_KEYPOINTS_DB_IMPL& first, KPT_KEYPOINTS_DB_IMPL& second) {
  if (first.unite_db(second)) {
    check_that_every_register_has_a_map(first);
  }
  check_indexes(first);
  ask(first);
}

std::string saved_text(KPT_KEYPOINTS_DB_IMPL& db) {
  const MEMORY_FILE file;
  save(db, file);
  return file.bytes();
}

// Unites, and checks that the second stage does not change.
void append(KPT_KEYPOINTS_DB_IMPL& first, KPT_KEYPOINTS_DB_IMPL& second) {
  const bool compared = table_bits(second) <= MOST_SAVED_BITS;
  const std::string before = compared ? saved_text(second) : "";
  unite(first, second);
  require(!compared || saved_text(second) == before, "the union changed its second database");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  kpt_host::set_switch("kpt_add_unmatched_transformations", size % 2 == 1);
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const std::size_t end = input.find(SEPARATOR);
  const bool one = end == std::string_view::npos;
  const DATABASE first = load(MEMORY_FILE(input.substr(0, end)));
  const DATABASE second = load(MEMORY_FILE(one ? input : input.substr(end + SEPARATOR.size())));
  if (table_bits(*first) + table_bits(*second) > MOST_UNITED_BITS) {
    return 0;
  }
  append(*first, *second);
  if (table_bits(*first) <= MOST_SAVED_BITS) {
    const MEMORY_FILE saved;
    save(*first, saved);
    const DATABASE again = load(saved);
    ask(*again);
    append(*again, *second);
  }
  unite(*first, *first);
  return 0;
}
