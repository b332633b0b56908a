// audit: checks the claims of a database against two simulations with the same stimulus.
//
// Ownership: options are read only during the call.
#ifndef KPTDB_AUDIT_H
#define KPTDB_AUDIT_H

#include <string>
#include <vector>

#include "../outcome.h"

namespace kptdb {

struct AUDIT_OPTIONS {
  std::string file;
  std::string reference_dump;
  std::string transformed_dump;
  std::string clock;  // its path in the dumps
  std::string edge = "rising";
  std::vector<std::string> at;  // times instead of a clock
  std::string from;             // nothing is checked before; empty: from the beginning
  std::string scope;
  std::string transformed_scope;  // empty: the same
  std::string divider = ".";
  bool write = false;  // the status of what was checked, into the database file
  bool json = false;
};
EXIT_CODE run_audit(const AUDIT_OPTIONS& options);

}  // namespace kptdb

#endif
