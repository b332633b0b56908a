// The statements of a database as a full table over all values of its registers:
// the plain model with which compositions are compared.
//
// Ownership: plain values. Netlists have at most 6 registers: the values of a
// side are a number with one bit for each.
#ifndef TESTS_COMPOSITION_PLAIN_RELATION_H
#define TESTS_COMPOSITION_PLAIN_RELATION_H

#include <cstdint>
#include <string>
#include <vector>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kpt_test {

using NAMES = std::vector<std::string>;

/// For each value of the first netlist, the set of values that the second netlist
/// may have with it.
struct PLAIN_RELATION {
  NAMES from;
  NAMES to;
  std::vector<std::uint64_t> rows;

  bool has(unsigned x, unsigned y) const { return (rows[x] >> y & 1U) != 0; }
  bool empty() const;
  friend bool operator==(const PLAIN_RELATION&, const PLAIN_RELATION&) = default;
};

/// What a database says of two netlists with these registers, by the meaning of
/// its maps: every value of both netlists is tried.
PLAIN_RELATION said_by(KPT_KEYPOINTS_DB_IMPL& db, const NAMES& from, const NAMES& to);

/// The values for which there is a value between that fits both sides.
PLAIN_RELATION joined(const PLAIN_RELATION& first, const PLAIN_RELATION& second);

/// The columns of the smallest independent part of some rows that contains this
/// column, as bits. Rows are distinct and have one bit for each column.
unsigned part_of(const std::vector<unsigned>& rows, unsigned columns, unsigned column);
/// The same for a relation: the registers of `from`, then those of `to`.
unsigned part_of(const PLAIN_RELATION& relation, unsigned reg);
/// 0, 1, or 2 for a register that is not constant.
int constant(const PLAIN_RELATION& relation, unsigned reg);
/// 0 for equal, 1 for inverse, 2 for neither.
int twins(const PLAIN_RELATION& relation, unsigned a, unsigned b);

}  // namespace kpt_test

#endif
