#include "claims.h"

#include <utility>

namespace kptdb {

namespace {

char inverse_of(char value) { return value == '0' ? '1' : value == '1' ? '0' : value; }

bool is_known(char value) { return value == '0' || value == '1'; }

// The first member of a side, or null.
template <class LIST>
const typename LIST::value_type* first_of(const LIST& found, bool transformed) {
  for (const auto& member : found) {
    if (member.bit.transformed == transformed) {
      return &member;
    }
  }
  return nullptr;
}

}  // namespace

CLAIMS::CLAIMS(const FACTS& facts, SAMPLER& reference, SAMPLER& transformed, char divider)
    : m_facts(facts), m_samplers{&reference, &transformed}, m_divider(divider) {}

void CLAIMS::plan(const VCD_NAMES& reference, const VCD_NAMES& transformed) {
  for (std::uint32_t k = 0; k < m_facts.all().size(); ++k) {
    const FACT& fact = m_facts.all()[k];
    if (fact.kind == NO_FACT || fact.kind == UNUSED_FACT) {
      continue;
    }
    const std::vector<FOUND_MEMBER> found = find_members(fact, reference, transformed);
    if (fact.kind == CONSTANT_FACT) {
      claim_constants(k, found);
    } else if (fact.kind == PLAIN_FACT) {
      claim_pairs(k, found);
    } else {
      claim_codes(k, found);
    }
  }
  index_claims();
}

std::vector<CLAIMS::FOUND_MEMBER> CLAIMS::find_members(const FACT& fact, const VCD_NAMES& reference,
                                                       const VCD_NAMES& transformed) {
  std::vector<FOUND_MEMBER> result;
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    const FACT_MEMBER& member = m_facts.member(k);
    const VCD_NAMES& names = member.transformed ? transformed : reference;
    const VCD_BIT bit = names.find(name_in_netlist(member.reg, m_divider));
    if (bit.finding == FOUND) {
      VCD_READER& reader = m_samplers[member.transformed ? 1 : 0]->reader();
      result.push_back({k, {reader.follow(bit.signal, bit.bit), member.transformed, member.inverse}});
    } else {
      ++(bit.finding == AMBIGUOUS ? m_ambiguous : m_not_found);
    }
  }
  return result;
}

void CLAIMS::claim_constants(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found) {
  for (const FOUND_MEMBER& member : found) {
    CLAIM claim;
    claim.kind = CONSTANT_CLAIM;
    claim.constant = m_facts.all()[fact].constant != member.bit.inverse;
    claim.fact = fact;
    claim.member = member.member;
    claim.a = member.bit;
    m_claims.push_back(std::move(claim));
  }
}

void CLAIMS::claim_pair(std::uint32_t fact, const FOUND_MEMBER& subject, const FOUND_MEMBER& other) {
  CLAIM claim;
  claim.kind = subject.bit.inverse == other.bit.inverse ? SAME_CLAIM : INVERSE_CLAIM;
  claim.fact = fact;
  claim.member = subject.member;
  claim.other = other.member;
  claim.a = subject.bit;
  claim.b = other.bit;
  m_claims.push_back(std::move(claim));
}

void CLAIMS::claim_pairs(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found) {
  const FOUND_MEMBER* const r = first_of(found, false);
  const FOUND_MEMBER* const t = first_of(found, true);
  for (const FOUND_MEMBER& member : found) {
    const FOUND_MEMBER* const own = member.bit.transformed ? t : r;
    const FOUND_MEMBER* const across = member.bit.transformed ? r : t;
    const FOUND_MEMBER* const other = across != nullptr ? across : own;
    if (other != nullptr && &member != other && &member != t) {
      claim_pair(fact, member, *other);
    }
  }
}

// When no dump has a column, the other columns are checked with the rest of the table.
void CLAIMS::claim_codes(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found) {
  CODES_CLAIM codes;
  std::vector<std::pair<bool, std::uint32_t>> columns;
  const FOUND_MEMBER* first = nullptr;
  for (const FOUND_MEMBER& member : found) {
    const std::pair<bool, std::uint32_t> column(member.bit.transformed, m_facts.member(member.member).column);
    if (!columns.empty() && columns.back() == column) {
      claim_pair(fact, member, *first);
      continue;
    }
    first = &member;
    columns.push_back(column);
    codes.bits.push_back(member.bit);
    codes.reference_bits += member.bit.transformed ? 0U : 1U;
  }
  if (codes.bits.empty()) {
    return;
  }
  for (const CODE_PAIR& pair : m_facts.codes_of(m_facts.all()[fact])) {
    std::string code;
    for (const auto& [transformed, column] : columns) {
      code += (transformed ? pair.second : pair.first)[column];
    }
    codes.codes.insert(std::move(code));
  }
  CLAIM claim;
  claim.kind = CODES_OF_MACHINE_CLAIM;
  claim.fact = fact;
  claim.member = found.front().member;
  claim.machine = static_cast<std::uint32_t>(m_machines.size());
  m_machines.push_back(std::move(codes));
  m_claims.push_back(std::move(claim));
}

void CLAIMS::index_claims() {
  std::array<std::vector<std::pair<std::uint32_t, std::uint32_t>>, 2> pairs;  // bit, claim
  const auto add = [&](const CLAIM_BIT& bit, std::uint32_t claim) {
    if (bit.followed != NO_BIT) {
      pairs[bit.transformed ? 1 : 0].emplace_back(bit.followed, claim);
    }
  };
  for (std::uint32_t k = 0; k < m_claims.size(); ++k) {
    add(m_claims[k].a, k);
    add(m_claims[k].b, k);
    if (m_claims[k].machine != NO_BIT) {
      for (const CLAIM_BIT& bit : m_machines[m_claims[k].machine].bits) {
        add(bit, k);
      }
    }
  }
  for (std::size_t side = 0; side < 2; ++side) {
    std::vector<std::uint32_t>& begin = m_begin[side];
    begin.assign(m_samplers[side]->reader().followed() + 1, 0);
    for (const auto& [bit, claim] : pairs[side]) {
      ++begin[bit + 1];
    }
    for (std::size_t k = 1; k < begin.size(); ++k) {
      begin[k] += begin[k - 1];
    }
    std::vector<std::uint32_t> next(begin.begin(), begin.end() - 1);
    m_claims_of_bit[side].resize(pairs[side].size());
    for (const auto& [bit, claim] : pairs[side]) {
      m_claims_of_bit[side][next[bit]++] = claim;
    }
  }
  m_is_due.assign(m_claims.size(), false);
}

void CLAIMS::check() {
  for (std::size_t side = 0; side < 2; ++side) {
    for (const std::uint32_t bit : m_samplers[side]->touched()) {
      for (std::uint32_t k = m_begin[side][bit]; k < m_begin[side][bit + 1]; ++k) {
        const std::uint32_t claim = m_claims_of_bit[side][k];
        if (!m_is_due[claim]) {
          m_is_due[claim] = true;
          m_due.push_back(claim);
        }
      }
    }
  }
  for (const std::uint32_t claim : m_due) {
    m_is_due[claim] = false;
    check(m_claims[claim], claim);
  }
  m_due.clear();
}

void CLAIMS::check(CLAIM& claim, std::uint32_t number) {
  if (claim.is_violated) {
    return;
  }
  if (claim.kind == CODES_OF_MACHINE_CLAIM) {
    check_codes(claim, number);
  } else {
    check_pair(claim, number);
  }
}

char CLAIMS::value(const CLAIM_BIT& bit) const { return m_samplers[bit.transformed ? 1 : 0]->value(bit.followed); }

void CLAIMS::check_pair(CLAIM& claim, std::uint32_t number) {
  const char a = value(claim.a);
  const bool is_constant = claim.kind == CONSTANT_CLAIM;
  const char b = is_constant ? (claim.constant ? '1' : '0') : value(claim.b);
  if (!is_known(a) || !is_known(b)) {
    return;
  }
  claim.has_toggled = claim.has_toggled || (claim.is_checked && claim.first_seen.front() != a);
  if (!claim.is_checked) {
    claim.first_seen = a;
  }
  claim.is_checked = true;
  if ((a == b) == (claim.kind == INVERSE_CLAIM)) {
    violate(claim, number, std::string(1, a), is_constant ? "" : std::string(1, b));
  }
}

void CLAIMS::check_codes(CLAIM& claim, std::uint32_t number) {
  const CODES_CLAIM& machine = m_machines[claim.machine];
  m_code.clear();
  for (const CLAIM_BIT& bit : machine.bits) {
    const char now = value(bit);
    if (!is_known(now)) {
      return;
    }
    m_code += bit.inverse ? inverse_of(now) : now;
  }
  claim.has_toggled = claim.has_toggled || (claim.is_checked && claim.first_seen != m_code);
  if (!claim.is_checked) {
    claim.first_seen = m_code;
  }
  claim.is_checked = true;
  if (!machine.codes.contains(m_code)) {
    violate(claim, number, m_code.substr(0, machine.reference_bits), m_code.substr(machine.reference_bits));
  }
}

void CLAIMS::violate(CLAIM& claim, std::uint32_t number, std::string value, std::string other_value) {
  claim.is_violated = true;
  m_violations.push_back({number, m_samplers[0]->time(), std::move(value), std::move(other_value)});
}

}  // namespace kptdb
