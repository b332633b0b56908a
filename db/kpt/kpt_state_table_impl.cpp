#include "db/kpt/kpt_state_table_impl.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "db/kpt/msg_kpt.h"

namespace {

bool is_known(KPT_SET_ENUM set) { return set == KPT_REFERENCE_SET || set == KPT_TRANSFORMED_SET; }

// Classes of columns that the rows so far do not distinguish. At first all columns are in one class.
class COLUMN_CLASSES {
 public:
  explicit COLUMN_CLASSES(unsigned num_columns) : m_class_of(num_columns, 0) {
    m_classes.reserve(num_columns);
    m_classes.push_back({num_columns});
  }

  bool all_are_alone() const { return m_classes.size() == m_class_of.size(); }

  /// The column is true in the present row.
  void add(unsigned column) {
    CLASS& its_class = m_classes[m_class_of[column]];
    if (its_class.members > 1) {
      m_true_columns.push_back(column);
      if (its_class.true_members++ == 0) {
        m_touched.push_back(m_class_of[column]);
      }
    }
  }

  /// The true columns of a class move to a class of their own, unless all columns of the class are true.
  void end_row() {
    for (const unsigned touched : m_touched) {
      CLASS& its_class = m_classes[touched];
      if (its_class.true_members < its_class.members) {
        its_class.members -= its_class.true_members;
        its_class.split_into = static_cast<unsigned>(m_classes.size());
        m_classes.push_back({its_class.true_members});
      }
    }
    for (const unsigned column : m_true_columns) {
      const unsigned split_into = m_classes[m_class_of[column]].split_into;
      m_class_of[column] = split_into == 0 ? m_class_of[column] : split_into;
    }
    for (const unsigned touched : m_touched) {
      m_classes[touched] = {m_classes[touched].members};
    }
    m_true_columns.clear();
    m_touched.clear();
  }

 private:
  struct CLASS {
    unsigned members = 0;
    unsigned true_members = 0;  // in the present row
    unsigned split_into = 0;    // the class for these; 0 for none
  };
  using NUMBERS = std::vector<unsigned, MEM_STL_ALLOCATOR<unsigned>>;

  NUMBERS m_class_of;
  std::vector<CLASS, MEM_STL_ALLOCATOR<CLASS>> m_classes;
  NUMBERS m_true_columns;
  NUMBERS m_touched;
};

}  // namespace

KPT_STATE_TABLE_IMPL::KPT_STATE_TABLE_IMPL(unsigned short num_states, unsigned short num_reference_registers,
                                           unsigned short num_transformed_registers)
    : m_num_rows(num_states), m_num_r_columns(num_reference_registers), m_num_t_columns(num_transformed_registers) {}

KPT_STATE_TABLE_IMPL::KPT_STATE_TABLE_IMPL(const KPT_STATE_TABLE_IMPL& other) = default;

KPT_STATE_TABLE_IMPL::KPT_STATE_TABLE_IMPL(KPT_STATE_TABLE_IMPL&& other) noexcept
    : m_num_rows(std::exchange(other.m_num_rows, 0)),
      m_num_r_columns(std::exchange(other.m_num_r_columns, 0)),
      m_num_t_columns(std::exchange(other.m_num_t_columns, 0)),
      m_r_table(std::move(other.m_r_table)),
      m_t_table(std::move(other.m_t_table)) {}

KPT_STATE_TABLE_IMPL& KPT_STATE_TABLE_IMPL::operator=(const KPT_STATE_TABLE_IMPL& other) {
  if (this != &other) {
    *this = KPT_STATE_TABLE_IMPL(other);
  }
  return *this;
}

KPT_STATE_TABLE_IMPL& KPT_STATE_TABLE_IMPL::operator=(KPT_STATE_TABLE_IMPL&& other) noexcept {
  if (this != &other) {
    m_num_rows = std::exchange(other.m_num_rows, 0);
    m_num_r_columns = std::exchange(other.m_num_r_columns, 0);
    m_num_t_columns = std::exchange(other.m_num_t_columns, 0);
    m_r_table = std::move(other.m_r_table);
    m_t_table = std::move(other.m_t_table);
  }
  return *this;
}

KPT_STATE_TABLE_IMPL::~KPT_STATE_TABLE_IMPL() = default;

bool KPT_STATE_TABLE_IMPL::operator==(const KPT_STATE_TABLE_IMPL& other) const {
  return m_num_rows == other.m_num_rows && m_num_r_columns == other.m_num_r_columns &&
         m_num_t_columns == other.m_num_t_columns && m_r_table == other.m_r_table && m_t_table == other.m_t_table;
}

bool KPT_STATE_TABLE_IMPL::set_entry(KPT_SET_ENUM set, unsigned short row, unsigned short column, bool value) {
  if (!is_known(set)) {
    kpt_msg_debug("Error: Unknown Set Type");
    return false;
  }
  if (row == 0 || column == 0 || row > m_num_rows || column > columns(set)) {
    const char side = set == KPT_REFERENCE_SET ? 'r' : 't';
    kpt_msg_debug(
        "Error: Trying to insert into a location outside \t\t\t\t\t\t\t\t of the declared size of %c "
        "\t\t\t\t\t\t\t\t (m_num_%c_columns x m_num_rows",
        side, side);
    return false;
  }
  bits(set).set(position(set, row, column), value);
  return true;
}

bool KPT_STATE_TABLE_IMPL::set_reference_entry(unsigned short row, unsigned short column, bool value) {
  return set_entry(KPT_REFERENCE_SET, row, column, value);
}

bool KPT_STATE_TABLE_IMPL::set_transformed_entry(unsigned short row, unsigned short column, bool value) {
  return set_entry(KPT_TRANSFORMED_SET, row, column, value);
}

int KPT_STATE_TABLE_IMPL::get_entry(KPT_SET_ENUM set, unsigned short row, unsigned short column) const {
  if (!is_known(set)) {
    return 3;
  }
  const std::uint64_t entries = length(set);
  const auto product = static_cast<unsigned short>(unsigned{row} * unsigned{column});
  if (row == 0 || column == 0 || product > entries || position(set, row, column) >= entries) {
    // The line says R table for both sides.
    kpt_msg_debug("Error: Trying to access outside of R table bounds");
    return 2;
  }
  return bits(set).get(position(set, row, column)) ? 1 : 0;
}

int KPT_STATE_TABLE_IMPL::get_reference_entry(unsigned short row, unsigned short column) const {
  return get_entry(KPT_REFERENCE_SET, row, column);
}

int KPT_STATE_TABLE_IMPL::get_transformed_entry(unsigned short row, unsigned short column) const {
  return get_entry(KPT_TRANSFORMED_SET, row, column);
}

// Columns that agree in every row so far form a class; each column is compared
// after an exclusive or with its first entry. Each row splits the classes that it
// distinguishes. The table is canonical when every column is alone. This reads
// the set bits once, and usually stops after a few rows.
bool KPT_STATE_TABLE_IMPL::is_table_in_canonical_form(KPT_SET_ENUM set) const {
  const unsigned num_columns = columns(set);
  if (num_columns < 2) {
    return true;
  }
  if (!is_known(set)) {
    return false;
  }
  const KPT_BIT_TABLE& table = bits(set);
  COLUMN_CLASSES classes(num_columns);
  for (std::uint64_t row = 1; row < m_num_rows && !classes.all_are_alone(); ++row) {
    const std::uint64_t start = row * num_columns;
    if (start >= table.kept() + num_columns) {
      break;  // all false like the row before, so it splits no class
    }
    for (unsigned column = 0; column < num_columns; column += 64) {
      const unsigned count = std::min(64U, num_columns - column);
      for (std::uint64_t left = table.get_bits(start + column, count) ^ table.get_bits(column, count); left != 0;
           left &= left - 1) {
        classes.add(column + static_cast<unsigned>(std::countr_zero(left)));
      }
    }
    classes.end_row();
  }
  return classes.all_are_alone();
}

bool KPT_STATE_TABLE_IMPL::is_r_table_in_canonical_form() const {
  return is_table_in_canonical_form(KPT_REFERENCE_SET);
}

bool KPT_STATE_TABLE_IMPL::is_t_table_in_canonical_form() const {
  return is_table_in_canonical_form(KPT_TRANSFORMED_SET);
}
