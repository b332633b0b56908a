// Random operations on state tables. Each step is compared with the plain table:
// results, entries and the lines that the host gets.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/plain_table.h"
#include "tests/support/seed.h"

namespace {

using kpt_test::LINES;
using kpt_test::plain::plain_table;
using kpt_test::plain::R;
using kpt_test::plain::T;
using kpt_test::plain::TABLE;

unsigned short narrow(unsigned long number) { return static_cast<unsigned short>(number); }

// The choices of a step. Most operations use only some of them.
struct CHOICE {
  KPT_STATE_TABLE_IMPL& table;
  TABLE& plain;
  std::size_t second;  // another table, or the same one
  int side;            // sometimes an unknown side
  unsigned short row;
  unsigned short column;
  unsigned short r_column;
  unsigned short t_column;
  bool value;

  KPT_SET_ENUM set() const { return static_cast<KPT_SET_ENUM>(side); }
};

class StateTableModel : public testing::Test {
 protected:
  static constexpr std::size_t TABLES = 4;

  void step(int number) {
    const std::size_t which = below(TABLES);
    const CHOICE choice = any_choice(which);
    const unsigned long operation = below(24);
    SCOPED_TRACE("step " + std::to_string(number) + ", operation " + std::to_string(operation));
    run(operation, choice);
    if (!HasFatalFailure()) {
      check(choice.table, choice.plain, "after");
    }
  }

  std::mt19937 m_random{kpt_test::seed()};

 private:
  unsigned long below(unsigned long bound) { return m_random() % bound; }

  // Mostly within or just beyond the count, sometimes any number.
  unsigned short near(unsigned long count) { return narrow(below(8) == 0 ? below(65536) : below(count + 3)); }

  CHOICE any_choice(std::size_t which) {
    CHOICE choice{m_tables[which], m_plain[which], 0, 0, 0, 0, 0, 0, false};
    const TABLE& plain = choice.plain;
    choice.second = below(TABLES);
    choice.side = below(12) == 0 ? static_cast<int>(below(6)) - 2 : static_cast<int>(below(2));
    choice.row = near(plain.rows);
    choice.column = near(plain.columns[choice.side == R ? R : T]);
    choice.r_column = near(plain.columns[R]);
    choice.t_column = near(plain.columns[T]);
    choice.value = below(2) != 0;
    return choice;
  }

  void run(unsigned long operation, const CHOICE& c) {
    switch (operation) {
      case 0:
        return create(c);
      case 1:
        c.table = m_tables[c.second];
        c.plain = m_plain[c.second];
        return;
      case 2:
        return move(c);
      case 3:
        ASSERT_EQ(c.table == m_tables[c.second], c.plain == m_plain[c.second]);
        return;
      case 4:
        return read_as_client(c);
      case 5:
        ASSERT_EQ(c.table.is_table_in_canonical_form(c.set()), c.plain.is_canonical(c.side));
        return;
      case 6:
        c.table.flip_bits_of_t_column(c.t_column);
        return c.plain.flip_t_column(c.t_column);
      case 7:
        ASSERT_EQ(c.table.get_row_list(c.r_column, c.value), c.plain.row_list(c.r_column, c.value));
        return;
      case 8:
      case 9:
      case 10:
        return compare_rows(operation, c);
      case 11:
        return update_simply(c);
      case 12:
        return multiply(c);
      case 13:
      case 14:
        return remove(operation, c);
      case 15:
      case 16:
      case 17:
        ASSERT_EQ(c.table.get_entry(c.set(), c.row, c.column), c.plain.get(c.side, c.row, c.column, m_expected));
        return;
      default:
        ASSERT_EQ(c.table.set_entry(c.set(), c.row, c.column, c.value),
                  c.plain.set(c.side, c.row, c.column, c.value, m_expected));
    }
  }

  // Small, flat, wide, or beyond 65,536 entries.
  void create(const CHOICE& c) {
    unsigned long sizes[3];
    for (unsigned long& size : sizes) {
      size = below(7);
    }
    if (below(8) == 0) {
      sizes[below(3)] = below(200);
    }
    if (below(300) == 0) {
      sizes[0] = sizes[1] = 260 + below(10);
    }
    c.table = KPT_STATE_TABLE_IMPL(narrow(sizes[0]), narrow(sizes[1]), narrow(sizes[2]));
    c.plain = TABLE(sizes[0], sizes[1], sizes[2]);
    if (c.value) {
      fill(c.table, c.plain);
    }
  }

  void fill(KPT_STATE_TABLE_IMPL& table, TABLE& plain) {
    for (const int side : {R, T}) {
      for (unsigned long row = 1; row <= plain.rows; ++row) {
        for (unsigned long column = 1; column <= plain.columns[side]; ++column) {
          const bool value = below(2) != 0;
          ASSERT_TRUE(table.set_entry(static_cast<KPT_SET_ENUM>(side), narrow(row), narrow(column), value));
          plain.set(side, row, column, value, m_expected);
        }
      }
    }
  }

  static void move(const CHOICE& c) {
    KPT_STATE_TABLE_IMPL moved(std::move(c.table));
    ASSERT_TRUE(c.table == KPT_STATE_TABLE_IMPL(0, 0, 0));  // NOLINT(bugprone-use-after-move)
    c.table = std::move(moved);
  }

  void read_as_client(const CHOICE& c) {
    const KPT_STATE_TABLE seen(c.table);
    ASSERT_EQ(seen.get_number_of_states(), c.plain.rows);
    ASSERT_EQ(seen.get_reference_entry(c.row, c.r_column), c.plain.get(R, c.row, c.r_column, m_expected));
    ASSERT_EQ(seen.get_transformed_entry(c.row, c.t_column), c.plain.get(T, c.row, c.t_column, m_expected));
  }

  void compare_rows(unsigned long operation, const CHOICE& c) {
    if (operation == 10) {
      ASSERT_EQ(c.table.check_positive_unateness(c.r_column, c.t_column),
                c.plain.is_unate(c.r_column, c.t_column, true));
      ASSERT_EQ(c.table.check_negative_unateness(c.r_column, c.t_column),
                c.plain.is_unate(c.r_column, c.t_column, false));
      return;
    }
    const unsigned short other_row = near(c.plain.rows);
    ASSERT_EQ(c.table.rows_are_gray(c.row, other_row, c.r_column), c.plain.rows_are_gray(c.row, other_row, c.r_column));
  }

  void update_simply(const CHOICE& c) {
    const unsigned long states = below(c.plain.rows + 3);
    const unsigned long base = 2 + below(35);
    ASSERT_EQ(c.table.update_simple_table(narrow(states), narrow(base)),
              c.plain.update_simply(states, base, m_expected));
  }

  // A product that is too large for further steps is compared and dropped.
  void multiply(const CHOICE& c) {
    if (c.plain.rows * m_plain[c.second].rows * 40 >= 100000) {
      return;
    }
    const TABLE product = c.plain.product(m_plain[c.second], m_expected);
    const KPT_STATE_TABLE_IMPL crossed = c.table.cross_product_table(m_tables[c.second]);
    check(crossed, product, "product");
    if (product.rows * (product.columns[R] + product.columns[T]) < 2000) {
      c.table = crossed;
      c.plain = product;
    }
  }

  void remove(unsigned long operation, const CHOICE& c) {
    if (operation == 13) {
      ASSERT_EQ(c.table.remove_t_column(c.t_column), c.plain.remove_t_column(c.t_column));
      return;
    }
    const unsigned short other_column = near(c.plain.columns[T]);
    c.plain.keep_rows_that_agree(c.t_column, other_column, m_expected);
    ASSERT_TRUE(c.table.remove_invalid_rows(c.t_column, other_column));
  }

  void check(const KPT_STATE_TABLE_IMPL& table, const TABLE& expected, const char* what) {
    ASSERT_EQ(m_lines.take_debug(), m_expected) << what;
    m_expected.clear();
    ASSERT_EQ(plain_table(table), expected) << what;
    ASSERT_EQ(m_lines.take_debug(), LINES()) << what;
  }

  kpt_test::HOST_LINES m_lines;
  LINES m_expected;
  std::vector<KPT_STATE_TABLE_IMPL> m_tables{TABLES, KPT_STATE_TABLE_IMPL(0, 0, 0)};
  std::vector<TABLE> m_plain{TABLES, TABLE(0, 0, 0)};
};

TEST_F(StateTableModel, EveryStepIsThatOfAPlainTable) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  const int steps = kpt_test::steps(20000);
  for (int number = 0; number < steps && !HasFatalFailure(); ++number) {
    step(number);
  }
}

}  // namespace
