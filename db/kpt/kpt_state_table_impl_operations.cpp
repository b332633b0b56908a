// The operations that change or analyse a state table when its map
// changes.
#include <algorithm>
#include <utility>

#include "db/kpt/kpt_state_table_impl.h"
#include "h/gen_sys.h"

void KPT_STATE_TABLE_IMPL::flip_bits_of_t_column(unsigned short column) {
  const std::uint64_t entries = length(KPT_TRANSFORMED_SET);
  for (std::uint64_t at = column; at < entries; at += m_num_t_columns) {
    m_t_table.flip(at);
  }
}

KPT_ROW_LIST KPT_STATE_TABLE_IMPL::get_row_list(unsigned short column, bool value) const {
  KPT_ROW_LIST rows;
  const std::uint64_t entries = length(KPT_REFERENCE_SET);
  for (unsigned row = 0; row < m_num_rows; ++row) {
    const std::uint64_t at = std::uint64_t{row} * m_num_t_columns + column;
    if (at >= entries) {
      break;
    }
    if (m_r_table.get(at) == value) {
      rows.push_back(static_cast<unsigned short>(row));
    }
  }
  return rows;
}

bool KPT_STATE_TABLE_IMPL::rows_are_gray(unsigned short row_a, unsigned short row_b, unsigned short column) const {
  // Bits beyond the table are not kept, so they read as false.
  for (unsigned c = 0; c < m_num_r_columns; ++c) {
    const bool differ = m_r_table.get(std::uint64_t{row_a} * c) != m_r_table.get(std::uint64_t{row_b} * c);
    if (differ != (c == column)) {
      return false;
    }
  }
  return true;
}

// The rule compares one bit of the first row with itself for every pair of gray
// rows. No pair can fail, so the rows are not walked.
bool KPT_STATE_TABLE_IMPL::check_unateness(unsigned short /*r_column*/, unsigned short /*t_column*/,
                                           KPT_UNATE_ENUM /*unate*/) const {
  return true;
}

bool KPT_STATE_TABLE_IMPL::check_positive_unateness(unsigned short r_column, unsigned short t_column) const {
  return check_unateness(r_column, t_column, KPT_POSITIVE_UNATE);
}

bool KPT_STATE_TABLE_IMPL::check_negative_unateness(unsigned short r_column, unsigned short t_column) const {
  return check_unateness(r_column, t_column, KPT_NEGATIVE_UNATE);
}

bool KPT_STATE_TABLE_IMPL::update_simple_table(unsigned short num_states, unsigned short conversion_arg) {
  bool accepted = true;
  KPT_STRING text;
  for (unsigned state = 1; state <= num_states; ++state) {
    gen_itoa(static_cast<int>(state - 1), text, conversion_arg);
    unsigned short column = 0;
    for (const char character : text) {
      ++column;
      const bool value = character == '\1';  // the code, not the digit
      const auto row = static_cast<unsigned short>(state);
      accepted = set_reference_entry(row, column, value) && set_transformed_entry(row, column, value);
    }
  }
  return accepted;
}

// Copies one side of a row of `source` to the entries of `row` from `column` on.
// A row that does not fit is written entry by entry, and each entry outside is
// refused. The operation for entries takes 16-bit numbers.
void KPT_STATE_TABLE_IMPL::place_row(KPT_SET_ENUM set, unsigned row, unsigned column,
                                     const KPT_STATE_TABLE_IMPL& source, unsigned source_row) {
  const unsigned count = source.columns(set);
  const std::uint64_t from = source.position(set, source_row, 1);
  if (row <= m_num_rows && column != 0 && column + count - 1 <= columns(set)) {
    bits(set).copy_bits(position(set, row, column), source.bits(set), from, count);
    return;
  }
  for (unsigned c = 0; c < count; ++c) {
    set_entry(set, static_cast<unsigned short>(row), static_cast<unsigned short>(column + c),
              source.bits(set).get(from + c));
  }
}

KPT_STATE_TABLE_IMPL KPT_STATE_TABLE_IMPL::cross_product_table(const KPT_STATE_TABLE_IMPL& other) const {
  const unsigned states = m_num_rows;
  const unsigned other_states = other.m_num_rows;
  KPT_STATE_TABLE_IMPL product(static_cast<unsigned short>(states * other_states),
                               static_cast<unsigned short>(m_num_r_columns + other.m_num_r_columns),
                               static_cast<unsigned short>(m_num_t_columns + other.m_num_t_columns));
  for (const KPT_SET_ENUM set : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for (unsigned s = 1; s <= states && columns(set) != 0; ++s) {
      for (unsigned u = 1; u <= other_states; ++u) {
        product.place_row(set, s + u - 1, 1, *this, s);
      }
    }
    // After the first loop, because the other's first column overwrites this table's last one.
    for (unsigned s = 1; s <= states && other.columns(set) != 0; ++s) {
      for (unsigned u = 1; u <= other_states; ++u) {
        product.place_row(set, s + u - 1, columns(set), other, u);
      }
    }
  }
  return product;
}

bool KPT_STATE_TABLE_IMPL::remove_t_column(unsigned short column) {
  if (m_num_t_columns == 0) {
    return false;
  }
  const unsigned removed = std::clamp<unsigned>(column, 1, m_num_t_columns);
  const unsigned before = removed - 1;
  const unsigned behind = m_num_t_columns - removed;
  KPT_BIT_TABLE kept;
  for (std::uint64_t row = 0; row < m_num_rows; ++row) {
    const std::uint64_t from = row * m_num_t_columns;
    const std::uint64_t to = row * (m_num_t_columns - 1U);
    kept.copy_bits(to, m_t_table, from, before);
    kept.copy_bits(to + before, m_t_table, from + removed, behind);
  }
  m_t_table = std::move(kept);
  --m_num_t_columns;
  return true;
}

bool KPT_STATE_TABLE_IMPL::remove_invalid_rows(unsigned short keep_column, unsigned short other_column) {
  KPT_STATE_TABLE_IMPL valid(0, m_num_r_columns, m_num_t_columns);
  for (unsigned row = 1; row <= m_num_rows; ++row) {
    const auto state = static_cast<unsigned short>(row);
    const int kept = get_transformed_entry(state, keep_column);
    const int other = get_transformed_entry(state, other_column);
    if (kept == other) {
      ++valid.m_num_rows;
      valid.place_row(KPT_REFERENCE_SET, valid.m_num_rows, 1, *this, row);
      valid.place_row(KPT_TRANSFORMED_SET, valid.m_num_rows, 1, *this, row);
    }
  }
  *this = std::move(valid);
  return true;
}
