// A state table as two vectors of Booleans, written from the descriptions of the
// operations, without regard to speed. The library's table is compared with it.
// Lines that the library would issue are added to `lines`.
//
// Ownership: values.
#ifndef TESTS_SUPPORT_PLAIN_TABLE_H
#define TESTS_SUPPORT_PLAIN_TABLE_H

#include <iosfwd>
#include <vector>

#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/host_lines.h"

namespace kpt_test::plain {

/// The sides of tables and maps, with the numbers of KPT_SET_ENUM.
enum SIDE { R, T };

struct TABLE {
  /// Every entry is false.
  TABLE(unsigned long num_rows, unsigned long num_r_columns, unsigned long num_t_columns);

  /// The table of a kept register: 0 stays 0, and 1 stays 1.
  static TABLE of_kept_register();

  // Rows and columns count from 1. Every position is computed and read separately.

  /// 2 outside the table; 3 for an unknown side, without a line.
  int get(int side, unsigned long row, unsigned long column, LINES& lines) const;
  /// False, with a line, outside the table and for an unknown side.
  bool set(int side, unsigned long row, unsigned long column, bool value, LINES& lines);
  /// The entry at a position that is within the table.
  bool bit(int side, unsigned long row, unsigned long column) const;

  /// `column` counts from 0. A column beyond the table inverts bits of later rows.
  void flip_t_column(unsigned long column);
  /// False without T columns. 0 means the first column, and a number beyond the last means the last.
  bool remove_t_column(unsigned long column);
  /// Keeps the rows in which both T columns read the same. A column outside the table reads as 2.
  void keep_rows_that_agree(unsigned long a, unsigned long b, LINES& lines);
  /// The other table's first column overwrites this table's last one.
  TABLE product(const TABLE& other, LINES& lines) const;
  /// Writes states as numbers of that base: every digit writes false. Returns the result of the last write.
  bool update_simply(unsigned long states, unsigned long base, LINES& lines);

  /// Whether no two columns agree in all rows, or differ in all. An unknown side has as many columns as T, all equal.
  bool is_canonical(int side) const;

  // Rows and columns count from 0, and R bits are read at the positions of T bits.

  KPT_ROW_LIST row_list(unsigned long column, bool value) const;
  bool rows_are_gray(unsigned long row_a, unsigned long row_b, unsigned long column) const;
  bool is_unate(unsigned long r_column, unsigned long t_column, bool positive) const;

  bool operator==(const TABLE& other) const = default;

  unsigned long rows;
  unsigned long columns[2];
  std::vector<bool> bits[2];  // row by row
};

/// One text for each state: "10 1".
std::ostream& operator<<(std::ostream& stream, const TABLE& table);

/// The same table as the library's class, and the library's table read entry by entry.
KPT_STATE_TABLE_IMPL real_table(const TABLE& table);
TABLE plain_table(const KPT_STATE_TABLE_IMPL& table);

}  // namespace kpt_test::plain

#endif
