// Composes two stages whose database files are any bytes. The stages must not
// change. A refusal must give its reason and write nothing. A result must say
// the same after it is composed alone, and after it is saved and loaded.
//
// The input is the first file, the bytes "====", and the second file. If the
// input does not have these bytes, it is the file of both stages. If the size
// of the input is odd, the composition assumes that a stage does not change
// the registers that it does not mention.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "db/kpt/kpt_composition.h"
#include "db/kpt/kpt_fate.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "fuzz/database.h"

namespace {

using namespace kpt_fuzz;

constexpr std::string_view SEPARATOR = "====";
// Larger tables take seconds and reach no other code.
constexpr std::uint64_t MOST_BITS = std::uint64_t{1} << 16U;

void require(bool holds, const char* otherwise) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", otherwise);
    std::abort();
  }
}

std::string saved_text(KPT_KEYPOINTS_DB_IMPL& db) {
  const MEMORY_FILE file;
  save(db, file);
  return file.bytes();
}

// Null when the stages are refused.
DATABASE composed(const KPT_COMPOSITION::STAGES& stages, bool keeps_unrecorded) {
  auto all = std::make_unique<KPT_KEYPOINTS_DB_IMPL>("all");
  KPT_COMPOSITION composition(stages, {0.0, keeps_unrecorded});
  if (!composition.compose(*all)) {
    require(!composition.report().errors.empty(), "a refusal without a reason");
    require(all->get_reference_set()->is_empty() && all->get_transformed_set()->is_empty(),
            "a refused composition wrote something");
    return nullptr;
  }
  require(composition.report().errors.empty(), "a composition with errors");
  return all;
}

struct COUNTS {
  std::size_t maps = 0;
  std::size_t by_fate[5] = {};
  friend bool operator==(const COUNTS&, const COUNTS&) = default;
};

COUNTS counts_of(KPT_KEYPOINTS_DB_IMPL& db) {
  COUNTS counts;
  for (const KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
    ++counts.maps;
    for (std::size_t k = 0; k < map->r_vec().size(); ++k) {
      ++counts.by_fate[kpt_fate(map, k)];
    }
  }
  return counts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(bytes), size);
  const std::size_t end = input.find(SEPARATOR);
  const bool one = end == std::string_view::npos;
  const DATABASE first = load(MEMORY_FILE(input.substr(0, end)));
  const DATABASE second = load(MEMORY_FILE(one ? input : input.substr(end + SEPARATOR.size())));
  if (table_bits(*first) + table_bits(*second) > MOST_BITS) {
    return 0;
  }
  const std::string before = saved_text(*first) + saved_text(*second);
  const DATABASE all = composed({first.get(), second.get()}, size % 2 == 1);
  require(saved_text(*first) + saved_text(*second) == before, "the composition changed a stage");
  if (all == nullptr) {
    return 0;
  }
  ask(*all);
  const DATABASE again = composed({all.get()}, false);
  require(again != nullptr && counts_of(*again) == counts_of(*all), "a composition is not in its normal form");
  if (table_bits(*all) <= MOST_BITS) {
    const MEMORY_FILE saved;
    save(*all, saved);
    ask(*load(saved));
  }
  return 0;
}
