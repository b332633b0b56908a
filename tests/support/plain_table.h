// A state table as two vectors of Booleans, written from what each operation
// is to do, without a thought of speed: what the library's table is compared
// with. Lines that the library would tell the host are added to `lines`.
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

  /// The table of a register that is kept as it is: 0 stays 0, 1 stays 1.
  static TABLE of_kept_register();

  // Rows and columns count from 1. Positions are formed and looked at one by one.

  /// 2 outside the table; 3 for an unknown side, without a line.
  int get(int side, unsigned long row, unsigned long column, LINES& lines) const;
  /// False, with a line, outside the table and for an unknown side.
  bool set(int side, unsigned long row, unsigned long column, bool value, LINES& lines);
  /// The entry at a position that is within the table.
  bool bit(int side, unsigned long row, unsigned long column) const;

  /// `column` counts from 0; one beyond the table turns bits of later rows.
  void flip_t_column(unsigned long column);
  /// False without T columns. 0 is the first column, and a column beyond the last is the last.
  bool remove_t_column(unsigned long column);
  /// Keeps the rows in which both T columns read alike. A column outside the table reads as 2.
  void keep_rows_that_agree(unsigned long a, unsigned long b, LINES& lines);
  /// The first column of the other table lands on the last one of this table.
  TABLE product(const TABLE& other, LINES& lines) const;
  /// Writes states as numbers of that base: every digit writes false. The answer to the last write.
  bool update_simply(unsigned long states, unsigned long base, LINES& lines);

  /// No two columns agree in all rows, or differ in all. An unknown side has the columns of T, all alike.
  bool is_canonical(int side) const;

  // Rows and columns count from 0, and R bits are sought where T bits are.

  KPT_ROW_LIST row_list(unsigned long column, bool value) const;
  bool rows_are_gray(unsigned long row_a, unsigned long row_b, unsigned long column) const;
  bool is_unate(unsigned long r_column, unsigned long t_column, bool positive) const;

  bool operator==(const TABLE& other) const = default;

  unsigned long rows;
  unsigned long columns[2];
  std::vector<bool> bits[2];  // row by row
};

/// One text per state: "10 1".
std::ostream& operator<<(std::ostream& stream, const TABLE& table);

/// The same table in the library, and a library's table read entry by entry.
KPT_STATE_TABLE_IMPL real_table(const TABLE& table);
TABLE plain_table(const KPT_STATE_TABLE_IMPL& table);

}  // namespace kpt_test::plain

#endif
