// The lines of the registers of a file, by side and id.
//
// Ownership: owns its lists.
#ifndef KPTDB_REGISTER_LINES_H
#define KPTDB_REGISTER_LINES_H

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <vector>

#include "db/kpt/kpt.h"

namespace kptdb {

class REGISTER_LINES {
 public:
  /// The line of the register; 0 when there is none.
  std::size_t find(KPT_SET_ENUM side, long id) const {
    const SIDE& lines = m_sides.at(static_cast<std::size_t>(side));
    const std::uint64_t place = lines.place_of(id);
    if (place < lines.near.size() && lines.near[place] != 0) {
      return lines.near[place];
    }
    if (lines.far.empty()) {
      return 0;
    }
    const auto found = lines.far.find(id);
    return found == lines.far.end() ? 0 : found->second;
  }

  /// Adds the line of a new register.
  void add(KPT_SET_ENUM side, long id, std::size_t line) {
    SIDE& lines = m_sides.at(static_cast<std::size_t>(side));
    lines.first = lines.count++ == 0 ? id : lines.first;
    const std::uint64_t place = lines.place_of(id);
    if (place >= FEW + MOST_PLACES_FOR_ONE * lines.count) {
      lines.far.emplace(id, line);
      return;
    }
    if (place >= lines.near.size()) {
      lines.near.resize(place + 1);
    }
    lines.near[place] = line;
  }

 private:
  static constexpr std::uint64_t FEW = 1024;
  static constexpr std::uint64_t MOST_PLACES_FOR_ONE = 4;

  // Most ids count up from the first one. All others are kept separately.
  struct SIDE {
    std::uint64_t place_of(long id) const { return static_cast<std::uint64_t>(id) - static_cast<std::uint64_t>(first); }
    long first = 0;
    std::uint64_t count = 0;
    std::vector<std::size_t> near;
    boost::unordered_flat_map<long, std::size_t> far;
  };

  std::array<SIDE, 2> m_sides;
};

}  // namespace kptdb

#endif
