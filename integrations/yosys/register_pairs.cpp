#include "register_pairs.h"

#include <algorithm>
#include <numeric>
#include <set>

#include "frame.h"
#include "literals.h"
#include "net_classes.h"
#include "words.h"

namespace kpt_yosys {

namespace {

constexpr int RUNS = 128;
constexpr int CYCLES = 48;
constexpr std::size_t MOST_NODES = 200000;
constexpr std::size_t MOST_PAIRS = 4000000;

// Classes of registers that hold the same value or the inverse.
class CLASSES {
 public:
  explicit CLASSES(std::size_t count) : m_up(count), m_inverted(count, 0) { std::iota(m_up.begin(), m_up.end(), 0); }

  /// False when the two are known to have the opposite relation.
  bool unite(std::size_t a, std::size_t b, bool inverted) {
    const bool turned = root_of(a).second != (root_of(b).second != inverted);
    const std::size_t from = root_of(a).first;
    const std::size_t to = root_of(b).first;
    if (from == to) {
      return !turned;
    }
    m_up[from] = to;
    m_inverted[from] = turned ? 1 : 0;
    return true;
  }

  /// The representative of the class, and whether `a` is its inverse.
  std::pair<std::size_t, bool> root_of(std::size_t a) const {
    bool inverted = false;
    for (; m_up[a] != a; a = m_up[a]) {
      inverted = inverted != (m_inverted[a] != 0);
    }
    return {a, inverted};
  }

 private:
  std::vector<std::size_t> m_up;
  std::vector<char> m_inverted;
};

using PAIR = REGISTER_PAIRS::PAIR;

// Both netlists in an algebra, at one moment at which all pairs hold.
template <class ALGEBRA>
class MOMENT {
 public:
  using VALUE = typename ALGEBRA::VALUE;

  /// Marks in `fails` the candidates that cannot hold together with those before them.
  MOMENT(ALGEBRA& algebra, const REGISTER_PAIRS& netlists, const std::vector<PAIR>& known,
         const std::vector<PAIR>& candidates, std::vector<char>& fails)
      : m_algebra(algebra),
        m_first_after(netlists.before().storage().size()),
        m_zero(m_first_after + netlists.after().storage().size()),
        m_classes(m_zero + 1) {
    for (const PAIR& pair : known) {
      unite(pair);
    }
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      fails[i] = fails[i] != 0 || !unite(candidates[i]) ? 1 : 0;
    }
    const auto zero = m_classes.root_of(m_zero);
    m_of_root[zero.first] = zero.second ? algebra.one() : algebra.zero();
    for (std::size_t i = 0; i < m_zero; ++i) {
      (i < m_first_after ? m_held_before : m_held_after).push_back(held(i));
    }
    std::unordered_map<std::string, VALUE> inputs;
    for (const auto& [name, net] : netlists.before().inputs()) {
      inputs.emplace(name, algebra.any());
    }
    m_before.emplace_back(algebra, netlists.before(), m_held_before, inputs);
    m_after.emplace_back(algebra, netlists.after(), m_held_after, inputs);
  }
  MOMENT(const MOMENT&) = delete;
  MOMENT& operator=(const MOMENT&) = delete;

  /// Whether the pair fails now, at the next edge, or has different clocks.
  VALUE fails(const PAIR& pair) {
    FRAME<ALGEBRA>& before = m_before.front();
    FRAME<ALGEBRA>& after = m_after.front();
    const auto r = static_cast<std::size_t>(pair.m_before);
    if (pair.m_after < 0) {
      const VALUE constant = pair.m_inverted ? m_algebra.one() : m_algebra.zero();
      return m_algebra.either(m_algebra.differ(before.output(r), constant), m_algebra.differ(before.next(r), constant));
    }
    const auto t = static_cast<std::size_t>(pair.m_after);
    const auto differ = [&](VALUE a, VALUE b) {
      return m_algebra.differ(a, pair.m_inverted ? m_algebra.inverse(b) : b);
    };
    const VALUE values =
        m_algebra.either(differ(before.output(r), after.output(t)), differ(before.next(r), after.next(t)));
    return m_algebra.either(values, m_algebra.differ(before.clock(r), after.clock(t)));
  }

 private:
  bool unite(const PAIR& pair) {
    const std::size_t after = pair.m_after < 0 ? m_zero : m_first_after + static_cast<std::size_t>(pair.m_after);
    return m_classes.unite(static_cast<std::size_t>(pair.m_before), after, pair.m_inverted);
  }
  VALUE held(std::size_t i) {
    const auto [root, inverted] = m_classes.root_of(i);
    const auto [at, is_new] = m_of_root.emplace(root, VALUE{});
    if (is_new) {
      at->second = m_algebra.any();
    }
    return inverted ? m_algebra.inverse(at->second) : at->second;
  }

  ALGEBRA& m_algebra;
  std::size_t m_first_after;
  std::size_t m_zero;
  CLASSES m_classes;
  std::unordered_map<std::size_t, VALUE> m_of_root;
  std::vector<VALUE> m_held_before;
  std::vector<VALUE> m_held_after;
  std::vector<FRAME<ALGEBRA>> m_before;  // one
  std::vector<FRAME<ALGEBRA>> m_after;   // one
};

}  // namespace

void REGISTER_PAIRS::add_known(const PAIR& pair) {
  if (pair.m_before >= 0 && pair.m_after >= 0) {
    m_known.push_back(pair);
  }
}

// A register that had a power-up value has to have it now. A register without one may have got one.
bool REGISTER_PAIRS::starts_alike(const PAIR& pair) const {
  const TERNARY was = before().storage()[static_cast<std::size_t>(pair.m_before)].m_initial;
  TERNARY is = pair.m_after < 0 ? ALL_ZERO : after().storage()[static_cast<std::size_t>(pair.m_after)].m_initial;
  is = pair.m_inverted ? ~is : is;
  return was.known() == 0 || was == is;
}

// All pairs of registers of one kind whose values a simulation knows and does not refute.
void REGISTER_PAIRS::find_candidates() {
  std::set<int> known;
  for (const PAIR& pair : m_known) {
    known.insert(pair.m_before);
  }
  if ((before().storage().size() - std::min(known.size(), before().storage().size())) * after().storage().size() >
      MOST_PAIRS) {
    return;
  }
  std::vector<PAIR> pairs;
  for (int r = 0; r < static_cast<int>(before().storage().size()); ++r) {
    for (int t = -1; !known.contains(r) && t < static_cast<int>(after().storage().size()); ++t) {
      const bool alike = t < 0 || before().storage()[static_cast<std::size_t>(r)].m_clocked ==
                                      after().storage()[static_cast<std::size_t>(t)].m_clocked;
      for (const bool inverted : {false, true}) {
        if (const PAIR pair{r, t, inverted}; alike && starts_alike(pair)) {
          pairs.push_back(pair);
        }
      }
    }
  }
  std::vector<char> seen(before().storage().size() * (after().storage().size() + 1), 0);
  const auto seen_of = [&](const PAIR& pair) -> char& {
    return seen[static_cast<std::size_t>(pair.m_before) * (after().storage().size() + 1) +
                static_cast<std::size_t>(pair.m_after + 1)];
  };
  m_both.run(RUNS, CYCLES, [&] {
    std::erase_if(pairs, [&](const PAIR& pair) {
      const TERNARY was = before().value(before().storage()[static_cast<std::size_t>(pair.m_before)].m_q);
      const TERNARY is =
          pair.m_after < 0 ? ALL_ZERO : after().value(after().storage()[static_cast<std::size_t>(pair.m_after)].m_q);
      const TERNARY differ = was ^ (pair.m_inverted ? ~is : is);
      seen_of(pair) = seen_of(pair) != 0 || differ.known() != 0 ? 1 : 0;
      return differ.m_one != 0;
    });
  });
  std::erase_if(pairs, [&](const PAIR& pair) { return seen_of(pair) == 0; });
  m_candidates = std::move(pairs);
}

void REGISTER_PAIRS::drop(const std::vector<char>& fails) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < m_candidates.size(); ++i) {
    if (fails[i] == 0) {
      m_candidates[kept++] = m_candidates[i];
    }
  }
  m_candidates.resize(kept);
}

// Tries random values, which quickly refute most false candidates.
bool REGISTER_PAIRS::fails_at_random(std::uint64_t seed, std::vector<char>& fails) const {
  WORDS words{std::mt19937_64(seed)};
  MOMENT<WORDS> moment(words, *this, m_known, m_candidates, fails);
  for (std::size_t i = 0; i < m_candidates.size(); ++i) {
    fails[i] = fails[i] != 0 || moment.fails(m_candidates[i]) != 0 ? 1 : 0;
  }
  return std::any_of(fails.begin(), fails.end(), [](char each) { return each != 0; });
}

// A moment at which one candidate fails refutes every candidate that fails at it.
bool REGISTER_PAIRS::fails_by_solver(std::vector<char>& fails) {
  TIMED_SOLVER timed;
  ezSAT* const solver = timed.m_solver.get();
  LITERALS& literals = timed.m_literals;
  MOMENT<LITERALS> moment(literals, *this, m_known, m_candidates, fails);
  std::vector<int> failing;
  for (const PAIR& pair : m_candidates) {
    failing.push_back(moment.fails(pair));
  }
  bool any = false;
  for (;;) {
    std::vector<int> left;
    for (std::size_t i = 0; i < failing.size(); ++i) {
      any = any || fails[i] != 0;
      if (fails[i] == 0 && failing[i] != ezSAT::CONST_FALSE) {
        left.push_back(failing[i]);
      }
    }
    std::vector<bool> values;
    if (left.empty() || !solver->solve(failing, values, solver->expression(ezSAT::OpOr, left))) {
      m_gave_up = m_gave_up || solver->getSolverTimoutStatus();
      return any;
    }
    for (std::size_t i = 0; i < failing.size(); ++i) {
      fails[i] = fails[i] != 0 || values[i] ? 1 : 0;
    }
  }
}

// False when all candidates hold at the next moment if they hold now.
bool REGISTER_PAIRS::drop_what_fails() {
  constexpr std::uint64_t TRIES = 8;
  for (std::uint64_t seed = 1; seed <= TRIES; ++seed) {
    std::vector<char> fails(m_candidates.size(), 0);
    if (fails_at_random(seed, fails)) {
      drop(fails);
      return true;
    }
  }
  std::vector<char> fails(m_candidates.size(), 0);
  const bool any = fails_by_solver(fails);
  drop(fails);
  return any;
}

// For each register of the netlist before: a register that no other one has become, or else
// a constant, or else any. Two registers that became one need not be equal at power-up.
void REGISTER_PAIRS::choose_one_each() {
  std::set<int> taken;
  for (const PAIR& pair : m_known) {
    taken.insert(pair.m_after);
  }
  const auto rank = [&](const PAIR& pair) { return pair.m_after < 0 ? 1 : taken.contains(pair.m_after) ? 2 : 0; };
  std::vector<PAIR> chosen;
  for (std::size_t i = 0; i < m_candidates.size();) {
    std::size_t end = i;
    std::size_t best = i;
    for (; end < m_candidates.size() && m_candidates[end].m_before == m_candidates[i].m_before; ++end) {
      best = rank(m_candidates[end]) < rank(m_candidates[best]) ? end : best;
    }
    chosen.push_back(m_candidates[best]);
    taken.insert(m_candidates[best].m_after);
    i = end;
  }
  m_candidates = std::move(chosen);
}

std::vector<PAIR> REGISTER_PAIRS::proven() {
  for (const SIMULATION* const netlist : {&before(), &after()}) {
    if (netlist->has_loops() || netlist->nodes().size() > MOST_NODES) {
      return {};
    }
  }
  find_candidates();
  for (bool chosen = false;;) {
    while (!m_gave_up && !m_candidates.empty() && drop_what_fails()) {
    }
    if (m_gave_up) {
      return {};
    }
    if (chosen) {
      break;
    }
    choose_one_each();
    chosen = true;
  }
  add_by_nets();
  return m_candidates;
}

// Registers that are left may be equal in all states that occur, if not in all states.
void REGISTER_PAIRS::add_by_nets() {
  std::vector<PAIR> found = std::move(m_candidates);
  m_known.insert(m_known.end(), found.begin(), found.end());
  std::set<int> settled;
  for (const PAIR& pair : m_known) {
    settled.insert(pair.m_before);
  }
  if (settled.size() < before().storage().size()) {
    m_candidates = NET_CLASSES(m_both, m_known).pairs();
    std::erase_if(m_candidates, [&](const PAIR& pair) { return settled.contains(pair.m_before); });
    choose_one_each();
    found.insert(found.end(), m_candidates.begin(), m_candidates.end());
  }
  m_candidates = std::move(found);
}

}  // namespace kpt_yosys
