#include "tests/composition/random_database.h"

#include <algorithm>

#include "db/kpt/kpt_state_table_impl.h"

namespace kpt_test {

RANDOM_FLOW::RANDOM_FLOW(std::mt19937& random, unsigned count, unsigned registers) : m_random(random) {
  for (unsigned k = 0; k <= count; ++k) {
    NAMES names{"a", "b", "c", "d", "e", "f"};
    std::shuffle(names.begin(), names.end(), m_random);
    names.resize(1 + below(registers));
    netlists.push_back(names);
  }
  for (unsigned k = 0; k < count; ++k) {
    stages.push_back(std::make_unique<KPT_KEYPOINTS_DB_IMPL>("stage"));
    record(*stages.back(), k == 0 ? netlists[k] : some_of(netlists[k], 12),
           k + 1 == count ? netlists[k + 1] : some_of(netlists[k + 1], 12));
  }
}

PLAIN_RELATION RANDOM_FLOW::relation() const {
  PLAIN_RELATION all = said_by(*stages[0], netlists[0], netlists[1]);
  for (std::size_t k = 1; k < stages.size(); ++k) {
    all = joined(all, said_by(*stages[k], netlists[k], netlists[k + 1]));
  }
  return all;
}

NAMES RANDOM_FLOW::some_of(const NAMES& names, unsigned dropped_in) {
  NAMES some;
  std::copy_if(names.begin(), names.end(), std::back_inserter(some), [&](auto&) { return below(dropped_in) != 0; });
  return some;
}

void RANDOM_FLOW::record(KPT_KEYPOINTS_DB_IMPL& db, const NAMES& from, const NAMES& to) {
  KPT_KEYPOINT_LIST r;
  KPT_KEYPOINT_LIST t;
  for (const std::string& name : from) {
    r.push_back(db.add_to_register_set(KPT_REFERENCE_SET, KPT_KEYPOINTS_DB_IMPL::get_next_r_id(), name));
  }
  for (const std::string& name : to) {
    t.push_back(db.add_to_register_set(KPT_TRANSFORMED_SET, KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), name));
  }
  std::shuffle(r.begin(), r.end(), m_random);
  std::shuffle(t.begin(), t.end(), m_random);
  while (!r.empty() || !t.empty()) {
    add_map(db, r, t);
  }
}

NI_PAIR RANDOM_FLOW::pair(KPT_KEYPOINT_LIST& free, unsigned most) {
  NI_PAIR result;
  for (unsigned k = most; k > 0 && !free.empty(); --k) {
    (below(3) == 0 ? result.second : result.first).push_back(free.back());
    free.pop_back();
  }
  return result;
}

KPT_STATE_TABLE_IMPL RANDOM_FLOW::table(std::size_t of_r, std::size_t of_t) {
  const unsigned rows = 1 + below(6);
  KPT_STATE_TABLE_IMPL result(static_cast<unsigned short>(rows), static_cast<unsigned short>(of_r),
                              static_cast<unsigned short>(of_t));
  for (unsigned row = 1; row <= rows; ++row) {
    for (unsigned column = 1; column <= of_r; ++column) {
      result.set_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column), below(2) == 1);
    }
    for (unsigned column = 1; column <= of_t; ++column) {
      result.set_transformed_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column),
                                   below(2) == 1);
    }
  }
  return result;
}

void RANDOM_FLOW::add_map(KPT_KEYPOINTS_DB_IMPL& db, KPT_KEYPOINT_LIST& r, KPT_KEYPOINT_LIST& t) {
  const auto group = [&] { return below(5) == 0 ? below(3) : 1U; };
  NI_PAIR_VECTOR of_r;
  NI_PAIR_VECTOR of_t;
  if (below(20) == 0) {  // registers that no map lists
    pair(r, 1);
    pair(t, below(2));
    return;
  }
  const bool is_machine = below(3) == 0;
  for (unsigned k = is_machine ? below(4) : 1; k > 0; --k) {
    of_r.push_back(pair(r, group()));
  }
  for (unsigned k = is_machine ? below(4) : 1; k > 0; --k) {
    of_t.push_back(pair(t, group()));
  }
  const auto status = static_cast<KPT_ELIM_ENUM>(below(6) == 0 ? 1 + below(4) : 0);
  if (is_machine) {
    const std::size_t more = below(12) == 0 ? 1 : 0;
    const KPT_STATE_TABLE_IMPL states = table(of_r.size(), of_t.size() + more);
    db.add_to_transformation_set(std::move(of_r), std::move(of_t), KPT_STATE_TABLE_IMPL(states), status);
  } else {
    db.add_to_transformation_set(std::move(of_r), std::move(of_t), status);
  }
}

}  // namespace kpt_test
