// What became of each register, in one of five words.
//
// Ownership: plain values. A FATES holds handles of a database, which has to outlive it.
#ifndef KPTDB_FATES_H
#define KPTDB_FATES_H

#include <array>
#include <numeric>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "model.h"

namespace kptdb {

/// In the order in which commands count and list them.
constexpr std::array ALL_FATES{KPT_FATE_MAPPED, KPT_FATE_MACHINE, KPT_FATE_CONSTANT, KPT_FATE_WITHOUT_FANOUT,
                               KPT_FATE_UNKNOWN};
/// Counts by fate, at first zero.
class FATE_COUNTS {
 public:
  std::size_t& at(KPT_FATE_ENUM fate) { return m_counts.at(static_cast<std::size_t>(fate)); }
  std::size_t at(KPT_FATE_ENUM fate) const { return m_counts.at(static_cast<std::size_t>(fate)); }
  std::size_t sum() const { return std::accumulate(m_counts.begin(), m_counts.end(), std::size_t{0}); }

 private:
  std::array<std::size_t, ALL_FATES.size()> m_counts{};
};

/// "mapped", "machine", "constant", "without_fanout" or "unknown": as options and JSON have it.
std::string_view fate_word(KPT_FATE_ENUM fate);

/// What became of a reference register, or of those that a transformed register replaces.
struct FATE {
  KPT_FATE_ENUM word = KPT_FATE_UNKNOWN;
  bool value = false;  ///< the register's value when it is constant
};

/// "constant 0", "constant 1", or the word.
std::string fate_text(const FATE& fate);

/// Tells the fates of registers. A map with many registers is read once for all of them.
class FATES {
 public:
  FATE of(const REGISTER& reg);

 private:
  void remember(const KPT_REGISTER_TRANSFORMATION& map);

  std::unordered_set<KPT_REGISTER_TRANSFORMATION> m_read;
  std::unordered_map<KPT_REGISTER_KEYPOINT, FATE> m_fates;  // of the registers of these maps
};

/// The value of a register at a place of a map with a constant.
bool constant_at(const KPT_REGISTER_TRANSFORMATION& map, bool inverting);

/// The register and its fate, for an object that is open.
void put_parts(JSON_LINE& line, const REGISTER& reg, const FATE& fate);
/// The same as an object.
void put(JSON_LINE& line, const REGISTER& reg, const FATE& fate);

}  // namespace kptdb

#endif
