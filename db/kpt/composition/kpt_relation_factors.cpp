// Splits a relation into parts, so that its rows are the combinations of the parts' rows.
//
// There is one finest split. Columns are added one by one. A new column joins
// exactly those parts of the earlier columns that cannot be separated from the
// rest. Counting decides this: a part can be separated if its number of rows
// times that of the rest is the number of all rows.
#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <numeric>
#include <utility>

#include "db/kpt/composition/kpt_relation.h"

namespace {

// The rows of a relation, numbered by the content of some columns.
struct NUMBERING {
  KPT_VECTOR<std::uint32_t> of_row;
  std::uint32_t count = 1;
};

struct PART {
  KPT_VECTOR<std::size_t> places;
  NUMBERING rows;
};

NUMBERING none(std::size_t rows) { return {KPT_VECTOR<std::uint32_t>(rows), 1}; }

NUMBERING both(const NUMBERING& a, const NUMBERING& b) {
  NUMBERING result;
  result.of_row.resize(a.of_row.size());
  result.count = 0;
  boost::unordered_flat_map<std::uint64_t, std::uint32_t, boost::hash<std::uint64_t>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const std::uint64_t, std::uint32_t>>>
      numbers;
  for (std::size_t row = 0; row < a.of_row.size(); ++row) {
    const std::uint64_t pair = std::uint64_t{a.of_row[row]} << 32U | b.of_row[row];
    const auto [entry, is_new] = numbers.try_emplace(pair, result.count);
    result.count += is_new ? 1U : 0U;
    result.of_row[row] = entry->second;
  }
  return result;
}

NUMBERING of_column(const KPT_RELATION& relation, std::size_t place) {
  NUMBERING result = none(relation.rows());
  for (std::size_t row = 0; row < relation.rows(); ++row) {
    result.of_row[row] = relation.bit(row, place) ? 1 : 0;
  }
  result.count = 2;
  return result;
}

// For each part, the rows of all other parts and of the new column.
KPT_VECTOR<NUMBERING> rows_without_each(const KPT_VECTOR<PART>& parts, const NUMBERING& column) {
  KPT_VECTOR<NUMBERING> result(parts.size());
  NUMBERING before = column;
  for (std::size_t k = 0; k < parts.size(); ++k) {
    result[k] = before;
    before = both(before, parts[k].rows);
  }
  NUMBERING behind = none(column.of_row.size());
  for (std::size_t k = parts.size(); k > 0; --k) {
    result[k - 1] = both(result[k - 1], behind);
    behind = both(behind, parts[k - 1].rows);
  }
  return result;
}

// Adds a column to the parts of the earlier columns. `whole` numbers the rows of
// these columns and is updated.
void add_column(KPT_VECTOR<PART>& parts, NUMBERING& whole, const KPT_RELATION& relation, std::size_t place) {
  PART added{{place}, of_column(relation, place)};
  const std::uint64_t combinations = std::uint64_t{whole.count} * 2;
  whole = both(whole, added.rows);
  if (whole.count < combinations && parts.size() == 1) {
    added.places.insert(added.places.end(), parts[0].places.begin(), parts[0].places.end());
    added.rows = whole;
    parts.clear();
  } else if (whole.count < combinations) {
    const KPT_VECTOR<NUMBERING> rest = rows_without_each(parts, added.rows);
    KPT_VECTOR<PART> apart;
    for (std::size_t k = 0; k < parts.size(); ++k) {
      if (std::uint64_t{parts[k].rows.count} * rest[k].count == whole.count) {
        apart.push_back(std::move(parts[k]));
      } else {
        added.places.insert(added.places.end(), parts[k].places.begin(), parts[k].places.end());
        added.rows = both(added.rows, parts[k].rows);
      }
    }
    parts = std::move(apart);
  }
  parts.push_back(std::move(added));
}

}  // namespace

KPT_VECTOR<KPT_VECTOR<std::size_t>> KPT_RELATION::factors() const {
  KPT_VECTOR<PART> parts;
  NUMBERING whole = none(m_rows);
  for (std::size_t place = 0; place < m_columns.size(); ++place) {
    add_column(parts, whole, *this, place);
  }
  KPT_VECTOR<KPT_VECTOR<std::size_t>> result;
  for (PART& part : parts) {
    std::sort(part.places.begin(), part.places.end());
    result.push_back(std::move(part.places));
  }
  std::sort(result.begin(), result.end());
  return result;
}
