// Compares a database with a plain one after the same steps.
//
// Ownership: refers to both databases, the lines of the host and the names, which
// the caller owns.
#ifndef TESTS_MODEL_DATABASE_COMPARISON_H
#define TESTS_MODEL_DATABASE_COMPARISON_H

#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/databases.h"
#include "tests/support/host_lines.h"
#include "tests/support/index_checker.h"
#include "tests/support/plain_database.h"

namespace kpt_test {

class DATABASE_COMPARISON {
 public:
  using NAMES = std::vector<std::string>;

  /// The names are those that the registers of each side may have.
  DATABASE_COMPARISON(const DATABASE& real, plain::DATABASE& expected, HOST_LINES& lines, const NAMES& r_names,
                      const NAMES& t_names)
      : m_real(real), m_plain(expected), m_lines(lines), m_names{&r_names, &t_names} {}

  /// Fails fatally when registers, maps or entries differ, or when a line was issued.
  /// Call it after every step. The index checker gets the facts from the plain indexes.
  void check();

  /// Fails fatally when a client gets another answer about the map of that signal register.
  void check_answers(plain::SIDE side, const std::string& name);

  /// The library's keypoint for a register, after a check has found it.
  KPT_KEYPOINT* keypoint(std::size_t k) const { return m_keypoints[k]; }

  /// The library's maps, in order.
  std::vector<KPT_TRANSFORMATION_IMPL*> maps() const;

 private:
  void learn_keypoints(plain::SIDE side);
  KPT_KEYPOINT* find_keypoint(plain::SIDE side, std::size_t k) const;
  void check_registers(plain::SIDE side);
  void check_maps();
  void check_group(const KPT_KEYPOINT_LIST& real, const plain::GROUP& expected);
  void check_map(const KPT_TRANSFORMATION_IMPL& real, const plain::MAP& expected);
  void check_index(plain::SIDE side);
  void check_names(plain::SIDE side);
  void note_facts(plain::SIDE side, INDEX_FACTS& facts);

  void check_map_answers(const KPT_REGISTER_TRANSFORMATION& handle, const plain::MAP& map);
  void check_index_answers(plain::SIDE side, const plain::MAP& map, unsigned short at,
                           const KPT_REGISTER_KEYPOINT& representative, const KPT_REGISTER_KEYPOINT_LIST& equivalents,
                           const KPT_REGISTER_KEYPOINT_LIST& inverted);
  LINES texts(const plain::GROUP& group) const;

  const DATABASE& m_real;
  plain::DATABASE& m_plain;
  HOST_LINES& m_lines;
  const NAMES* m_names[2];
  std::vector<KPT_KEYPOINT*> m_keypoints;  // by number; null while none is known
  EXPLANATIONS m_facts;
};

}  // namespace kpt_test

#endif
