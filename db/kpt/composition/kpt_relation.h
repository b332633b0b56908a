// A relation: the values that some registers take together. The algebra of state
// tables whose columns have names.
//
// Ownership: owns its columns and rows; a copy is independent.
//
// The user of a relation names each column by a number. A row is a set of bits, one
// for each column. Rows are distinct and keep the order in which they were added.
#ifndef KPT_RELATION_H
#define KPT_RELATION_H

#include <cstdint>

#include "db/kpt/composition/kpt_vector.h"

class KPT_RELATION {
 public:
  using COLUMN = std::uint32_t;
  using COLUMNS = KPT_VECTOR<COLUMN>;
  static constexpr std::size_t MOST = 65535;  // the most rows, and the most columns, of a state table

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
  /// What `settle` has removed from a relation.
  struct SETTLED {
    KPT_VECTOR<TWINS> twins;
    KPT_VECTOR<CONSTANT> constants;
    bool empty() const { return twins.empty() && constants.empty(); }
  };

  KPT_RELATION() = default;
  explicit KPT_RELATION(COLUMNS columns);

  const COLUMNS& columns() const { return m_columns; }
  std::size_t rows() const { return m_rows; }
  /// Here and below, columns are given by their position, from 0.
  bool bit(std::size_t row, std::size_t place) const { return (word(row, place) >> (place % 64U) & 1U) != 0; }

  /// Adds a row of zeros, which the caller fills. `make_distinct` ends the filling.
  void add_row();
  void set_bit(std::size_t row, std::size_t place) { word(row, place) |= std::uint64_t{1} << (place % 64U); }
  void make_distinct();

  /// Gives the column another name, and inverts it if `inverse` is set.
  void rename(std::size_t place, COLUMN column, bool inverse);
  /// Keeps the rows in which the column has that value.
  void keep_where(std::size_t place, bool value);
  /// Keeps the rows in which the two columns are equal.
  void keep_where_equal(std::size_t place, std::size_t other);
  /// Keeps the columns at these positions, in this order.
  KPT_RELATION project(const KPT_VECTOR<std::size_t>& places) const;

  /// Removes columns that are constant, and all but the first of the columns that
  /// are always equal or inverse. Does not change a relation without rows.
  SETTLED settle();

  /// The columns of the smallest independent parts: the rows of the relation are
  /// exactly the combinations of the rows of the parts.
  KPT_VECTOR<KPT_VECTOR<std::size_t>> factors() const;

  /// All combinations of rows that agree in the columns of the same name, without
  /// the columns for which `keep(name)` is false. False when these are more rows
  /// or columns than a relation may have; `*joined` is then undefined.
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
  std::size_t m_words = 0;  // in a row
  std::size_t m_rows = 0;
  KPT_VECTOR<std::uint64_t> m_bits;
};

/// Which columns two relations share, and which of both a join keeps.
struct KPT_RELATION::PAIRING {
  KPT_VECTOR<std::size_t> shared_a;  // positions, pair by pair
  KPT_VECTOR<std::size_t> shared_b;
  KPT_VECTOR<std::size_t> kept_a;
  KPT_VECTOR<std::size_t> kept_b;  // of the columns that only `b` has
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
