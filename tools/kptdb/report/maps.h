// The maps of a stage as numbers, which the page reads.
//
// Ownership: views the two netlists, which outlive it.
#ifndef KPTDB_REPORT_MAPS_H
#define KPTDB_REPORT_MAPS_H

#include <cstdint>

#include "blocks.h"
#include "netlist.h"
#include "stage.h"

namespace kptdb {

class MAP_COLUMN {
 public:
  MAP_COLUMN(const NETLIST& reference, const NETLIST& transformed) : m_netlists{&reference, &transformed} {}

  void add(const STAGE_MAP& map, std::uint32_t attributes);
  std::uint32_t size() const { return m_size; }
  const std::string& bytes() const { return m_column.bytes(); }

 private:
  void add_member(unsigned side, const STAGE_MEMBER& member);
  void add_group(unsigned side, const std::vector<STAGE_MEMBER>& group);
  void add_side(unsigned side, const std::vector<STAGE_PAIR>& pairs);
  void add_table(const STAGE_MAP& map);

  std::array<const NETLIST*, 2> m_netlists;
  std::array<std::int64_t, 2> m_last{-1, -1};
  std::uint32_t m_size = 0;
  COLUMN m_column;
};

}  // namespace kptdb

#endif
