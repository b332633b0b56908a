// A set of texts that takes little memory, because a netlist has millions of names.
//
// Ownership: owns the texts.
#ifndef KPTDB_NAME_TABLE_H
#define KPTDB_NAME_TABLE_H

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <string>
#include <string_view>

namespace kptdb {

class NAME_TABLE {
 public:
  NAME_TABLE() : m_places(0, HASH{&m_texts}, EQUAL{&m_texts}) {}
  NAME_TABLE(const NAME_TABLE&) = delete;
  NAME_TABLE& operator=(const NAME_TABLE&) = delete;

  /// False when the set has the text already.
  bool insert(std::string_view text) {
    const PLACE place{m_texts.size(), text.size()};
    m_texts += text;
    const bool is_new = m_places.insert(place).second;
    if (!is_new) {
      m_texts.resize(place.begin);
    }
    return is_new;
  }

 private:
  struct PLACE {
    std::size_t begin;
    std::size_t size;
    std::string_view in(const std::string& texts) const { return std::string_view(texts).substr(begin, size); }
  };
  struct HASH {
    const std::string* texts;
    std::size_t operator()(const PLACE& place) const { return std::hash<std::string_view>()(place.in(*texts)); }
  };
  struct EQUAL {
    const std::string* texts;
    bool operator()(const PLACE& a, const PLACE& b) const { return a.in(*texts) == b.in(*texts); }
  };

  std::string m_texts;  // one behind the other
  boost::unordered_flat_set<PLACE, HASH, EQUAL> m_places;
};

}  // namespace kptdb

#endif
