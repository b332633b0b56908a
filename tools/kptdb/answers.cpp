#include "answers.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "fates.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr KPT_SET_ENUM SIDES[] = {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};

// A register of an index, with the letter of its side, and whether it holds the inverse of the column.
struct MEMBER {
  std::string name;
  bool inverted;
};
using MEMBERS = std::vector<MEMBER>;

// The registers of a column, and its bits. When the first register by name is inverted,
// the column is inverted, so that databases that say the same give the same text.
struct COLUMN {
  std::string members;
  std::string bits;
  friend bool operator<(const COLUMN& a, const COLUMN& b) { return a.members < b.members; }
};

std::string letter(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? "r " : "t "; }

void add_members(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, std::size_t index, MEMBERS* members) {
  for (const bool inverted : {false, true}) {
    for (const KPT_REGISTER_KEYPOINT& reg : map.get_group(side, index, inverted)) {
      members->push_back({letter(side) + label(reg), inverted});
    }
  }
}

// Sorts the members and makes the first one not inverted. True when this inverts the column.
bool normalise(MEMBERS* members) {
  std::sort(members->begin(), members->end(), [](const MEMBER& a, const MEMBER& b) { return a.name < b.name; });
  const bool turned = !members->empty() && members->front().inverted;
  for (MEMBER& member : *members) {
    member.inverted = member.inverted != turned;
  }
  return turned;
}

std::string words(const MEMBERS& members) {
  std::string text;
  for (const MEMBER& member : members) {
    text += (member.inverted ? " ~" : " ") + member.name;
  }
  return text;
}

std::string key_of_plain(const KPT_REGISTER_TRANSFORMATION& map) {
  MEMBERS members;
  add_members(map, KPT_REFERENCE_SET, 0, &members);
  const bool has_reference = !members.empty();
  add_members(map, KPT_TRANSFORMED_SET, 0, &members);
  // A status is about the first register, which is inverted only when there is no other.
  const KPT_SET_ENUM told = has_reference ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
  const bool of_inverse = map.get_group(told, 0, false).size() == 0;
  const bool turned = normalise(&members);
  const bool is_stuck = map.is_stuck_at_zero() || map.is_stuck_at_one();
  const bool value = map.is_stuck_at_one() != (of_inverse != turned);
  return (is_stuck ? value ? "1" : "0" : map.has_no_fanout() ? "x" : "-") + words(members);
}

std::string key_of_machine(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STATE_TABLE table = map.get_state_table();
  std::vector<COLUMN> columns;
  for (const KPT_SET_ENUM side : SIDES) {
    for (std::size_t k = 0; k < map.get_number_of_indices(side); ++k) {
      MEMBERS members;
      add_members(map, side, k, &members);
      const bool of_inverse = map.get_group(side, k, false).size() == 0;
      const bool flip = of_inverse != normalise(&members);
      COLUMN& column = columns.emplace_back(COLUMN{words(members), {}});
      for (unsigned row = 1; row <= table.get_number_of_states(); ++row) {
        const auto state = static_cast<unsigned short>(row);
        const auto place = static_cast<unsigned short>(k + 1);
        const int entry = side == KPT_REFERENCE_SET ? table.get_reference_entry(state, place)
                                                    : table.get_transformed_entry(state, place);
        column.bits += (entry == 1) != flip ? '1' : '0';
      }
    }
  }
  std::sort(columns.begin(), columns.end());
  std::vector<std::string> rows(table.get_number_of_states());
  std::string key = "m";
  for (const COLUMN& column : columns) {
    key += column.members + " |";
    for (std::size_t row = 0; row < rows.size(); ++row) {
      rows[row] += column.bits[row];
    }
  }
  std::sort(rows.begin(), rows.end());
  for (const std::string& row : rows) {
    key += ' ' + row;
  }
  return key;
}

// The registers of the other side, as text for people.
std::string relatives(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side, const PLACE& place) {
  constexpr std::size_t MOST = 4;
  std::string text;
  std::size_t count = 0;
  for_each_place(map, other_side(side), [&](std::size_t index, bool inverted, const KPT_REGISTER_KEYPOINT& reg) {
    if (map.has_fsm() || index == place.index) {
      ++count;
      text += count > MOST ? "" : text.empty() ? " " : ", ";
      text += count > MOST ? "" : (!map.has_fsm() && inverted != place.inverting ? "inverse of " : "") + label(reg);
    }
  });
  return count > MOST ? text + ", ..." : text;
}

struct ANSWER {
  std::string word;
  std::string key;      // the same in two databases that say the same
  std::string example;  // for people
};

// The answers of one database, in their normal form.
class ANSWERS {
 public:
  explicit ANSWERS(const KPT_KEYPOINTS_DB& db) : m_db(db) {
    for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set()) {
      m_keys.emplace(map, map.has_fsm() ? key_of_machine(map) : key_of_plain(map));
    }
  }

  ANSWER of(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) const {
    const KPT_REGISTER_KEYPOINT own = found(side, reg);
    if (own.is_null()) {
      return {"not known", "", ""};
    }
    const KPT_REGISTER_TRANSFORMATION map = m_db.get_register_transformation(own);
    if (map.is_null()) {
      return {"unknown", "", ""};
    }
    const PLACE place = place_of(map, side, own);
    const std::string word = side == KPT_REFERENCE_SET
                                 ? kpt_fate_word(map.get_fate(static_cast<unsigned short>(place.index)))
                                 : word_of_transformed(map);
    const bool is_known = word != "unknown" && word != "without fanout";
    return {word, is_known ? m_keys.at(map) : "", value_of(map, place) + relatives(map, side, place)};
  }

 private:
  KPT_REGISTER_KEYPOINT found(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) const {
    const KPT_KEYPOINT_SET set = m_db.get_set(side);
    return reg.is_signal() ? set.get_register(reg.get_name())
                           : set.get_register(reg.get_name(), reg.get_entity_name(), reg.get_type());
  }

  static std::string word_of_transformed(const KPT_REGISTER_TRANSFORMATION& map) {
    return map.has_fsm() ? "machine" : map.is_stuck_at_zero() || map.is_stuck_at_one() ? "constant" : "mapped";
  }

  static std::string value_of(const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
    if (map.has_fsm() || !(map.is_stuck_at_zero() || map.is_stuck_at_one())) {
      return "";
    }
    return constant_at(map, place.inverting) ? " 1" : " 0";
  }

  const KPT_KEYPOINTS_DB& m_db;
  std::unordered_map<KPT_REGISTER_TRANSFORMATION, std::string> m_keys;
};

struct DIFFERENCE {
  std::size_t count = 0;
  std::string example;
};

class DIFFERENCES {
 public:
  DIFFERENCES(const KPT_KEYPOINTS_DB& united, const KPT_KEYPOINTS_DB& exact)
      : m_united_db(united), m_exact_db(exact), m_united(united), m_exact(exact) {}

  KPT_STRING_VECTOR find() {
    for (const KPT_SET_ENUM side : SIDES) {
      for (const KPT_REGISTER_KEYPOINT& reg : m_exact_db.get_set(side)) {
        compare(side, reg);
      }
      for (const KPT_REGISTER_KEYPOINT& reg : m_united_db.get_set(side)) {
        if (m_exact.of(side, reg).word == "not known") {
          compare(side, reg);
        }
      }
    }
    KPT_STRING_VECTOR lines;
    for (const auto& [kind, difference] : m_found) {
      lines.emplace_back(std::string_view(fmt::format("{}: {}; for example {}",
                                                      counted(difference.count, kind.substr(0, kind.find(':'))),
                                                      kind.substr(kind.find(':') + 2), difference.example)));
    }
    return lines;
  }

 private:
  void compare(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& reg) {
    const ANSWER u = m_united.of(side, reg);
    const ANSWER e = m_exact.of(side, reg);
    if (u.word == e.word && u.key == e.key) {
      return;
    }
    const std::string said = u.word == e.word ? fmt::format("the union and the stages say {}, and not the same", u.word)
                                              : fmt::format("the union says {}, the stages say {}", u.word, e.word);
    DIFFERENCE& difference = m_found[fmt::format("{} register: {}", side_word(side), said)];
    if (difference.count++ == 0) {
      difference.example = fmt::format("{}: {}{} against {}{}", label(reg), u.word, u.example, e.word, e.example);
    }
  }

  const KPT_KEYPOINTS_DB& m_united_db;
  const KPT_KEYPOINTS_DB& m_exact_db;
  ANSWERS m_united;
  ANSWERS m_exact;
  std::map<std::string, DIFFERENCE> m_found;
};

}  // namespace

KPT_STRING_VECTOR differing_answers(const KPT_KEYPOINTS_DB& united, const KPT_KEYPOINTS_DB& exact) {
  return DIFFERENCES(united, exact).find();
}

}  // namespace kptdb
