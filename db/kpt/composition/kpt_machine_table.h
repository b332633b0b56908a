// Questions about a map besides its groups: whether its status is a value,
// whether its table can be read, and whether it shows all copies.
//
// Ownership: none.
#ifndef KPT_MACHINE_TABLE_H
#define KPT_MACHINE_TABLE_H

#include <string_view>

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"

inline bool kpt_is_partial(const KPT_TRANSFORMATION_IMPL& map) {
  return !map.attributes().empty() && !map.get_attribute(KPT_PARTIAL).empty();
}

inline bool kpt_is_stuck(KPT_ELIM_ENUM status) { return status == KPT_STUCK_AT_ZERO || status == KPT_STUCK_AT_ONE; }

/// Events on the bits of a machine may leave a table whose size does not fit its
/// sides, a status that differs from the table, or a column whose register is
/// gone while its inverted replicas stay. Such a table is not read.
inline bool kpt_table_fits(const KPT_TRANSFORMATION_IMPL& map) {
  if (!map.attributes().empty() && std::string_view(map.get_attribute(KPT_PARTIAL)) == KPT_PARTIAL_TABLE) {
    return false;
  }
  const KPT_STATE_TABLE_IMPL& table = map.state_table();
  if (map.r_vec().size() != table.get_num_reference_registers() ||
      map.t_vec().size() != table.get_num_transformed_registers()) {
    return false;
  }
  if (!kpt_is_stuck(map.get_elim_status())) {
    return true;
  }
  bool agrees = table.get_num_reference_registers() > 0;
  for (std::uint64_t row = 0; agrees && row < table.get_num_states(); ++row) {
    agrees = table.get_bits(KPT_REFERENCE_SET).get(row * table.get_num_reference_registers()) ==
             (map.get_elim_status() == KPT_STUCK_AT_ONE);
  }
  return agrees;
}

#endif
