#include "net_classes.h"

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <unordered_set>

#include "frame.h"
#include "literals.h"
#include "words.h"

namespace kpt_yosys {

namespace {

constexpr std::size_t MOST_NODES = 20000;
constexpr int MOST_QUESTIONS = 2000;
constexpr int MOST_SECONDS_IN_ALL = 180;  // of processor time, for all questions about a netlist
constexpr int RUNS = 128;
constexpr int CYCLES = 48;
constexpr int CYCLES_AFTER = 160;

// Both netlists at one moment, with the same inputs.
template <class ALGEBRA>
struct MOMENT {
  using VALUE = typename ALGEBRA::VALUE;
  using VALUES = std::vector<VALUE>;
  using INPUTS = std::unordered_map<std::string, VALUE>;

  MOMENT(ALGEBRA& algebra, const SIDE_BY_SIDE& both, VALUES before, VALUES after, const INPUTS& inputs)
      : m_held_before(std::move(before)), m_held_after(std::move(after)) {
    m_before = std::make_unique<FRAME<ALGEBRA>>(algebra, both.reference(), m_held_before, inputs);
    m_after = std::make_unique<FRAME<ALGEBRA>>(algebra, both.present(), m_held_after, inputs);
  }
  FRAME<ALGEBRA>& frame(bool after) { return after ? *m_after : *m_before; }
  const VALUES& held(bool after) const { return after ? m_held_after : m_held_before; }

 private:
  VALUES m_held_before;
  VALUES m_held_after;
  std::unique_ptr<FRAME<ALGEBRA>> m_before;
  std::unique_ptr<FRAME<ALGEBRA>> m_after;
};

std::unordered_map<std::string, int> any_inputs(LITERALS& literals, const SIDE_BY_SIDE& both) {
  std::unordered_map<std::string, int> inputs;
  for (const SIMULATION* const side : {&both.reference(), &both.present()}) {
    for (const auto& [name, net] : side->inputs()) {
      if (!inputs.contains(name)) {
        inputs.emplace(name, literals.any());
      }
    }
  }
  return inputs;
}

std::vector<int> any_values(LITERALS& literals, std::size_t count) {
  std::vector<int> values;
  for (std::size_t i = 0; i < count; ++i) {
    values.push_back(literals.any());
  }
  return values;
}

// A number that tells sequences of values apart, with next to no exceptions. An exception costs time only.
std::uint64_t mixed(std::uint64_t before, std::uint64_t value) {
  constexpr std::uint64_t ODD = 0x9E3779B97F4A7C15U;
  constexpr int HALF = 29;
  before = (before ^ value) * ODD;
  return before ^ (before >> HALF);
}

// Follows inverters back.
std::pair<int, bool> origin(const std::unordered_map<int, int>& inverters, int net) {
  bool inverted = false;
  for (std::size_t i = 0; i <= inverters.size(); ++i) {
    const auto found = inverters.find(net);
    if (found == inverters.end()) {
      break;
    }
    net = found->second;
    inverted = !inverted;
  }
  return {net, inverted};
}

}  // namespace

// Every register has to be clocked by an input, directly or through inverters.
bool NET_CLASSES::find_clocks() {
  for (const bool after : {false, true}) {
    std::unordered_map<int, int> inverters;
    for (const SIMULATION::NODE& node : netlist(after).nodes()) {
      if (node.m_kind == SIMULATION::KIND::NOT) {
        inverters[node.m_output] = node.m_inputs[0];
      }
    }
    std::unordered_map<int, std::string> inputs;
    for (const auto& [name, net] : netlist(after).inputs()) {
      inputs.emplace(net, name);
    }
    for (const SIMULATION::STORAGE& storage : netlist(after).storage()) {
      const auto [net, inverted] = origin(inverters, storage.m_clock);
      const auto input = inputs.find(net);
      if (storage.m_clocked && input == inputs.end()) {
        return false;
      }
      m_clocks[after ? 1 : 0].emplace_back(storage.m_clocked ? input->second : std::string(), inverted);
    }
  }
  return true;
}

void NET_CLASSES::add_signals(bool after) {
  std::unordered_set<int> added;
  const auto add = [&](int net) {
    if (net > 2 && added.insert(net).second) {
      m_signals.push_back({after, net, false, m_signals.size()});
    }
  };
  for (const SIMULATION::STORAGE& storage : netlist(after).storage()) {
    add(storage.m_q);
  }
  for (const SIMULATION::NODE& node : netlist(after).nodes()) {
    if (node.m_kind != SIMULATION::KIND::NOT) {  // the class of its input tells all
      add(node.m_output);
    }
  }
}

// Makes the first classes from the moments at which as many registers are known as ever. A signal
// that is unknown at one of them is in no class.
void NET_CLASSES::simulate() {
  const auto value = [&](const SIGNAL& signal) { return netlist(signal.m_after).value(signal.m_net); };
  std::size_t most = 0;
  std::vector<std::pair<bool, int>> known_then;
  m_both.run(RUNS, CYCLES, [&] {
    for (int run = 0; run < 64; run += 7) {
      std::vector<std::pair<bool, int>> known;
      for (const bool after : {false, true}) {
        for (const SIMULATION::STORAGE& storage : netlist(after).storage()) {
          if ((netlist(after).value(storage.m_q).known() >> run & 1) != 0) {
            known.emplace_back(after, storage.m_q);
          }
        }
      }
      if (known.size() > most) {
        most = known.size();
        known_then = std::move(known);
      }
    }
  });
  std::vector<std::uint64_t> signatures(m_signals.size(), 0);
  std::vector<char> is_known(m_signals.size(), 1);
  bool first = true;
  m_both.run(RUNS, CYCLES, [&] {
    std::uint64_t mask = ~std::uint64_t{0};
    for (const auto& [after, net] : known_then) {
      mask &= netlist(after).value(net).known();
    }
    if (mask == 0) {
      return;
    }
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
      const TERNARY now = i == 0 ? ALL_ZERO : value(m_signals[i]);
      if ((now.known() & mask) != mask) {
        is_known[i] = 0;
        continue;
      }
      if (first) {
        m_signals[i].m_inverted = (now.m_one & mask & (~mask + 1)) != 0;
      }
      const std::uint64_t ones = (m_signals[i].m_inverted ? ~now.m_one : now.m_one) & mask;
      signatures[i] = mixed(signatures[i], ones);
    }
    first = false;
  });
  std::unordered_map<std::uint64_t, std::size_t> classes;
  for (std::size_t i = 0; i < m_signals.size(); ++i) {
    m_signals[i].m_class = !first && is_known[i] != 0 ? classes.emplace(signatures[i], i).first->second : i;
  }
}

// Splits each class by what was seen of its signals.
void NET_CLASSES::split(const std::vector<std::uint64_t>& seen) {
  std::map<std::pair<std::size_t, std::uint64_t>, std::size_t> classes;
  for (std::size_t i = 0; i < m_signals.size(); ++i) {
    m_signals[i].m_class = classes.emplace(std::pair(m_signals[i].m_class, seen[i]), i).first->second;
  }
}

// Adds to `seen` what follows a state in which all classes hold that will be left. So whatever
// differs there is in different classes at the end.
void NET_CLASSES::see_what_follows(const std::vector<bool>& held, std::vector<std::uint64_t>& seen) {
  std::vector<std::uint64_t> values[2];
  for (std::size_t i = 0; i < held.size(); ++i) {
    values[i < netlist(false).storage().size() ? 0 : 1].push_back(held[i] ? WORDS::one() : WORDS::zero());
  }
  std::unordered_map<std::string, std::uint64_t> habits;
  for (int cycle = 0; cycle < CYCLES_AFTER; ++cycle) {
    std::unordered_map<std::string, std::uint64_t> inputs;
    for (const auto& [name, net] : netlist(false).inputs()) {
      const std::uint64_t habit = habits.emplace(name, m_words.any()).first->second;  // mostly 0 or mostly 1
      const std::uint64_t change = m_words.any() & m_words.any() & (cycle % 2 == 0 ? ~std::uint64_t{0} : m_words.any());
      inputs.emplace(name, habit ^ change);
    }
    MOMENT<WORDS> moment(m_words, m_both, std::move(values[0]), std::move(values[1]), inputs);
    const std::vector<std::uint64_t> now = values_of(m_words, moment);
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
      seen[i] = mixed(seen[i], now[i]);
    }
    after_step(m_words, moment, values);
  }
}

// Asks for moments at which a signal and the first of its class differ until there are none, and
// splits the classes. True when there was none. `held` is empty, or what the registers hold then.
bool NET_CLASSES::search(ezSAT& solver, const std::vector<int>& values, const std::vector<int>& held) {
  std::vector<int> asked = values;
  asked.insert(asked.end(), held.begin(), held.end());
  for (int question = 0;; ++question) {
    std::vector<int> any;
    for (std::size_t i = 0; i < m_signals.size(); ++i) {
      if (const std::size_t first = m_signals[i].m_class; first != i && values[i] != values[first]) {
        any.push_back(solver.XOR(values[i], values[first]));
      }
    }
    std::vector<bool> moment;
    const bool found = !any.empty() && solver.solve(asked, moment, solver.expression(ezSAT::OpOr, any));
    m_gave_up = m_gave_up || solver.getSolverTimoutStatus() || question >= MOST_QUESTIONS || std::clock() > m_end;
    if (!found || m_gave_up) {
      return question == 0;
    }
    std::vector<std::uint64_t> seen(moment.begin(), moment.begin() + static_cast<std::ptrdiff_t>(values.size()));
    if (!held.empty()) {
      see_what_follows({moment.begin() + static_cast<std::ptrdiff_t>(values.size()), moment.end()}, seen);
    }
    split(seen);
  }
}

// The values of all signals, inverted where they are.
template <class ALGEBRA, class MOMENT>
std::vector<typename ALGEBRA::VALUE> NET_CLASSES::values_of(ALGEBRA& algebra, MOMENT& moment) const {
  std::vector<typename ALGEBRA::VALUE> values{algebra.zero()};
  for (std::size_t i = 1; i < m_signals.size(); ++i) {
    const auto value = moment.frame(m_signals[i].m_after).net(m_signals[i].m_net);
    values.push_back(m_signals[i].m_inverted ? algebra.inverse(value) : value);
  }
  return values;
}

// What the registers hold after a step, in which each clock has an edge or has none. Returns
// whether any clock has one.
template <class ALGEBRA, class MOMENT>
typename ALGEBRA::VALUE NET_CLASSES::after_step(ALGEBRA& algebra, MOMENT& now,
                                                std::vector<typename ALGEBRA::VALUE> (&next)[2]) const {
  std::map<std::pair<std::string, bool>, typename ALGEBRA::VALUE> edges;
  for (const bool after : {false, true}) {
    std::vector<typename ALGEBRA::VALUE>& held = next[after ? 1 : 0];
    held.clear();
    for (std::size_t i = 0; i < netlist(after).storage().size(); ++i) {
      const auto stays = now.frame(after).output(i);
      const auto& clock = m_clocks[after ? 1 : 0][i];
      if (clock.first.empty()) {
        held.push_back(stays);
        continue;
      }
      if (!edges.contains(clock)) {
        edges.emplace(clock, algebra.any());
      }
      held.push_back(algebra.chosen(edges[clock], now.frame(after).next(i), stays));
    }
  }
  auto any = algebra.zero();
  for (const auto& [clock, edge] : edges) {
    any = algebra.either(any, edge);
  }
  return any;
}

// Demands that the known pairs hold.
template <class MOMENT>
void NET_CLASSES::demand_known(LITERALS& literals, MOMENT& moment) const {
  for (const PAIR& pair : m_known) {
    const int before = moment.frame(false).output(static_cast<std::size_t>(pair.m_before));
    const int after =
        pair.m_after < 0 ? LITERALS::zero() : moment.frame(true).output(static_cast<std::size_t>(pair.m_after));
    literals.m_solver.assume(literals.m_solver.IFF(before, pair.m_inverted ? literals.inverse(after) : after));
  }
}

// Whether any register is set or loaded without a clock.
template <class MOMENT>
int NET_CLASSES::set_asynchronously(LITERALS& literals, MOMENT& moment) const {
  int any = LITERALS::zero();
  for (const bool after : {false, true}) {
    for (const SIMULATION::STORAGE& storage : netlist(after).storage()) {
      for (const int net : {storage.m_load, storage.m_clear, storage.m_set}) {
        any = net > 0 ? literals.either(any, moment.frame(after).net(net)) : any;
      }
    }
  }
  return any;
}

void NET_CLASSES::demand_classes(ezSAT& solver, const std::vector<int>& values) const {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (const std::size_t first = m_signals[i].m_class; first != i && values[i] != values[first]) {
      solver.assume(solver.IFF(values[i], values[first]));
    }
  }
}

// Power-up values with which all classes hold, while nothing sets registers asynchronously. Those
// that the netlist gives stay.
bool NET_CLASSES::choose_power_up(std::vector<bool>& held) {
  TIMED_SOLVER timed;
  ezSAT* const solver = timed.m_solver.get();
  LITERALS& literals = timed.m_literals;
  MOMENT<LITERALS> moment(literals, m_both, any_values(literals, netlist(false).storage().size()),
                          any_values(literals, netlist(true).storage().size()), any_inputs(literals, m_both));
  demand_known(literals, moment);
  demand_classes(*solver, values_of(literals, moment));
  solver->assume(literals.inverse(set_asynchronously(literals, moment)));
  std::vector<int> all;
  for (const bool after : {false, true}) {
    const std::vector<int>& values = moment.held(after);
    for (std::size_t i = 0; i < values.size(); ++i) {
      const SIMULATION::STORAGE& storage = netlist(after).storage()[i];
      if (storage.m_initial.known() != 0) {
        solver->assume(storage.m_initial.m_one != 0 ? values[i] : literals.inverse(values[i]));
      }
    }
    all.insert(all.end(), values.begin(), values.end());
  }
  return solver->solve(all, held);
}

bool NET_CLASSES::holds_at_power_up() {
  std::vector<bool> held;
  if (!choose_power_up(held)) {
    m_gave_up = true;
    return false;
  }
  TIMED_SOLVER timed;
  ezSAT* const solver = timed.m_solver.get();
  LITERALS& literals = timed.m_literals;
  std::vector<int> values[2];
  for (std::size_t i = 0; i < held.size(); ++i) {
    values[i < netlist(false).storage().size() ? 0 : 1].push_back(held[i] ? LITERALS::one() : LITERALS::zero());
  }
  MOMENT<LITERALS> moment(literals, m_both, std::move(values[0]), std::move(values[1]), any_inputs(literals, m_both));
  return search(*solver, values_of(literals, moment), {});
}

// The step has an edge of a clock, or registers are set without one. Otherwise the state stays the
// same, and the classes hold in it for all inputs, not only for those of this moment. So a step
// that changes nothing need not be asked for. Asking for it would lose the classes that hold for
// the inputs of one moment because of the inputs of the moment before.
bool NET_CLASSES::holds_after_step() {
  TIMED_SOLVER timed;
  ezSAT* const solver = timed.m_solver.get();
  LITERALS& literals = timed.m_literals;
  MOMENT<LITERALS> now(literals, m_both, any_values(literals, netlist(false).storage().size()),
                       any_values(literals, netlist(true).storage().size()), any_inputs(literals, m_both));
  demand_known(literals, now);
  demand_classes(*solver, values_of(literals, now));
  std::vector<int> next[2];
  const int edge = after_step(literals, now, next);
  solver->assume(literals.either(edge, set_asynchronously(literals, now)));
  std::vector<int> held = next[0];
  held.insert(held.end(), next[1].begin(), next[1].end());
  MOMENT<LITERALS> then(literals, m_both, std::move(next[0]), std::move(next[1]), any_inputs(literals, m_both));
  demand_known(literals, then);
  return search(*solver, values_of(literals, then), held);
}

// True when all classes hold at all times.
bool NET_CLASSES::settle() {
  for (bool changed = true; changed;) {
    while (!m_gave_up && !holds_after_step()) {
    }
    changed = !m_gave_up && !holds_at_power_up();
  }
  return !m_gave_up;
}

std::vector<REGISTER_PAIR> NET_CLASSES::pairs_found() const {
  std::unordered_map<int, int> registers[2];  // by net
  for (const bool after : {false, true}) {
    for (std::size_t i = 0; i < netlist(after).storage().size(); ++i) {
      registers[after ? 1 : 0].emplace(netlist(after).storage()[i].m_q, static_cast<int>(i));
    }
  }
  std::unordered_map<std::size_t, std::vector<std::pair<int, bool>>> members;  // registers after, by class
  members[m_signals.front().m_class].emplace_back(-1, false);
  for (const SIGNAL& signal : m_signals) {
    if (const auto found = registers[1].find(signal.m_net); signal.m_after && found != registers[1].end()) {
      members[signal.m_class].emplace_back(found->second, signal.m_inverted);
    }
  }
  std::vector<PAIR> found;
  for (std::size_t i = 1; i < m_signals.size(); ++i) {
    const SIGNAL& signal = m_signals[i];
    const auto before = registers[0].find(signal.m_net);
    if (signal.m_after || before == registers[0].end()) {
      continue;
    }
    for (const auto& [after, inverted] : members[signal.m_class]) {
      found.push_back({before->second, after, inverted != signal.m_inverted});
    }
  }
  return found;
}

std::vector<REGISTER_PAIR> NET_CLASSES::pairs() {
  for (const bool after : {false, true}) {
    if (netlist(after).has_loops() || netlist(after).nodes().size() > MOST_NODES) {
      return {};
    }
  }
  if (!find_clocks()) {
    return {};
  }
  m_end = std::clock() + MOST_SECONDS_IN_ALL * CLOCKS_PER_SEC;
  m_signals.push_back({});
  add_signals(false);
  add_signals(true);
  simulate();
  return settle() ? pairs_found() : std::vector<PAIR>();
}

}  // namespace kpt_yosys
