#include "tests/composition/simulated_flow.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/composition/plain_relation.h"

namespace kpt_test {

namespace {

bool is_constant(TRACE trace) { return trace == 0 || trace == ~TRACE{0}; }

}  // namespace

SIMULATED_FLOW::SIMULATED_FLOW(std::mt19937& random, unsigned registers, unsigned count) : m_random(random) {
  simulate(registers);
  last = first;
  for (unsigned k = 0; k < count; ++k) {
    // A register that this stage adds.
    if (k > 0 && below(4) == 0) {
      last.emplace(fresh_name(), SIMULATED{m_random() * TRACE{0x100000001}, {}, {}});
    }
    stage();
  }
}

// Every register has a function of two others, a constant, or the function of
// another register, inverted or not.
void SIMULATED_FLOW::simulate(unsigned registers) {
  struct FUNCTION {
    unsigned kind;
    unsigned a;
    unsigned b;
    bool inverted;
  };
  std::vector<FUNCTION> functions;
  std::vector<bool> values;
  for (unsigned k = 0; k < registers; ++k) {
    if (k > 0 && below(4) == 0) {
      const unsigned other = below(k);
      functions.push_back(functions[other]);
      const bool inverted = below(2) == 1;
      functions.back().inverted ^= inverted;
      values.push_back(values[other] != inverted);
      continue;
    }
    functions.push_back({below(5), below(registers), below(registers), false});
    values.push_back(functions[k].kind != 0 && below(2) == 1);
  }
  std::vector<TRACE> traces(registers);
  for (unsigned cycle = 0; cycle < 64; ++cycle) {
    std::vector<bool> next;
    for (unsigned k = 0; k < registers; ++k) {
      traces[k] |= TRACE{values[k]} << cycle;
      const auto [kind, a, b, inverted] = functions[k];
      const bool value = kind == 0   ? false
                         : kind == 1 ? values[a] && values[b]
                         : kind == 2 ? values[a] != values[b]
                         : kind == 3 ? !values[a]
                                     : below(2) == 1;
      next.push_back(value != inverted);
    }
    // Registers with one function and one start value have one input, so they stay equal.
    for (unsigned k = 0; k < registers; ++k) {
      for (unsigned other = 0; other < k; ++other) {
        if (functions[k].kind == 4 && functions[other].kind == 4 && functions[k].a == functions[other].a &&
            functions[k].b == functions[other].b) {
          next[k] = next[other] != (functions[k].inverted != functions[other].inverted);
          break;
        }
      }
    }
    values = next;
  }
  for (unsigned k = 0; k < registers; ++k) {
    const std::string name = fresh_name();
    first.emplace(name, SIMULATED{traces[k], {name}, {name}});
  }
}

// The old name, a new one, or the name of another register.
std::string SIMULATED_FLOW::new_name(const std::string& old) {
  std::string name = below(2) == 0 ? old : fresh_name();
  if (!m_left.empty() && below(20) == 0) {
    name = m_left[below(static_cast<unsigned>(m_left.size()))].first;
  }
  return last.contains(name) ? fresh_name() : name;
}

void SIMULATED_FLOW::put(const std::string& name, const SIMULATED& simulated) { last.emplace(name, simulated); }

void SIMULATED_FLOW::relate(const std::set<std::string>& names) {
  for (const std::string& name : names) {
    m_related[name].insert(names.begin(), names.end());
  }
}

std::set<std::string> SIMULATED_FLOW::related_to(const std::string& name) const {
  std::set<std::string> all{name};
  std::vector<std::string> open{name};
  while (!open.empty()) {
    const auto found = m_related.find(open.back());
    open.pop_back();
    for (const std::string& other : found == m_related.end() ? std::set<std::string>() : found->second) {
      if (all.insert(other).second) {
        open.push_back(other);
      }
    }
  }
  return all;
}

SIMULATED_FLOW::MEMBERS SIMULATED_FLOW::take(unsigned most) {
  MEMBERS members;
  for (; most > 0 && !m_left.empty(); --most) {
    members.push_back(m_left.back());
    m_left.pop_back();
  }
  return members;
}

// One register and, mostly, the registers that are equal to it or inverse.
SIMULATED_FLOW::MEMBERS SIMULATED_FLOW::take_twins() {
  MEMBERS members = take(1);
  const TRACE trace = members[0].second.trace;
  for (auto it = m_left.begin(); it != m_left.end();) {
    if ((it->second.trace == trace || it->second.trace == ~trace) && below(3) != 0) {
      members.push_back(*it);
      it = m_left.erase(it);
    } else {
      ++it;
    }
  }
  return members;
}

void SIMULATED_FLOW::lose(const MEMBERS& members) {
  for (const auto& [name, member] : members) {
    with_lost_copies.insert(member.ancestors.begin(), member.ancestors.end());
  }
}

KPT_GROUPS SIMULATED_FLOW::groups_of(const MEMBERS& members, TRACE trace) {
  KPT_GROUPS groups;
  for (const auto& [name, member] : members) {
    const std::string& text = m_texts.emplace_back(name);
    (member.trace == trace ? groups.same : groups.inverse).push_back(std::string_view(text));
  }
  return groups;
}

// Registers of one value become registers of that value or its inverse.
void SIMULATED_FLOW::copy(const MEMBERS& members) {
  const TRACE trace = members[0].second.trace;
  SIMULATED copied;
  for (const auto& [name, member] : members) {
    copied.origins.insert(member.origins.begin(), member.origins.end());
    copied.ancestors.insert(member.ancestors.begin(), member.ancestors.end());
  }
  relate(copied.ancestors);
  MEMBERS copies;
  for (unsigned k = below(4) == 0 ? 2 : 1; k > 0; --k) {
    copied.trace = below(4) == 0 ? ~trace : trace;
    copies.push_back({new_name(members[0].first), copied});
    put(copies.back().first, copied);
  }
  if (members.size() == 1 && copies.size() == 1 && copies[0].second.trace == trace) {
    EXPECT_TRUE(stages.back()->associate_registers_signal_to_signal(members[0].first, copies[0].first));
  } else {
    EXPECT_FALSE(stages.back()->associate_groups({groups_of(members, trace)}, {groups_of(copies, trace)}).is_null());
  }
  for (const auto& [name, simulated] : copies) {
    m_plain.insert(name);
  }
}

std::set<std::string> SIMULATED_FLOW::ancestors_of(const MEMBERS& members, unsigned some) {
  std::set<std::string> ancestors;
  for (std::size_t k = 0; k < members.size(); ++k) {
    if ((some >> k & 1U) != 0) {
      ancestors.insert(members[k].second.ancestors.begin(), members[k].second.ancestors.end());
    }
  }
  return ancestors;
}

// Some registers become registers that are functions of all of them together.
void SIMULATED_FLOW::encode(const MEMBERS& members) {
  const auto wide = static_cast<unsigned>(members.size());
  const unsigned codes = 1U << wide;
  const unsigned bits = 1 + below(3);
  std::vector<unsigned> code_of(codes);
  for (unsigned& code : code_of) {
    code = below(1U << bits);
  }
  std::set<unsigned> seen;
  std::vector<TRACE> traces(bits);
  for (unsigned cycle = 0; cycle < 64; ++cycle) {
    unsigned code = 0;
    for (unsigned k = 0; k < wide; ++k) {
      code |= static_cast<unsigned>(members[k].second.trace >> cycle & 1U) << k;
    }
    seen.insert(code);
    for (unsigned k = 0; k < bits; ++k) {
      traces[k] |= TRACE{code_of[code] >> k & 1U} << cycle;
    }
  }
  const auto count = [](std::size_t number) { return static_cast<unsigned short>(number); };
  KPT_STATE_TABLE table(count(seen.size()), count(wide), count(bits));
  unsigned short row = 0;
  for (const unsigned code : seen) {
    ++row;
    for (unsigned k = 0; k < wide; ++k) {
      table.set_reference_entry(row, count(k + 1), (code >> k & 1U) != 0);
    }
    for (unsigned k = 0; k < bits; ++k) {
      table.set_transformed_entry(row, count(k + 1), (code_of[code] >> k & 1U) != 0);
    }
  }
  KPT_STRING_VECTOR r;
  KPT_STRING_VECTOR t;
  for (const auto& [name, member] : members) {
    r.emplace_back(name);
    encoded.insert(member.ancestors.begin(), member.ancestors.end());
  }
  relate(ancestors_of(members, ~0U));
  BITS names;
  for (unsigned k = 0; k < bits; ++k) {
    names.push_back({new_name(members[0].first)});
    t.emplace_back(names.back()[0]);
    put(names.back()[0], {traces[k], {}, {}});
  }
  EXPECT_TRUE(stages.back()->associate_registers_fsm_signals(r, t, table));
  machine_events(names);
  // Bits that are gone do not show on which bits the others depend.
  const auto removed = bits - static_cast<unsigned>(names.size());
  std::set<unsigned> rows;
  for (const unsigned code : seen) {
    rows.insert(code | code_of[code] >> removed << wide);
  }
  for (unsigned k = 0; k < names.size(); ++k) {
    const unsigned part = part_of({rows.begin(), rows.end()}, wide + bits - removed, wide + k);
    for (const std::string& name : names[k]) {
      last.at(name).ancestors = ancestors_of(members, part);
    }
  }
}

// Events find only the registers of a machine's first bit. They replicate, invert
// and remove it, and then the next bit is the first.
void SIMULATED_FLOW::machine_events(BITS& bits) {
  const KPT_UNREGISTERED_DB& db = stages.back();
  for (unsigned k = below(3) == 0 ? 1 + below(6) : 0; k > 0 && !bits.empty(); --k) {
    const std::size_t at = below(static_cast<unsigned>(bits[0].size()));
    const std::string name = bits[0][at];
    switch (below(3)) {
      case 0:
        EXPECT_TRUE(db->set_inverter_retimed_register(name));
        last.at(name).trace = ~last.at(name).trace;
        break;
      case 1:
        bits[0].push_back(fresh_name());
        EXPECT_TRUE(db->set_replicated_registers(name, bits[0].back()));
        put(bits[0].back(), last.at(name));
        break;
      default:
        db->set_eliminated_register_no_fanout(name);
        last.erase(name);
        bits[0].erase(bits[0].begin() + static_cast<std::ptrdiff_t>(at));
        if (bits[0].empty()) {
          bits.erase(bits.begin());
        }
    }
  }
}

void SIMULATED_FLOW::remove_constant(const MEMBERS& members) {
  const TRACE trace = members[0].second.trace;
  relate(ancestors_of(members, ~0U));
  EXPECT_FALSE(stages.back()
                   ->associate_groups({groups_of(members, trace)}, {},
                                      !is_constant(trace) ? KPT_NO_FANOUT
                                      : trace == 0        ? KPT_STUCK_AT_ZERO
                                                          : KPT_STUCK_AT_ONE)
                   .is_null());
}

// The events that passes report for single registers after the maps are recorded.
void SIMULATED_FLOW::events() {
  const KPT_UNREGISTERED_DB& db = stages.back();
  const std::vector<std::string> names(m_plain.begin(), m_plain.end());
  for (unsigned k = below(6); k > 0 && !names.empty(); --k) {
    const std::string& name = names[below(static_cast<unsigned>(names.size()))];
    const auto at = last.find(name);
    if (at == last.end()) {
      continue;
    }
    switch (below(4)) {
      case 0: {
        EXPECT_TRUE(db->set_inverter_retimed_register(name));
        at->second.trace = ~at->second.trace;
        break;
      }
      case 1: {
        const std::string replica = fresh_name();
        EXPECT_TRUE(db->set_replicated_registers(name, replica));
        put(replica, at->second);
        break;
      }
      case 2: {
        const auto other = std::find_if(names.begin(), names.end(), [&](const std::string& candidate) {
          return candidate != name && last.contains(candidate) && last.at(candidate).trace == at->second.trace;
        });
        if (other != names.end() && db->set_merged_registers(name, *other)) {
          const SIMULATED& gone = last.at(*other);
          at->second.origins.insert(gone.origins.begin(), gone.origins.end());
          at->second.ancestors.insert(gone.ancestors.begin(), gone.ancestors.end());
          relate(at->second.ancestors);
          last.erase(*other);
        }
        break;
      }
      default: {
        if (!is_constant(at->second.trace)) {
          EXPECT_TRUE(db->set_eliminated_register_no_fanout(name));
          last.erase(at);
        }
      }
    }
  }
}

void SIMULATED_FLOW::stage() {
  stages.push_back(KPT_UNREGISTERED_DB::create("stage"));
  m_left.assign(last.begin(), last.end());
  std::shuffle(m_left.begin(), m_left.end(), m_random);
  last.clear();
  m_plain.clear();
  while (!m_left.empty()) {
    switch (below(12)) {
      case 0:
        lose(take(1));
        break;
      case 1:
      case 2:
        encode(take(1 + below(3)));
        break;
      case 3:
        remove_constant(take_twins());
        break;
      case 4:
      case 5:
      case 6:
        copy(take_twins());
        break;
      default:
        copy(take(1));
    }
  }
  events();
}

}  // namespace kpt_test
