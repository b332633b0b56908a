// The findings that a reader should see first and that the page cannot find itself.
//
// Ownership: values only.
#ifndef KPTDB_REPORT_FINDINGS_H
#define KPTDB_REPORT_FINDINGS_H

#include <cstdint>
#include <string>
#include <vector>

#include "netlist.h"
#include "stage.h"

namespace kptdb {

class FINDINGS {
 public:
  /// Codes of the source that a machine's table does not list: the netlist may do anything there.
  struct UNREACHABLE {
    std::uint32_t reg;  // the first of the machine
    std::string codes;  // how many; a power of two for very many
    std::uint32_t states;
  };
  struct CONTRADICTION {
    std::string text;
    std::uint32_t reg;  // in the source; NO_REGISTER for none
  };
  static constexpr std::uint32_t NO_REGISTER = UINT32_MAX;

  void look_at(const STAGE_MAP& map, const NETLIST& source, const std::string& stage);
  void add(CONTRADICTION contradiction) { m_contradictions.push_back(std::move(contradiction)); }
  const std::vector<UNREACHABLE>& unreachable() const { return m_unreachable; }
  const std::vector<CONTRADICTION>& contradictions() const { return m_contradictions; }

 private:
  void look_at_codes(const STAGE_MAP& map, const NETLIST& source);
  void look_at_groups(const STAGE_MAP& map, const NETLIST& source, const std::string& stage);

  std::vector<UNREACHABLE> m_unreachable;
  std::vector<CONTRADICTION> m_contradictions;
};

}  // namespace kptdb

#endif
