#include "db/kpt/composition/kpt_relation.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <string_view>
#include <utility>

namespace {

// A row as bytes, which are used as a key.
std::string_view bytes(const std::uint64_t* words, std::size_t count) {
  return {reinterpret_cast<const char*>(words), count * sizeof *words};
}

using KEY = std::string_view;
template <class VALUE>
using BY_KEY = boost::unordered_flat_map<KEY, VALUE, boost::hash<KEY>, std::equal_to<>,
                                         MEM_STL_ALLOCATOR<std::pair<const KEY, VALUE>>>;

// A number that looks random and is the same in every run.
std::uint64_t scattered(std::uint64_t number) {
  number += 0x9E3779B97F4A7C15U;
  number = (number ^ number >> 30U) * 0xBF58476D1CE4E5B9U;
  number = (number ^ number >> 27U) * 0x94D049BB133111EBU;
  return number ^ number >> 31U;
}

}  // namespace

// Finds the rows of a relation by their content. It stores row numbers, because
// the rows may move in memory.
class KPT_RELATION::ROW_SET {
 public:
  explicit ROW_SET(const KPT_RELATION& relation) : m_rows(0, HASH{&relation}, EQUAL{&relation}) {}
  /// False when there is a row with that content already.
  bool insert(std::uint32_t row) { return m_rows.insert(row).second; }

 private:
  static KEY key(const KPT_RELATION& relation, std::uint32_t row) {
    return bytes(relation.m_bits.data() + row * relation.m_words, relation.m_words);
  }
  struct HASH {
    const KPT_RELATION* relation;
    std::size_t operator()(std::uint32_t row) const { return boost::hash<KEY>()(key(*relation, row)); }
  };
  struct EQUAL {
    const KPT_RELATION* relation;
    bool operator()(std::uint32_t a, std::uint32_t b) const { return key(*relation, a) == key(*relation, b); }
  };
  boost::unordered_flat_set<std::uint32_t, HASH, EQUAL, MEM_STL_ALLOCATOR<std::uint32_t>> m_rows;
};

KPT_RELATION::KPT_RELATION(COLUMNS columns) : m_columns(std::move(columns)), m_words(words()) {}

void KPT_RELATION::add_row() {
  ++m_rows;
  m_bits.resize(m_rows * m_words);
}

void KPT_RELATION::make_distinct() {
  ROW_SET known(*this);
  KPT_VECTOR<bool> gone(m_rows);
  for (std::size_t row = 0; row < m_rows; ++row) {
    gone[row] = !known.insert(static_cast<std::uint32_t>(row));
  }
  erase_rows(gone);
}

void KPT_RELATION::erase_rows(const KPT_VECTOR<bool>& gone) {
  std::size_t kept = 0;
  for (std::size_t row = 0; row < m_rows; ++row) {
    if (!gone[row]) {
      std::copy_n(m_bits.begin() + static_cast<std::ptrdiff_t>(row * m_words), m_words,
                  m_bits.begin() + static_cast<std::ptrdiff_t>(kept * m_words));
      ++kept;
    }
  }
  m_rows = kept;
  m_bits.resize(kept * m_words);
}

void KPT_RELATION::rename(std::size_t place, COLUMN column, bool inverse) {
  m_columns[place] = column;
  for (std::size_t row = 0; inverse && row < m_rows; ++row) {
    word(row, place) ^= std::uint64_t{1} << (place % 64U);
  }
}

void KPT_RELATION::keep_where(std::size_t place, bool value) {
  KPT_VECTOR<bool> gone(m_rows);
  for (std::size_t row = 0; row < m_rows; ++row) {
    gone[row] = bit(row, place) != value;
  }
  erase_rows(gone);
}

void KPT_RELATION::keep_where_equal(std::size_t place, std::size_t other) {
  KPT_VECTOR<bool> gone(m_rows);
  for (std::size_t row = 0; row < m_rows; ++row) {
    gone[row] = bit(row, place) != bit(row, other);
  }
  erase_rows(gone);
}

KPT_RELATION KPT_RELATION::project(const KPT_VECTOR<std::size_t>& places) const {
  COLUMNS names;
  for (const std::size_t place : places) {
    names.push_back(m_columns[place]);
  }
  KPT_RELATION result(std::move(names));
  result.m_rows = m_rows;
  result.m_bits.resize(m_rows * result.m_words);
  for (std::size_t row = 0; row < m_rows; ++row) {
    for (std::size_t to = 0; to < places.size(); ++to) {
      result.word(row, to) |= std::uint64_t{bit(row, places[to])} << (to % 64U);
    }
  }
  result.make_distinct();
  return result;
}

// One number for each column, made from the rows whose value differs from the column's value
// in the first row. Equal and inverse columns have the same number; a constant column has 0.
KPT_VECTOR<std::uint64_t> KPT_RELATION::signatures() const {
  KPT_VECTOR<std::uint64_t> result(m_columns.size());
  for (std::size_t row = 1; row < m_rows; ++row) {
    const std::uint64_t weight = scattered(row);
    for (std::size_t at = 0; at < m_words; ++at) {
      for (std::uint64_t set = m_bits[row * m_words + at] ^ m_bits[at]; set != 0; set &= set - 1) {
        result[at * 64U + static_cast<unsigned>(__builtin_ctzll(set))] ^= weight;
      }
    }
  }
  return result;
}

bool KPT_RELATION::are_twins(std::size_t place, std::size_t other, bool inverse) const {
  for (std::size_t row = 0; row < m_rows; ++row) {
    if ((bit(row, place) != bit(row, other)) != inverse) {
      return false;
    }
  }
  return true;
}

// Signatures only suggest that columns are constant or twins, so the rows are compared.
KPT_RELATION::SETTLED KPT_RELATION::settle() {
  SETTLED settled;
  if (m_rows == 0) {
    return settled;
  }
  const KPT_VECTOR<std::uint64_t> signature = signatures();
  boost::unordered_flat_map<std::uint64_t, std::size_t, boost::hash<std::uint64_t>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const std::uint64_t, std::size_t>>>
      first_with;
  KPT_VECTOR<std::size_t> kept;
  for (std::size_t place = 0; place < m_columns.size(); ++place) {
    bool is_constant = signature[place] == 0;
    for (std::size_t row = 1; is_constant && row < m_rows; ++row) {
      is_constant = bit(row, place) == bit(0, place);
    }
    if (is_constant) {
      settled.constants.push_back({m_columns[place], bit(0, place)});
      continue;
    }
    const auto [entry, is_new] = first_with.try_emplace(signature[place], place);
    const bool inverse = bit(0, place) != bit(0, entry->second);
    if (!is_new && are_twins(entry->second, place, inverse)) {
      settled.twins.push_back({m_columns[entry->second], m_columns[place], inverse});
      continue;
    }
    kept.push_back(place);
  }
  if (kept.size() < m_columns.size()) {
    *this = project(kept);
  }
  return settled;
}

KPT_RELATION::PAIRING KPT_RELATION::PAIRING::of_shared(const KPT_RELATION& a, const KPT_RELATION& b) {
  PAIRING pairing;
  boost::unordered_flat_map<COLUMN, std::size_t, boost::hash<COLUMN>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const COLUMN, std::size_t>>>
      in_a;
  for (std::size_t place = 0; place < a.m_columns.size(); ++place) {
    in_a.emplace(a.m_columns[place], place);
    pairing.kept_a.push_back(place);
  }
  for (std::size_t place = 0; place < b.m_columns.size(); ++place) {
    const auto found = in_a.find(b.m_columns[place]);
    if (found == in_a.end()) {
      pairing.kept_b.push_back(place);
    } else {
      pairing.shared_a.push_back(found->second);
      pairing.shared_b.push_back(place);
    }
  }
  return pairing;
}

namespace {

// Copies some columns of every row to other positions of wider rows.
KPT_VECTOR<std::uint64_t> moved(const KPT_RELATION& from, const KPT_VECTOR<std::size_t>& places, std::size_t to,
                                std::size_t words) {
  KPT_VECTOR<std::uint64_t> bits(from.rows() * words);
  for (std::size_t row = 0; row < from.rows(); ++row) {
    for (std::size_t k = 0; k < places.size(); ++k) {
      bits[row * words + (to + k) / 64U] |= std::uint64_t{from.bit(row, places[k])} << ((to + k) % 64U);
    }
  }
  return bits;
}

}  // namespace

bool KPT_RELATION::join(const KPT_RELATION& a, const KPT_RELATION& b, const PAIRING& pairing, KPT_RELATION* joined) {
  const std::size_t of_a = pairing.kept_a.size();
  if (of_a + pairing.kept_b.size() > MOST) {
    return false;
  }
  COLUMNS names;
  std::transform(pairing.kept_a.begin(), pairing.kept_a.end(), std::back_inserter(names),
                 [&](std::size_t place) { return a.m_columns[place]; });
  std::transform(pairing.kept_b.begin(), pairing.kept_b.end(), std::back_inserter(names),
                 [&](std::size_t place) { return b.m_columns[place]; });
  *joined = KPT_RELATION(std::move(names));
  const std::size_t words = joined->m_words;
  const std::size_t key_words = (pairing.shared_a.size() + 63U) / 64U;
  const KPT_VECTOR<std::uint64_t> keys_a = moved(a, pairing.shared_a, 0, key_words);
  const KPT_VECTOR<std::uint64_t> keys_b = moved(b, pairing.shared_b, 0, key_words);
  const KPT_VECTOR<std::uint64_t> bits_a = moved(a, pairing.kept_a, 0, words);
  const KPT_VECTOR<std::uint64_t> bits_b = moved(b, pairing.kept_b, of_a, words);

  // The rows of `b` with one key are chained, starting with the first.
  constexpr std::uint32_t NONE = UINT32_MAX;
  BY_KEY<std::uint32_t> first_of;
  KPT_VECTOR<std::uint32_t> next(b.m_rows, NONE);
  for (std::size_t row = b.m_rows; row > 0; --row) {
    const auto at = static_cast<std::uint32_t>(row - 1);
    const auto [entry, is_new] = first_of.try_emplace(bytes(keys_b.data() + at * key_words, key_words), at);
    if (!is_new) {
      next[at] = std::exchange(entry->second, at);
    }
  }

  ROW_SET known(*joined);
  for (std::size_t row = 0; row < a.m_rows; ++row) {
    const auto found = first_of.find(bytes(keys_a.data() + row * key_words, key_words));
    for (std::uint32_t with = found == first_of.end() ? NONE : found->second; with != NONE; with = next[with]) {
      joined->add_row();
      std::uint64_t* to = joined->m_bits.data() + (joined->m_rows - 1) * words;
      for (std::size_t at = 0; at < words; ++at) {
        to[at] = bits_a[row * words + at] | bits_b[with * words + at];
      }
      if (!known.insert(static_cast<std::uint32_t>(joined->m_rows - 1))) {
        --joined->m_rows;
        joined->m_bits.resize(joined->m_rows * words);
      } else if (joined->m_rows > MOST) {
        return false;
      }
    }
  }
  return true;
}
