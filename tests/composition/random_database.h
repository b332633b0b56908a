// Stages with random facts of any shape. Passes do not record them and no netlist
// has them, but a database can say them.
//
// Ownership: refers to the caller's generator.
#ifndef TESTS_COMPOSITION_RANDOM_DATABASE_H
#define TESTS_COMPOSITION_RANDOM_DATABASE_H

#include <memory>
#include <random>

#include "tests/composition/plain_relation.h"

namespace kpt_test {

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

class RANDOM_FLOW {
 public:
  /// Netlists of at most `registers` registers.
  RANDOM_FLOW(std::mt19937& random, unsigned stages, unsigned registers);

  std::vector<NAMES> netlists;  // one more than stages
  std::vector<DATABASE> stages;

  /// The relation that all stages say together.
  PLAIN_RELATION relation() const;

 private:
  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
  NAMES some_of(const NAMES& names, unsigned dropped_in);
  void record(KPT_KEYPOINTS_DB_IMPL& db, const NAMES& from, const NAMES& to);
  NI_PAIR pair(KPT_KEYPOINT_LIST& free, unsigned most);
  KPT_STATE_TABLE_IMPL table(std::size_t of_r, std::size_t of_t);
  void add_map(KPT_KEYPOINTS_DB_IMPL& db, KPT_KEYPOINT_LIST& r, KPT_KEYPOINT_LIST& t);

  std::mt19937& m_random;
};

}  // namespace kpt_test

#endif
