// Registers and maps as Python holds them. None of them dangles. A database exists
// as long as a handle to it, and the memory of a register as long as its database.
// A map is kept by its number, by which it is found until it is deleted.
//
// Ownership: each shares its database.
#ifndef KPT_PYTHON_HANDLES_H
#define KPT_PYTHON_HANDLES_H

#include <cstdint>
#include <string>

#include "database.h"

namespace kpt_python {

/// A register; never a null one.
struct REGISTER {
  SHARED_DATABASE db;
  KPT_REGISTER_KEYPOINT keypoint;

  /// Whether its set finds it: a union deletes registers that no map lists, and a
  /// file may give one name to two registers.
  bool is_present() const;
  bool operator==(const REGISTER& other) const { return keypoint == other.keypoint; }
};

/// A map from the point of view of one of its registers, which is on one of its sides.
/// In a united database, a side of a map may list registers of the other netlist.
struct MAP {
  SHARED_DATABASE db;
  std::uint32_t number;
  KPT_REGISTER_KEYPOINT seen_from;  // null for a map without registers
  KPT_SET_ENUM side = KPT_REFERENCE_SET;

  /// The library's handle, which is valid until the database changes. Raises Gone when the map is deleted.
  KPT_REGISTER_TRANSFORMATION get() const;
  bool operator==(const MAP& other) const { return db == other.db && number == other.number; }
};

/// The map as a walk over all maps returns it: from the point of view of its first register.
MAP seen_from_first(const SHARED_DATABASE& db, const KPT_REGISTER_TRANSFORMATION& map);

/// The name for a signal, and "name (entity, type)" for a block instance.
std::string label(const KPT_REGISTER_KEYPOINT& keypoint);
inline KPT_SET_ENUM side_of(const KPT_REGISTER_KEYPOINT& keypoint) {
  return keypoint.get_side().value_or(KPT_REFERENCE_SET);
}
inline const char* side_word(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? "reference" : "transformed"; }

}  // namespace kpt_python

#endif
