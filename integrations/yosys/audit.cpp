#include "audit.h"

#include <algorithm>

#include "apart.h"
#include "gates.h"
#include "side_by_side.h"

namespace kpt_yosys {

namespace {

// A value in a fact: of the reference (first) or of the netlist.
struct TERM {
  int m_net = -1;
  bool m_inverted = false;
  bool m_reference = false;
};

// The terms together have the values of one of the rows.
struct FACT {
  int m_point = -1;    // that it is about, or
  int m_machine = -1;  // that one
  std::vector<TERM> m_terms;
  std::vector<std::vector<bool>> m_rows;
  bool m_seen = false;
  bool m_false = false;
};

class FACTS {
 public:
  FACTS(const SIDE_BY_SIDE& both, const TRACKER& tracker);
  void check();
  AUDIT::FINDINGS findings() const;

 private:
  TERM reference_term(const POINT& point, bool inverted) const {
    return {m_both.reference().net(point.m_name), inverted, true};
  }
  TERM present_term(const POINT& point) const {
    return {m_both.present().net(m_tracker.view().name(point.m_location)), point.m_inverted, false};
  }
  FACT fact_of(int index) const;
  FACT fact_of_machine(int index) const;
  TERNARY value(const TERM& term) const;

  const SIDE_BY_SIDE& m_both;
  const TRACKER& m_tracker;
  std::vector<FACT> m_facts;
};

FACT FACTS::fact_of(int index) const {
  const POINT& point = m_tracker.points()[static_cast<std::size_t>(index)];
  FACT fact;
  fact.m_point = index;
  fact.m_terms.push_back(reference_term(point, false));
  if (point.m_fate == FATE::LIVE) {
    fact.m_terms.push_back(present_term(point));
    fact.m_rows = {{false, false}, {true, true}};
  } else {
    fact.m_rows = {{point.m_fate == FATE::ONE}};
  }
  return fact;
}

FACT FACTS::fact_of_machine(int index) const {
  const MACHINE& machine = m_tracker.machines()[static_cast<std::size_t>(index)];
  FACT fact;
  fact.m_machine = index;
  fact.m_rows.resize(machine.m_codes.size());
  for (const POINT& point : m_tracker.points()) {
    if (point.m_fate == FATE::IN_MACHINE && point.m_machine == index && !point.m_name.empty()) {
      fact.m_terms.push_back(reference_term(point, point.m_column_inverted));
      for (std::size_t state = 0; state < machine.m_codes.size(); ++state) {
        fact.m_rows[state].push_back(machine.m_old_codes[state][static_cast<std::size_t>(point.m_column)] == '1');
      }
    }
  }
  const bool any = !fact.m_terms.empty();
  for (std::size_t bit = 0; any && bit < machine.m_points.size(); ++bit) {
    const POINT& point = m_tracker.points()[static_cast<std::size_t>(machine.m_points[bit])];
    if (point.m_fate == FATE::LIVE) {
      fact.m_terms.push_back(present_term(point));
      for (std::size_t state = 0; state < machine.m_codes.size(); ++state) {
        fact.m_rows[state].push_back(machine.m_codes[state][bit] == '1');
      }
    }
  }
  return fact;
}

FACTS::FACTS(const SIDE_BY_SIDE& both, const TRACKER& tracker) : m_both(both), m_tracker(tracker) {
  for (std::size_t i = 0; i < tracker.points().size(); ++i) {
    const POINT& point = tracker.points()[i];
    const bool says = point.m_fate == FATE::LIVE || point.m_fate == FATE::ZERO || point.m_fate == FATE::ONE;
    if (says && !point.m_name.empty()) {
      m_facts.push_back(fact_of(static_cast<int>(i)));
    }
  }
  for (std::size_t i = 0; i < tracker.machines().size(); ++i) {
    FACT fact = fact_of_machine(static_cast<int>(i));
    if (!fact.m_terms.empty() && !tracker.machines()[i].m_points.empty()) {
      m_facts.push_back(std::move(fact));
    }
  }
}

TERNARY FACTS::value(const TERM& term) const {
  if (term.m_net < 0) {
    return {};
  }
  const TERNARY value = term.m_reference ? m_both.reference().value(term.m_net) : m_both.present().value(term.m_net);
  return term.m_inverted ? ~value : value;
}

void FACTS::check() {
  for (FACT& fact : m_facts) {
    std::uint64_t known = ~std::uint64_t{0};
    for (const TERM& term : fact.m_terms) {
      known &= value(term).known();
    }
    std::uint64_t agrees = 0;
    for (const std::vector<bool>& row : fact.m_rows) {
      std::uint64_t here = known;
      for (std::size_t i = 0; here != 0 && i < fact.m_terms.size(); ++i) {
        const TERNARY is = value(fact.m_terms[i]);
        here &= row[i] ? is.m_one : is.m_zero;
      }
      agrees |= here;
    }
    fact.m_seen = fact.m_seen || known != 0;
    fact.m_false = fact.m_false || (known & ~agrees) != 0;
  }
}

AUDIT::FINDINGS FACTS::findings() const {
  AUDIT::FINDINGS findings;
  for (const FACT& fact : m_facts) {
    if (fact.m_false) {
      (fact.m_point >= 0 ? findings.m_false_points : findings.m_false_machines)
          .push_back(std::max(fact.m_point, fact.m_machine));
    } else {
      ++(fact.m_seen ? findings.m_held : findings.m_unseen);
    }
  }
  return findings;
}

}  // namespace

AUDIT::AUDIT(const NETLIST_VIEW& reference)
    : m_reference(text_of_modules(reference.module(0).module())), m_top(reference.module(0).module()->name.c_str()) {}

AUDIT::FINDINGS AUDIT::simulate(const TRACKER& tracker, const EFFORT& effort) const {
  RTLIL::Module* const top = tracker.view().module(0).module();
  SIDE_BY_SIDE both(gates_of(m_reference, m_top), gates_of(text_of_modules(top), top->name.c_str()));
  FACTS facts(both, tracker);
  both.run(effort.m_runs, effort.m_cycles, [&facts] { facts.check(); });
  return facts.findings();
}

// In a process of its own: see gates_of().
AUDIT::FINDINGS AUDIT::check(const TRACKER& tracker, const EFFORT& effort) const {
  const std::vector<int> numbers = done_apart("the audit", [&] {
    const FINDINGS findings = simulate(tracker, effort);
    std::vector<int> all{static_cast<int>(findings.m_held), static_cast<int>(findings.m_unseen),
                         static_cast<int>(findings.m_false_points.size())};
    all.insert(all.end(), findings.m_false_points.begin(), findings.m_false_points.end());
    all.insert(all.end(), findings.m_false_machines.begin(), findings.m_false_machines.end());
    return all;
  });
  constexpr std::ptrdiff_t COUNTS = 3;
  const auto machines = numbers.begin() + COUNTS + numbers[2];
  FINDINGS findings;
  findings.m_held = static_cast<std::size_t>(numbers[0]);
  findings.m_unseen = static_cast<std::size_t>(numbers[1]);
  findings.m_false_points.assign(numbers.begin() + COUNTS, machines);
  findings.m_false_machines.assign(machines, numbers.end());
  return findings;
}

}  // namespace kpt_yosys
