// The state table that clients see: a value, not a handle.
//
// Ownership: owns its table. A copy is independent of its source, so a client
// that writes into a table of a map never changes the map.
// Rows and columns count from 1.
#ifndef KPT_STATE_TABLE_H
#define KPT_STATE_TABLE_H

#include <memory>

#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_STATE_TABLE : public KPT_ZEROED {
 public:
  /// All entries false.
  KPT_STATE_TABLE(unsigned short num_states, unsigned short num_reference_registers,
                  unsigned short num_transformed_registers);
  KPT_STATE_TABLE(KPT_STATE_TABLE_IMPL table);
  KPT_STATE_TABLE(const KPT_STATE_TABLE& other);
  KPT_STATE_TABLE& operator=(const KPT_STATE_TABLE&) = delete;
  ~KPT_STATE_TABLE();

  /// For an entry outside the table: false, and nothing changes.
  bool set_reference_entry(unsigned short row, unsigned short column, bool value);
  bool set_transformed_entry(unsigned short row, unsigned short column, bool value);

  /// 0 or 1; 2 for a row that does not exist. A column that does not exist may give
  /// an entry of another row instead of 2, so stay within the sizes of the table.
  int get_reference_entry(unsigned short row, unsigned short column) const;
  int get_transformed_entry(unsigned short row, unsigned short column) const;

  /// The number of reference registers.
  unsigned short get_state_reference_size() const;
  /// The number of transformed registers.
  unsigned short get_state_transformed_size() const;
  unsigned short get_number_of_states() const;
  /// False when two columns of a side are equal or opposite in every state.
  bool is_in_canonical_form(KPT_SET_ENUM side) const;

 private:
  std::unique_ptr<KPT_STATE_TABLE_IMPL> m_impl;
};

#endif
