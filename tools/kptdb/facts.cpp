#include "facts.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <utility>

#include "model.h"

namespace kptdb {

namespace {

bool fits(const KPT_REGISTER_TRANSFORMATION& map) {
  const KPT_STATE_TABLE table = map.get_state_table();
  return !has_void_table(map) && map.get_number_of_indices(KPT_REFERENCE_SET) == table.get_state_reference_size() &&
         map.get_number_of_indices(KPT_TRANSFORMED_SET) == table.get_state_transformed_size();
}

bool is_constant(KPT_ELIM_ENUM reason) { return reason == KPT_STUCK_AT_ZERO || reason == KPT_STUCK_AT_ONE; }

bool has_group(const FACT& fact, KPT_SET_ENUM side, bool inverted) {
  return !fact.map.get_group(side, 0, inverted).empty();
}

// Whether the first register, whose value a status is, stands with its value as it is. A map
// without reference registers tells of its transformed ones.
bool first_is_as_it_is(const FACT& fact) {
  const bool has_reference = has_group(fact, KPT_REFERENCE_SET, false) || has_group(fact, KPT_REFERENCE_SET, true);
  return has_group(fact, has_reference ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET, false);
}

// What a map without a state machine says. One of several columns says nothing: which of them belongs
// to which is open.
FACT_KIND plain_kind(const FACT& fact, bool has_copy) {
  const KPT_ELIM_ENUM reason = fact.map.get_elimination();
  if (fact.r_columns > 1 || fact.t_columns > 1) {
    return NO_FACT;
  }
  if (is_constant(reason)) {
    return CONSTANT_FACT;
  }
  return has_copy ? PLAIN_FACT : fact.map.get_fate(0) == KPT_FATE_WITHOUT_FANOUT ? UNUSED_FACT : NO_FACT;
}

}  // namespace

// Finds registers in facts. A register is where its name is: no two registers share the place.
class FACTS::MEMBERS {
 public:
  explicit MEMBERS(const FACTS& facts) : m_facts(facts) {
    for (std::uint32_t fact = 0; fact < facts.m_facts.size(); ++fact) {
      if (is_large(facts.m_facts[fact])) {
        enter(fact);
      }
    }
  }

  /// A register that is not in the fact has none.
  SUBJECT subject(const KPT_REGISTER_KEYPOINT& reg, std::uint32_t fact) const {
    const std::uint32_t member = find(&reg.get_name(), fact);
    return member == SUBJECT::NONE ? SUBJECT{reg} : SUBJECT{reg, fact, member};
  }

 private:
  // Most facts have two members, which are found faster without a table.
  static bool is_large(const FACT& fact) { return fact.end_member - fact.first_member > 16; }

  void enter(std::uint32_t fact) {
    for (std::uint32_t k = m_facts.m_facts[fact].first_member; k < m_facts.m_facts[fact].end_member; ++k) {
      m_large.try_emplace({&m_facts.m_members[k].reg.get_name(), fact}, k);
    }
  }

  std::uint32_t find(const void* name, std::uint32_t number) const {
    const FACT& fact = m_facts.m_facts[number];
    if (is_large(fact)) {
      const auto found = m_large.find({name, number});
      return found == m_large.end() ? SUBJECT::NONE : found->second;
    }
    for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
      if (&m_facts.m_members[k].reg.get_name() == name) {
        return k;
      }
    }
    return SUBJECT::NONE;
  }

  const FACTS& m_facts;
  boost::unordered_flat_map<std::pair<const void*, std::uint32_t>, std::uint32_t> m_large;
};

FACTS::FACTS(const KPT_KEYPOINTS_DB& db) {
  boost::unordered_flat_map<KPT_REGISTER_TRANSFORMATION, std::uint32_t, std::hash<KPT_REGISTER_TRANSFORMATION>> facts;
  facts.reserve(db.get_transformation_set().size());
  for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set()) {
    facts.try_emplace(map, static_cast<std::uint32_t>(m_facts.size()));
    add_fact(map);
  }
  const MEMBERS members(*this);
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    std::vector<SUBJECT>& subjects = side == KPT_REFERENCE_SET ? m_subjects : m_successors;
    subjects.reserve(db.get_set(side).size());
    for (const KPT_REGISTER_KEYPOINT& reg : db.get_set(side)) {
      const auto fact = facts.find(side == KPT_REFERENCE_SET ? db.get_reference_register_transformation(reg)
                                                             : db.get_transformed_register_transformation(reg));
      subjects.push_back(fact == facts.end() ? SUBJECT{reg} : members.subject(reg, fact->second));
    }
  }
}

void FACTS::add_fact(const KPT_REGISTER_TRANSFORMATION& map) {
  FACT fact;
  fact.map = map;
  fact.first_member = static_cast<std::uint32_t>(m_members.size());
  fact.r_columns = static_cast<std::uint32_t>(map.get_number_of_indices(KPT_REFERENCE_SET));
  fact.t_columns = static_cast<std::uint32_t>(map.get_number_of_indices(KPT_TRANSFORMED_SET));
  add_members(fact, KPT_REFERENCE_SET);
  const std::size_t reference_end = m_members.size();
  add_members(fact, KPT_TRANSFORMED_SET);
  fact.end_member = static_cast<std::uint32_t>(m_members.size());
  if (map.has_fsm()) {
    fact.is_misfit = !fits(map);
    fact.kind = fact.is_misfit ? NO_FACT : MACHINE_FACT;
  } else {
    fact.kind = plain_kind(fact, fact.end_member > reference_end);
    fact.constant = (map.get_elimination() == KPT_STUCK_AT_ONE) == first_is_as_it_is(fact);
  }
  m_facts.push_back(fact);
}

// A column of a machine has the value of its first register, also where that stands with the inverse.
void FACTS::add_members(const FACT& fact, KPT_SET_ENUM side) {
  const std::uint32_t columns = side == KPT_REFERENCE_SET ? fact.r_columns : fact.t_columns;
  for (std::uint32_t column = 0; column < columns; ++column) {
    const bool is_turned = fact.map.has_fsm() && fact.map.get_group(side, column, false).empty();
    for (const bool inverted : {false, true}) {
      for (const KPT_REGISTER_KEYPOINT& reg : fact.map.get_group(side, column, inverted)) {
        if (!reg.is_null()) {
          m_members.push_back({reg, side == KPT_TRANSFORMED_SET, inverted && !is_turned, column});
        }
      }
    }
  }
}

const FACT& FACTS::fact_of(const SUBJECT& subject) const {
  return subject.fact == SUBJECT::NONE ? m_none : m_facts[subject.fact];
}

std::optional<bool> FACTS::constant_of(const SUBJECT& subject) const {
  const FACT& fact = fact_of(subject);
  if (fact.kind != CONSTANT_FACT) {
    return std::nullopt;
  }
  return fact.constant != m_members[subject.member].inverse;
}

std::vector<CODE_PAIR> FACTS::codes_of(const FACT& fact) const {
  std::vector<CODE_PAIR> codes;
  const KPT_STATE_TABLE table = fact.map.get_state_table();
  for (unsigned row = 1; row <= table.get_number_of_states(); ++row) {
    CODE_PAIR pair;
    for (unsigned column = 1; column <= fact.r_columns; ++column) {
      pair.first +=
          table.get_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column)) == 1 ? '1'
                                                                                                                : '0';
    }
    for (unsigned column = 1; column <= fact.t_columns; ++column) {
      pair.second +=
          table.get_transformed_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column)) == 1 ? '1'
                                                                                                                  : '0';
    }
    codes.push_back(std::move(pair));
  }
  return codes;
}

std::string name_in_netlist(const KPT_REGISTER_KEYPOINT& reg, char divider) {
  std::string name(name_of(reg));
  if (reg.is_block_instance()) {
    name += divider;
    name += std::string_view(reg.get_type());
  }
  return name;
}

}  // namespace kptdb
