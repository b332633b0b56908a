// The state table of a re-encoded state machine: the value of every reference
// state register and every transformed state register in each state.
//
// Ownership: owns its bits. Copies are independent. A moved-from table is empty:
// it has no rows and no columns.
//
// Two Boolean tables share their rows. A row is a state. A column of the
// reference table is a reference register of the map, and a column of the
// transformed table is a transformed register. The entry operations count rows
// and columns from 1; operations that count from 0 say so. Entry (row, column)
// of a side with C columns is the bit at position (row - 1) * C + column - 1.
//
// Every refused write or read issues one debug line.
#ifndef KPT_STATE_TABLE_IMPL_H
#define KPT_STATE_TABLE_IMPL_H

#include <cstdint>

#include "db/kpt/containers/kpt_bit_table.h"
#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_STATE_TABLE_IMPL : public KPT_ZEROED {
 public:
  /// All entries false.
  KPT_STATE_TABLE_IMPL(unsigned short num_states, unsigned short num_reference_registers,
                       unsigned short num_transformed_registers);
  KPT_STATE_TABLE_IMPL(const KPT_STATE_TABLE_IMPL& other);
  KPT_STATE_TABLE_IMPL(KPT_STATE_TABLE_IMPL&& other) noexcept;
  KPT_STATE_TABLE_IMPL& operator=(const KPT_STATE_TABLE_IMPL& other);
  KPT_STATE_TABLE_IMPL& operator=(KPT_STATE_TABLE_IMPL&& other) noexcept;
  ~KPT_STATE_TABLE_IMPL();

  /// Whether the counts and the entries are equal.
  bool operator==(const KPT_STATE_TABLE_IMPL& other) const;

  /// For an entry outside the table or an unknown side: false, and nothing changes.
  bool set_entry(KPT_SET_ENUM set, unsigned short row, unsigned short column, bool value);
  bool set_reference_entry(unsigned short row, unsigned short column, bool value);
  bool set_transformed_entry(unsigned short row, unsigned short column, bool value);

  /// 0 or 1; 2 out of bounds; 3 for an unknown side, without a debug line.
  ///
  /// The check is weaker than that of a write. A column beyond the count reads an
  /// entry of the rows below, if the entry's position exists and row * column,
  /// modulo 65,536, is not greater than the number of entries.
  int get_entry(KPT_SET_ENUM set, unsigned short row, unsigned short column) const;
  int get_reference_entry(unsigned short row, unsigned short column) const;
  int get_transformed_entry(unsigned short row, unsigned short column) const;

  unsigned short get_num_states() const { return m_num_rows; }
  unsigned short get_num_reference_registers() const { return m_num_r_columns; }
  unsigned short get_num_transformed_registers() const { return m_num_t_columns; }

  /// The bits of a side, row by row and without gaps: for walks over whole tables.
  const KPT_BIT_TABLE& get_bits(KPT_SET_ENUM set) const { return bits(set); }

  /// Whether no two columns of the side are equal or opposite in every state.
  /// True for a side with at most one column; false for a side with several
  /// columns and no row. An unknown side has no readable entry: true only when
  /// there are fewer than two transformed columns.
  bool is_table_in_canonical_form(KPT_SET_ENUM set) const;
  bool is_r_table_in_canonical_form() const;
  bool is_t_table_in_canonical_form() const;

  /// Inverts a transformed column, counted from 0: the bit at position
  /// row * columns + column for every row from 0. For a column beyond the count
  /// this is a bit of the rows below. A bit that does not exist is skipped.
  void flip_bits_of_t_column(unsigned short column);

  /// The rows, counted from 0 and in increasing order, whose reference bit at
  /// position row * TRANSFORMED columns + column is `value`. The column counts
  /// from 0. A row whose position does not exist is listed for neither value.
  KPT_ROW_LIST get_row_list(unsigned short column, bool value) const;

  /// Whether the reference bits at positions row_a * c and row_b * c differ
  /// for c = column and agree for every other c below the number of reference
  /// columns. All counts are from 0. A bit that does not exist is false. Without
  /// reference columns: true. Otherwise false for column 0: both positions are 0.
  bool rows_are_gray(unsigned short row_a, unsigned short row_b, unsigned short column) const;

  /// True for any table, columns and unateness: the registers of a state
  /// machine count as unate.
  bool check_unateness(unsigned short r_column, unsigned short t_column, KPT_UNATE_ENUM unate) const;
  bool check_positive_unateness(unsigned short r_column, unsigned short t_column) const;
  bool check_negative_unateness(unsigned short r_column, unsigned short t_column) const;

  /// For every state s from 1 to num_states, writes the text of s - 1 in the
  /// host's base `conversion_arg` to the columns of both sides, one character in
  /// each column. It writes a transformed entry only if the reference entry was
  /// accepted. An entry is true only for a character of code 1, so the digits
  /// write false everywhere. Returns whether the last pair of writes was
  /// accepted; true for no states.
  bool update_simple_table(unsigned short num_states, unsigned short conversion_arg);

  /// The table of two combined state machines: the number of states is the
  /// product, the number of columns the sum, both modulo 65,536.
  ///
  /// State s of this table and u of the other are written to row s + u - 1. A
  /// later pair overwrites an earlier one, so the rows from the sum of the states
  /// on stay false. The other's columns begin at this table's last column and
  /// overwrite it, so the last column of the product stays false. When this table
  /// has no column, the other's first column would be column 0, which is refused.
  KPT_STATE_TABLE_IMPL cross_product_table(const KPT_STATE_TABLE_IMPL& other) const;

  /// Allocates memory, so that flipping bits of a transformed column cannot fail.
  void make_room_to_flip() { m_t_table.make_room(length(KPT_TRANSFORMED_SET)); }

  /// Removes one transformed column: the first for 0, the last for a number
  /// beyond the count. False when there is no column.
  bool remove_t_column(unsigned short column);

  /// Keeps the states in which both transformed columns read the same value; two
  /// reads out of bounds are the same. Always true.
  bool remove_invalid_rows(unsigned short keep_column, unsigned short other_column);

  /// Fills one side of a state, counted from 0, from the "value" elements below
  /// `element`, up to the first entry outside the table. True when all entries
  /// were accepted, also when there are none.
  bool make_table_entries(KPT_SET_ENUM side, KPT_XML_ELEMENT element, unsigned short state);

  /// Writes a "state_table" element. Always true.
  bool save_state_table(KPT_XML_WRITER& writer) const;

 private:
  // The same code handles both sides. Here every value but the reference side
  // means the transformed side. The operations that refuse an unknown side have
  // done so before.
  unsigned short columns(KPT_SET_ENUM set) const {
    return set == KPT_REFERENCE_SET ? m_num_r_columns : m_num_t_columns;
  }
  const KPT_BIT_TABLE& bits(KPT_SET_ENUM set) const { return set == KPT_REFERENCE_SET ? m_r_table : m_t_table; }
  KPT_BIT_TABLE& bits(KPT_SET_ENUM set) { return set == KPT_REFERENCE_SET ? m_r_table : m_t_table; }
  std::uint64_t length(KPT_SET_ENUM set) const { return std::uint64_t{m_num_rows} * columns(set); }
  std::uint64_t position(KPT_SET_ENUM set, unsigned row, unsigned column) const {
    return std::uint64_t{row - 1} * columns(set) + (column - 1);
  }

  void place_row(KPT_SET_ENUM set, unsigned row, unsigned column, const KPT_STATE_TABLE_IMPL& source,
                 unsigned source_row);
  void save_side(KPT_XML_WRITER& writer, KPT_SET_ENUM set, const char* tag, unsigned row) const;

  unsigned short m_num_rows;
  unsigned short m_num_r_columns;
  unsigned short m_num_t_columns;
  // Bits beyond a side's rows * columns are false.
  KPT_BIT_TABLE m_r_table;
  KPT_BIT_TABLE m_t_table;
};

#endif
