// The union of two databases as a plain walk over plain databases, with which the
// library is compared.
//
// Ownership: the union refers to the caller's databases.
#ifndef TESTS_UNION_PLAIN_UNION_H
#define TESTS_UNION_PLAIN_UNION_H

#include <set>
#include <string>
#include <vector>

#include "tests/support/plain_database.h"

namespace kpt_test::plain {

class UNION {
 public:
  UNION(DATABASE& one, const DATABASE& two, bool copy_leftovers)
      : db1(one), source(two), m_copy_leftovers(copy_leftovers) {}

  /// Unites the second database with the first, and returns the client's answer.
  bool run();

  LINES lines;  // times are "#"
  int internal_errors = 0;

 private:
  void say(const std::string& line) { lines.push_back(line); }

  void complete();
  void add_missing_registers();
  void translate();
  void unite_maps();
  void fuse_successors();
  void fuse_predecessors();
  void fuse_predecessors(MAP& m2);
  void compose_all();
  void copy_leftovers();
  bool cleanup(SIDE side);

  void fuse(DATABASE& db, const std::set<std::size_t>& candidates);
  void copy_into_db1(const MAP& map);
  void compose(std::size_t number, MAP& m1);
  std::size_t successor_of(const MAP& m1);
  void print_side(const MAP& map, SIDE side);
  std::string name_of(std::size_t k) const { return k == NONE ? "" : db1.registers[k].key.name; }

  DATABASE& db1;
  const DATABASE& source;
  DATABASE db2;  // the translation: maps and indexes, over the registers of db1
  bool m_copy_leftovers;
  bool ok = true;
};

}  // namespace kpt_test::plain

#endif
