// Random operations on state tables. Each step is compared with a plain table of
// Booleans: results, entries and the lines that the host gets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "tests/support/host_lines.h"
#include "tests/support/seed.h"
#include "tests/support/state_table_text.h"

namespace {

using kpt_test::HOST_LINES;
using LINES = std::vector<std::string>;

unsigned short narrow(unsigned long number) { return static_cast<unsigned short>(number); }

struct MODEL_SIDE {
  const char* refused_write;
  unsigned long columns = 0;
  std::vector<bool> bits;
};

// Computes every position in the slow way and looks at each entry.
struct MODEL {
  MODEL(unsigned long states, unsigned long r, unsigned long t) : rows(states) {
    sides[0] = {kpt_test::REFUSED_R_WRITE, r, std::vector<bool>(states * r)};
    sides[1] = {kpt_test::REFUSED_T_WRITE, t, std::vector<bool>(states * t)};
  }

  bool set(int set, unsigned long row, unsigned long column, bool value, LINES& lines) {
    if (set != 0 && set != 1) {
      lines.emplace_back(kpt_test::UNKNOWN_SIDE);
      return false;
    }
    MODEL_SIDE& side = sides[set];
    if (row != 0 && column != 0 && row <= rows && column <= side.columns &&
        (row * column) % 65536 <= side.bits.size()) {
      side.bits[(row - 1) * side.columns + column - 1] = value;
      return true;
    }
    lines.emplace_back(side.refused_write);
    return false;
  }

  int get(int set, unsigned long row, unsigned long column, LINES& lines) const {
    if (set != 0 && set != 1) {
      return 3;
    }
    const MODEL_SIDE& side = sides[set];
    if (row == 0 || column == 0 || (row * column) % 65536 > side.bits.size() ||
        (row - 1) * side.columns + column - 1 >= side.bits.size()) {
      lines.emplace_back(kpt_test::REFUSED_READ);
      return 2;
    }
    return side.bits[(row - 1) * side.columns + column - 1] ? 1 : 0;
  }

  bool canonical(int set) const {
    const unsigned long columns = sides[set == 0 ? 0 : 1].columns;
    for (unsigned long a = 1; a < columns; ++a) {
      for (unsigned long b = a + 1; b <= columns; ++b) {
        unsigned long equal = 0;
        LINES none;
        for (unsigned long s = 1; s <= rows; ++s) {
          equal += get(set, s, a, none) == get(set, s, b, none) ? 1U : 0U;
        }
        if (equal == rows || equal == 0) {
          return false;
        }
      }
    }
    return true;
  }

  void flip(unsigned long column) {
    for (unsigned long r = 0; r < rows; ++r) {
      if (sides[1].columns * r + column < sides[1].bits.size()) {
        sides[1].bits[sides[1].columns * r + column].flip();
      }
    }
  }

  KPT_ROW_LIST row_list(unsigned long column, bool value) const {
    KPT_ROW_LIST list;
    for (unsigned long r = 0; r < rows; ++r) {
      const unsigned long at = r * sides[1].columns + column;
      if (at < sides[0].bits.size() && sides[0].bits[at] == value) {
        list.push_back(narrow(r));
      }
    }
    return list;
  }

  bool gray(unsigned long a, unsigned long b, unsigned long column) const {
    const auto bit = [this](unsigned long at) { return at < sides[0].bits.size() && sides[0].bits[at]; };
    bool result = true;
    for (unsigned long c = 0; c < sides[0].columns; ++c) {
      if ((bit(a * c) != bit(b * c)) != (c == column)) {
        result = false;
      }
    }
    return result;
  }

  bool unate(unsigned long r_column, unsigned long t_column, bool positive) const {
    bool result = true;
    for (const unsigned long a : row_list(r_column, false)) {
      for (const unsigned long b : row_list(r_column, true)) {
        const unsigned long at = a * sides[1].columns + t_column;
        const bool first = at < sides[1].bits.size() && sides[1].bits[at];
        const bool second = first;
        if (gray(a, b, r_column) && (positive ? first < second : first > second)) {
          result = false;
        }
      }
    }
    return result;
  }

  // The bases that are used give the digits of the number.
  bool simple(unsigned long states, unsigned long base, LINES& lines) {
    bool result = true;
    for (unsigned long s = 1; s <= states; ++s) {
      unsigned long digits = 1;
      for (unsigned long rest = (s - 1) / base; rest != 0; rest /= base) {
        ++digits;
      }
      for (unsigned long p = 1; p <= digits; ++p) {
        result = set(0, s, p, false, lines) && set(1, s, p, false, lines);
      }
    }
    return result;
  }

  MODEL cross(const MODEL& other, LINES& lines) const {
    MODEL product(rows * other.rows % 65536, (sides[0].columns + other.sides[0].columns) % 65536,
                  (sides[1].columns + other.sides[1].columns) % 65536);
    for (int set = 0; set < 2; ++set) {
      const unsigned long mine = sides[set].columns;
      bool value = false;
      const auto copied = [&value](int entry) {
        if (entry < 2) {
          value = entry == 1;
        }
        return value;
      };
      for (unsigned long s = 1; s <= rows; ++s) {
        for (unsigned long c = 1; c <= mine; ++c) {
          for (unsigned long u = 1; u <= other.rows; ++u) {
            product.set(set, (s + u - 1) % 65536, c, copied(get(set, s, c, lines)), lines);
          }
        }
      }
      for (unsigned long s = 1; s <= rows; ++s) {
        for (unsigned long u = 1; u <= other.rows; ++u) {
          for (unsigned long c = 1; c <= other.sides[set].columns; ++c) {
            product.set(set, (s + u - 1) % 65536, (mine + c - 1) % 65536, copied(other.get(set, u, c, lines)), lines);
          }
        }
      }
    }
    return product;
  }

  bool remove_column(unsigned long column) {
    MODEL_SIDE& side = sides[1];
    if (side.columns == 0) {
      return false;
    }
    const unsigned long gone = column == 0 ? 1 : column > side.columns ? side.columns : column;
    std::vector<bool> kept;
    for (unsigned long at = 0; at < side.bits.size(); ++at) {
      if (at % side.columns + 1 != gone) {
        kept.push_back(side.bits[at]);
      }
    }
    side.bits = kept;
    --side.columns;
    return true;
  }

  bool remove_rows(unsigned long keep, unsigned long other, LINES& lines) {
    MODEL valid(0, sides[0].columns, sides[1].columns);
    for (unsigned long s = 1; s <= rows; ++s) {
      const int a = get(1, s, keep, lines);
      const int b = get(1, s, other, lines);
      if (a == b) {
        ++valid.rows;
        for (int set = 0; set < 2; ++set) {
          for (unsigned long c = 1; c <= sides[set].columns; ++c) {
            valid.sides[set].bits.push_back(get(set, s, c, lines) == 1);
          }
        }
      }
    }
    *this = valid;
    return true;
  }

  bool equals(const MODEL& other) const {
    return rows == other.rows && sides[0].columns == other.sides[0].columns &&
           sides[1].columns == other.sides[1].columns && sides[0].bits == other.sides[0].bits &&
           sides[1].bits == other.sides[1].bits;
  }

  unsigned long rows;
  MODEL_SIDE sides[2];
};

class StateTableModel : public testing::Test {
 protected:
  unsigned long below(unsigned long bound) { return m_random() % bound; }

  // Mostly within or just beyond the count, sometimes any number.
  unsigned short near(unsigned long count) { return narrow(below(8) == 0 ? below(65536) : below(count + 3)); }

  void check(const KPT_STATE_TABLE_IMPL& table, const MODEL& model, const char* what) {
    ASSERT_EQ(m_lines.take_debug(), m_expected) << what;
    m_expected.clear();
    ASSERT_EQ(table.get_num_states(), model.rows) << what;
    ASSERT_EQ(table.get_num_reference_registers(), model.sides[0].columns) << what;
    ASSERT_EQ(table.get_num_transformed_registers(), model.sides[1].columns) << what;
    for (int set = 0; set < 2; ++set) {
      for (unsigned long at = 0; at < model.sides[set].bits.size(); ++at) {
        const unsigned long columns = model.sides[set].columns;
        ASSERT_EQ(table.get_entry(static_cast<KPT_SET_ENUM>(set), narrow(at / columns + 1), narrow(at % columns + 1)),
                  model.sides[set].bits[at] ? 1 : 0)
            << what << ", side " << set << ", position " << at;
      }
    }
    ASSERT_EQ(m_lines.take_debug(), LINES()) << what;
  }

  void fill(KPT_STATE_TABLE_IMPL& table, MODEL& model) {
    for (int set = 0; set < 2; ++set) {
      for (unsigned long row = 1; row <= model.rows; ++row) {
        for (unsigned long column = 1; column <= model.sides[set].columns; ++column) {
          const bool value = below(2) != 0;
          ASSERT_TRUE(table.set_entry(static_cast<KPT_SET_ENUM>(set), narrow(row), narrow(column), value));
          model.set(set, row, column, value, m_expected);
        }
      }
    }
  }

  std::mt19937 m_random{kpt_test::seed()};
  HOST_LINES m_lines;
  LINES m_expected;
};

TEST_F(StateTableModel, EveryStepIsThatOfAPlainTable) {
  SCOPED_TRACE("seed " + std::to_string(kpt_test::seed()));
  std::vector<KPT_STATE_TABLE_IMPL> tables;
  std::vector<MODEL> models;
  for (int k = 0; k < 4; ++k) {
    tables.emplace_back(0, 0, 0);
    models.emplace_back(0, 0, 0);
  }
  const int steps = kpt_test::steps(20000);
  for (int step = 0; step < steps; ++step) {
    const unsigned long which = below(tables.size());
    KPT_STATE_TABLE_IMPL& table = tables[which];
    MODEL& model = models[which];
    const unsigned long second = below(tables.size());
    const int set = below(12) == 0 ? static_cast<int>(below(6)) - 2 : static_cast<int>(below(2));
    const unsigned long columns = model.sides[set == 0 ? 0 : 1].columns;
    const unsigned short row = near(model.rows);
    const unsigned short column = near(columns);
    const unsigned short r_column = near(model.sides[0].columns);
    const unsigned short t_column = near(model.sides[1].columns);
    const bool value = below(2) != 0;
    const unsigned long operation = below(24);
    SCOPED_TRACE("step " + std::to_string(step) + ", operation " + std::to_string(operation));
    switch (operation) {
      case 0: {  // a new table, small, flat, wide, or beyond 65,536 entries
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
        table = KPT_STATE_TABLE_IMPL(narrow(sizes[0]), narrow(sizes[1]), narrow(sizes[2]));
        model = MODEL(sizes[0], sizes[1], sizes[2]);
        if (value) {
          fill(table, model);
        }
        break;
      }
      case 1:
        table = tables[second];
        model = models[second];
        break;
      case 2: {
        KPT_STATE_TABLE_IMPL moved(std::move(table));
        ASSERT_TRUE(table == KPT_STATE_TABLE_IMPL(0, 0, 0));  // NOLINT(bugprone-use-after-move)
        table = std::move(moved);
        break;
      }
      case 3:
        ASSERT_EQ(table == tables[second], model.equals(models[second]));
        break;
      case 4: {
        const KPT_STATE_TABLE seen(table);
        ASSERT_EQ(seen.get_number_of_states(), model.rows);
        ASSERT_EQ(seen.get_reference_entry(row, r_column), model.get(0, row, r_column, m_expected));
        ASSERT_EQ(seen.get_transformed_entry(row, t_column), model.get(1, row, t_column, m_expected));
        break;
      }
      case 5:
        ASSERT_EQ(table.is_table_in_canonical_form(static_cast<KPT_SET_ENUM>(set)), model.canonical(set));
        break;
      case 6:
        table.flip_bits_of_t_column(t_column);
        model.flip(t_column);
        break;
      case 7:
        ASSERT_EQ(table.get_row_list(r_column, value), model.row_list(r_column, value));
        break;
      case 8:
      case 9: {
        const unsigned short other_row = near(model.rows);
        ASSERT_EQ(table.rows_are_gray(row, other_row, r_column), model.gray(row, other_row, r_column));
        break;
      }
      case 10:
        ASSERT_EQ(table.check_positive_unateness(r_column, t_column), model.unate(r_column, t_column, true));
        ASSERT_EQ(table.check_negative_unateness(r_column, t_column), model.unate(r_column, t_column, false));
        break;
      case 11: {
        const unsigned long states = below(model.rows + 3);
        const unsigned long base = 2 + below(35);
        ASSERT_EQ(table.update_simple_table(narrow(states), narrow(base)), model.simple(states, base, m_expected));
        break;
      }
      case 12: {
        const unsigned long entries = model.rows * models[second].rows * 40;
        if (entries < 100000) {
          const MODEL product = model.cross(models[second], m_expected);
          const KPT_STATE_TABLE_IMPL crossed = table.cross_product_table(tables[second]);
          check(crossed, product, "product");
          if (product.rows * (product.sides[0].columns + product.sides[1].columns) < 2000) {
            table = crossed;
            model = product;
          }
        }
        break;
      }
      case 13:
        ASSERT_EQ(table.remove_t_column(t_column), model.remove_column(t_column));
        break;
      case 14: {
        const unsigned short other_column = near(model.sides[1].columns);
        ASSERT_EQ(table.remove_invalid_rows(t_column, other_column),
                  model.remove_rows(t_column, other_column, m_expected));
        break;
      }
      case 15:
      case 16:
      case 17:
        ASSERT_EQ(table.get_entry(static_cast<KPT_SET_ENUM>(set), row, column),
                  model.get(set, row, column, m_expected));
        break;
      default:
        ASSERT_EQ(table.set_entry(static_cast<KPT_SET_ENUM>(set), row, column, value),
                  model.set(set, row, column, value, m_expected));
        break;
    }
    if (HasFatalFailure()) {
      return;
    }
    check(table, model, "after");
    if (HasFatalFailure()) {
      return;
    }
  }
}

}  // namespace
