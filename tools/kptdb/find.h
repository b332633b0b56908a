// Finding registers by name.
//
// Ownership: like model.h.
#ifndef KPTDB_FIND_H
#define KPTDB_FIND_H

#include <string>
#include <vector>

#include "model.h"

namespace kptdb {

/// The sides that an option names; both when it names none.
std::vector<KPT_SET_ENUM> sides_named(const std::string& side);

/// All registers of that name, signals and block instances. An empty side means both.
std::vector<REGISTER> find_registers(const DATABASE& db, const std::string& name, const std::string& side);

/// The name nearest to an unknown one; empty when none is near.
std::string close_name(const DATABASE& db, const std::string& name, const std::string& side);

/// The message for an unknown name.
std::string not_found_text(const std::string& file, const std::string& name, const std::string& side,
                           const std::string& close);

}  // namespace kptdb

#endif
