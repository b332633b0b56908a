// The differences of two databases, register by register.
//
// Ownership: the caller owns the values.
#ifndef KPTDB_DIFF_H
#define KPTDB_DIFF_H

#include <string>
#include <vector>

#include "database.h"

namespace kptdb {

/// A register of which two databases say different things, and a short text of each.
struct CHANGE {
  KPT_SET_ENUM side;
  std::string name;
  std::string first, second;
};

/// In the order in which `kptdb diff` lists them.
std::vector<CHANGE> changes_between(const DATABASE& first, const DATABASE& second);

}  // namespace kptdb

#endif
