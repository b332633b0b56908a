// A relation: which values some registers take together. The algebra of state
// tables, with columns that have names.
//
// Ownership: owns its columns and rows; a copy is independent.
//
// A column is named by a number that its user chooses, a row is a set of bits,
// one a column. Rows are distinct and keep the order in which they were added.
#ifndef KPT_RELATION_H
#define KPT_RELATION_H

#include <cstdint>

#include "db/kpt/composition/kpt_vector.h"

class KPT_RELATION {
 public:
  using COLUMN = std::uint32_t;
  using COLUMNS = KPT_VECTOR<COLUMN>;
  static constexpr std::size_t MOST = 65535;  // rows, and columns: what a state table can have

  /// Two columns that are equal, or inverse, in every row.
  struct TWINS {
    COLUMN first;
    COLUMN second;
    bool inverse;
  };
  struct CONSTANT {
    COLUMN column;
    bool value;
  };
  /// What `settle` has taken out of a relation.
  struct SETTLED {
    KPT_VECTOR<TWINS> twins;
    KPT_VECTOR<CONSTANT> constants;
    bool empty() const { return twins.empty() && constants.empty(); }
  };

  KPT_RELATION() = default;
  explicit KPT_RELATION(COLUMNS columns);

  const COLUMNS& columns() const { return m_columns; }
  std::size_t rows() const { return m_rows; }
  /// Columns are given by their place here and below, from 0.
  bool bit(std::size_t row, std::size_t place) const { return (word(row, place) >> (place % 64U) & 1U) != 0; }

  /// Adds a row of zeros, to be filled; `make_distinct` ends the filling.
  void add_row();
  void set_bit(std::size_t row, std::size_t place) { word(row, place) |= std::uint64_t{1} << (place % 64U); }
  void make_distinct();

  /// The column has the other sense, and another name.
  void rename(std::size_t place, COLUMN column, bool inverse);
  /// Keeps the rows in which the column has that value.
  void keep_where(std::size_t place, bool value);
  /// Keeps the rows in which the two columns are equal.
  void keep_where_equal(std::size_t place, std::size_t other);
  /// Keeps the columns at these places, in this order.
  KPT_RELATION project(const KPT_VECTOR<std::size_t>& places) const;

  /// Takes out columns that are always 0 or 1, and all but the first of those
  /// that are always equal or inverse. A relation without rows stays as it is.
  SETTLED settle();

  /// The columns in the smallest parts that have nothing to do with each
  /// other: the rows are exactly the combinations of the rows of the parts.
  KPT_VECTOR<KPT_VECTOR<std::size_t>> factors() const;

  /// All combinations of rows that agree in the columns of one name, without
  /// the columns of which `keep(name)` is false. False, leaving `*joined`
  /// undefined, when these are more rows or columns than a relation may have.
  template <class KEEP>
  static bool join(const KPT_RELATION& a, const KPT_RELATION& b, KEEP keep, KPT_RELATION* joined);

 private:
  class ROW_SET;
  struct PAIRING;
  std::size_t words() const { return (m_columns.size() + 63U) / 64U; }
  std::uint64_t& word(std::size_t row, std::size_t place) { return m_bits[row * m_words + place / 64U]; }
  const std::uint64_t& word(std::size_t row, std::size_t place) const { return m_bits[row * m_words + place / 64U]; }
  void erase_rows(const KPT_VECTOR<bool>& gone);
  KPT_VECTOR<std::uint64_t> signatures() const;
  bool are_twins(std::size_t place, std::size_t other, bool inverse) const;
  static bool join(const KPT_RELATION& a, const KPT_RELATION& b, const PAIRING& pairing, KPT_RELATION* joined);

  COLUMNS m_columns;
  std::size_t m_words = 0;  // of a row
  std::size_t m_rows = 0;
  KPT_VECTOR<std::uint64_t> m_bits;
};

/// Which columns two relations share, and which of both a join keeps.
struct KPT_RELATION::PAIRING {
  KPT_VECTOR<std::size_t> shared_a;  // places, pair by pair
  KPT_VECTOR<std::size_t> shared_b;
  KPT_VECTOR<std::size_t> kept_a;
  KPT_VECTOR<std::size_t> kept_b;  // of those that only `b` has
  static PAIRING of_shared(const KPT_RELATION& a, const KPT_RELATION& b);
};

template <class KEEP>
bool KPT_RELATION::join(const KPT_RELATION& a, const KPT_RELATION& b, KEEP keep, KPT_RELATION* joined) {
  PAIRING pairing = PAIRING::of_shared(a, b);
  std::erase_if(pairing.kept_a, [&](std::size_t place) { return !keep(a.m_columns[place]); });
  std::erase_if(pairing.kept_b, [&](std::size_t place) { return !keep(b.m_columns[place]); });
  return join(a, b, pairing, joined);
}

#endif
