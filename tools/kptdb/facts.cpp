#include "facts.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include "model.h"

namespace kptdb {

namespace {

bool fits(const KPT_TRANSFORMATION_IMPL& map) {
  const KPT_STATE_TABLE_IMPL& table = map.state_table();
  return map.r_vec().size() == table.get_num_reference_registers() &&
         map.t_vec().size() == table.get_num_transformed_registers();
}

bool has_first(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side, bool inverting) {
  const NI_PAIR_VECTOR& pairs = side_of(map, side);
  return !pairs.empty() && !(inverting ? pairs[0].second : pairs[0].first).empty();
}

}  // namespace

FACTS::FACTS(const DATABASE& db) {
  boost::unordered_flat_map<const void*, std::uint32_t> facts;
  for (const KPT_TRANSFORMATION_IMPL* map : db.maps().get_list_of_register_transformations()) {
    facts[map] = static_cast<std::uint32_t>(m_facts.size());
    add_fact(*map);
  }
  boost::unordered_flat_map<std::pair<const void*, std::uint32_t>, std::uint32_t> places;
  for (std::uint32_t f = 0; f < m_facts.size(); ++f) {
    for (std::uint32_t k = m_facts[f].first_member; k < m_facts[f].end_member; ++k) {
      places.try_emplace({&m_members[k].reg.get_name(), f}, k);
    }
  }
  for (const REGISTER& reg : registers_of(db)) {
    SUBJECT subject;
    subject.reg = KPT_REGISTER_KEYPOINT(const_cast<KPT_REGISTER_KEYPOINT_IMPL*>(reg.keypoint));
    const std::uint32_t fact = reg.map == nullptr ? SUBJECT::NONE : facts[reg.map];
    const auto place = places.find({&subject.reg.get_name(), fact});
    if (place != places.end()) {
      subject.fact = fact;
      subject.member = place->second;
    }
    (reg.side == KPT_REFERENCE_SET ? m_subjects : m_successors).push_back(subject);
  }
}

// A map of several columns without a table says nothing of them: which belongs to which is open.
void FACTS::add_fact(const KPT_TRANSFORMATION_IMPL& map) {
  FACT fact;
  fact.map = KPT_REGISTER_TRANSFORMATION(const_cast<KPT_TRANSFORMATION_IMPL*>(&map));
  fact.first_member = static_cast<std::uint32_t>(m_members.size());
  fact.r_columns = static_cast<std::uint32_t>(map.r_vec().size());
  fact.t_columns = static_cast<std::uint32_t>(map.t_vec().size());
  const bool is_machine = map.map_has_fsm_transformation();
  bool has_copy = false;
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    std::uint32_t column = 0;
    for (const NI_PAIR& pair : side_of(map, side)) {
      for (const bool inverting : {false, true}) {
        for (const KPT_KEYPOINT* k : inverting ? pair.second : pair.first) {
          const KPT_REGISTER_KEYPOINT_IMPL* reg = as_register(k);
          if (reg != nullptr) {
            has_copy = has_copy || side == KPT_TRANSFORMED_SET;
            m_members.push_back({KPT_REGISTER_KEYPOINT(const_cast<KPT_REGISTER_KEYPOINT_IMPL*>(reg)),
                                 side == KPT_TRANSFORMED_SET, inverting && !(is_machine && pair.first.empty()), column});
          }
        }
      }
      ++column;
    }
  }
  fact.end_member = static_cast<std::uint32_t>(m_members.size());
  const KPT_ELIM_ENUM status = map.get_elim_status();
  const bool is_constant = status == KPT_STUCK_AT_ZERO || status == KPT_STUCK_AT_ONE;
  if (is_machine) {
    fact.kind = fits(map) ? MACHINE_FACT : NO_FACT;
    fact.is_misfit = !fits(map);
  } else if (fact.r_columns > 1 || fact.t_columns > 1) {
    fact.kind = NO_FACT;
  } else if (is_constant) {
    const bool n = has_first(map, KPT_REFERENCE_SET, false);
    const bool i = has_first(map, KPT_REFERENCE_SET, true);
    fact.kind = n || i ? CONSTANT_FACT : NO_FACT;
    fact.constant = (status == KPT_STUCK_AT_ONE) == n;
  } else if (has_copy) {
    fact.kind = PLAIN_FACT;
  } else if (status == KPT_NO_FANOUT) {
    fact.kind = UNUSED_FACT;
  }
  m_facts.push_back(fact);
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
      pair.first += table.get_reference_entry(static_cast<unsigned short>(row), static_cast<unsigned short>(column)) == 1
                        ? '1'
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
