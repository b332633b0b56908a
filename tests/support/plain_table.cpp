#include "tests/support/plain_table.h"

#include <algorithm>
#include <ostream>

#include "tests/support/messages.h"

namespace kpt_test::plain {

namespace {

// Rows, columns and sizes are 16-bit numbers.
constexpr unsigned long WRAP = 65536;

unsigned short narrow(unsigned long number) { return static_cast<unsigned short>(number); }

bool is_known(int side) { return side == R || side == T; }

}  // namespace

TABLE::TABLE(unsigned long num_rows, unsigned long num_r_columns, unsigned long num_t_columns)
    : rows(num_rows),
      columns{num_r_columns, num_t_columns},
      bits{std::vector<bool>(num_rows * num_r_columns), std::vector<bool>(num_rows * num_t_columns)} {}

TABLE TABLE::of_kept_register() {
  TABLE table(2, 1, 1);
  table.bits[R][1] = table.bits[T][1] = true;
  return table;
}

int TABLE::get(int side, unsigned long row, unsigned long column, LINES& lines) const {
  if (!is_known(side)) {
    return 3;
  }
  const std::vector<bool>& all = bits[side];
  if (row == 0 || column == 0 || row * column % WRAP > all.size() ||
      (row - 1) * columns[side] + column - 1 >= all.size()) {
    lines.emplace_back(REFUSED_READ);
    return 2;
  }
  return bit(side, row, column) ? 1 : 0;
}

bool TABLE::set(int side, unsigned long row, unsigned long column, bool value, LINES& lines) {
  if (!is_known(side)) {
    lines.emplace_back(UNKNOWN_SIDE);
    return false;
  }
  if (row == 0 || column == 0 || row > rows || column > columns[side]) {
    lines.emplace_back(side == R ? REFUSED_R_WRITE : REFUSED_T_WRITE);
    return false;
  }
  bits[side][(row - 1) * columns[side] + column - 1] = value;
  return true;
}

bool TABLE::bit(int side, unsigned long row, unsigned long column) const {
  return bits[side][(row - 1) * columns[side] + column - 1];
}

void TABLE::flip_t_column(unsigned long column) {
  for (unsigned long row = 0; row < rows; ++row) {
    const unsigned long at = row * columns[T] + column;
    if (at < bits[T].size()) {
      bits[T][at].flip();
    }
  }
}

bool TABLE::remove_t_column(unsigned long column) {
  if (columns[T] == 0) {
    return false;
  }
  const unsigned long removed = std::clamp(column, 1UL, columns[T]);
  std::vector<bool> kept;
  for (unsigned long row = 1; row <= rows; ++row) {
    for (unsigned long c = 1; c <= columns[T]; ++c) {
      if (c != removed) {
        kept.push_back(bit(T, row, c));
      }
    }
  }
  bits[T] = kept;
  --columns[T];
  return true;
}

void TABLE::keep_rows_that_agree(unsigned long a, unsigned long b, LINES& lines) {
  TABLE kept(0, columns[R], columns[T]);
  for (unsigned long row = 1; row <= rows; ++row) {
    const int first = get(T, row, a, lines);
    const int second = get(T, row, b, lines);
    if (first == second) {
      ++kept.rows;
      for (const SIDE side : {R, T}) {
        for (unsigned long column = 1; column <= columns[side]; ++column) {
          kept.bits[side].push_back(bit(side, row, column));
        }
      }
    }
  }
  *this = kept;
}

TABLE TABLE::product(const TABLE& other, LINES& lines) const {
  TABLE product(rows * other.rows % WRAP, (columns[R] + other.columns[R]) % WRAP,
                (columns[T] + other.columns[T]) % WRAP);
  for (const SIDE side : {R, T}) {
    for (unsigned long s = 1; s <= rows; ++s) {
      for (unsigned long u = 1; u <= other.rows; ++u) {
        for (unsigned long c = 1; c <= columns[side]; ++c) {
          product.set(side, (s + u - 1) % WRAP, c, bit(side, s, c), lines);
        }
      }
    }
    // After the first loop, so that the other table's values remain.
    for (unsigned long s = 1; s <= rows; ++s) {
      for (unsigned long u = 1; u <= other.rows; ++u) {
        for (unsigned long c = 1; c <= other.columns[side]; ++c) {
          product.set(side, (s + u - 1) % WRAP, (columns[side] + c - 1) % WRAP, other.bit(side, u, c), lines);
        }
      }
    }
  }
  return product;
}

bool TABLE::update_simply(unsigned long states, unsigned long base, LINES& lines) {
  bool accepted = true;
  for (unsigned long state = 1; state <= states; ++state) {
    unsigned long digits = 1;
    for (unsigned long rest = (state - 1) / base; rest != 0; rest /= base) {
      ++digits;
    }
    for (unsigned long column = 1; column <= digits; ++column) {
      accepted = set(R, state, column, false, lines) && set(T, state, column, false, lines);
    }
  }
  return accepted;
}

bool TABLE::is_canonical(int side) const {
  const unsigned long count = columns[side == R ? R : T];
  for (unsigned long a = 1; a < count; ++a) {
    for (unsigned long b = a + 1; b <= count; ++b) {
      unsigned long equal = 0;
      LINES none;
      for (unsigned long row = 1; row <= rows; ++row) {
        equal += get(side, row, a, none) == get(side, row, b, none) ? 1U : 0U;
      }
      if (equal == rows || equal == 0) {
        return false;
      }
    }
  }
  return true;
}

KPT_ROW_LIST TABLE::row_list(unsigned long column, bool value) const {
  KPT_ROW_LIST list;
  for (unsigned long row = 0; row < rows; ++row) {
    const unsigned long at = row * columns[T] + column;
    if (at < bits[R].size() && bits[R][at] == value) {
      list.push_back(narrow(row));
    }
  }
  return list;
}

bool TABLE::rows_are_gray(unsigned long row_a, unsigned long row_b, unsigned long column) const {
  const auto bit_at = [this](unsigned long at) { return at < bits[R].size() && bits[R][at]; };
  bool gray = true;
  for (unsigned long c = 0; c < columns[R]; ++c) {
    if ((bit_at(row_a * c) != bit_at(row_b * c)) != (c == column)) {
      gray = false;
    }
  }
  return gray;
}

// The bit of the first row is compared with itself.
bool TABLE::is_unate(unsigned long r_column, unsigned long t_column, bool positive) const {
  bool unate = true;
  for (const unsigned long a : row_list(r_column, false)) {
    for (const unsigned long b : row_list(r_column, true)) {
      const unsigned long at = a * columns[T] + t_column;
      const bool first = at < bits[T].size() && bits[T][at];
      const bool second = first;
      if (rows_are_gray(a, b, r_column) && (positive ? first < second : first > second)) {
        unate = false;
      }
    }
  }
  return unate;
}

std::ostream& operator<<(std::ostream& stream, const TABLE& table) {
  for (unsigned long row = 1; row <= table.rows; ++row) {
    for (const SIDE side : {R, T}) {
      for (unsigned long column = 1; column <= table.columns[side]; ++column) {
        stream << (table.bit(side, row, column) ? '1' : '0');
      }
      stream << (side == R ? " " : ", ");
    }
  }
  return stream;
}

KPT_STATE_TABLE_IMPL real_table(const TABLE& table) {
  KPT_STATE_TABLE_IMPL real(narrow(table.rows), narrow(table.columns[R]), narrow(table.columns[T]));
  for (const SIDE side : {R, T}) {
    for (unsigned long row = 1; row <= table.rows; ++row) {
      for (unsigned long column = 1; column <= table.columns[side]; ++column) {
        real.set_entry(static_cast<KPT_SET_ENUM>(side), narrow(row), narrow(column), table.bit(side, row, column));
      }
    }
  }
  return real;
}

TABLE plain_table(const KPT_STATE_TABLE_IMPL& table) {
  TABLE plain(table.get_num_states(), table.get_num_reference_registers(), table.get_num_transformed_registers());
  for (const SIDE side : {R, T}) {
    for (unsigned long row = 1; row <= plain.rows; ++row) {
      for (unsigned long column = 1; column <= plain.columns[side]; ++column) {
        const int entry = table.get_entry(static_cast<KPT_SET_ENUM>(side), narrow(row), narrow(column));
        plain.bits[side][(row - 1) * plain.columns[side] + column - 1] = entry == 1;
      }
    }
  }
  return plain;
}

}  // namespace kpt_test::plain
