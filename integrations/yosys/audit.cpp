#include "audit.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>

#include "backends/rtlil/rtlil_backend.h"
#include "simulation.h"

namespace kpt_yosys {

namespace {

void add_below(RTLIL::Module* module, std::set<RTLIL::Module*>& modules) {
  if (!modules.insert(module).second) {
    return;
  }
  for (const auto& [name, cell] : module->cells_) {
    if (RTLIL::Module* const below = submodule(*cell); below != nullptr) {
      add_below(below, modules);
    }
  }
}

// The modules as text, which holds no identifier of Yosys: one that is held is not given anew, and
// later passes would see their objects in another order.
std::string text_of_modules(RTLIL::Module* top) {
  std::set<RTLIL::Module*> modules;
  add_below(top, modules);
  std::ostringstream text;
  for (RTLIL::Module* const module : modules) {
    Yosys::RTLIL_BACKEND::dump_module(text, "", module, module->design, false);
  }
  return text.str();
}

// Gates and registers alone. A large memory stays: what is read of it is never known.
SIMULATION gates_of(const std::string& text, const std::string& top) {
  const auto gates = std::make_unique<RTLIL::Design>();
  std::istringstream in(text);
  Yosys::Frontend::frontend_call(gates.get(), &in, "kept", "rtlil");
  for (const char* const pass :
       {"flatten", "memory_collect", "memory_map t:$mem_v2 r:SIZE<=1024 %i", "techmap", "simplemap"}) {
    Yosys::Pass::call(gates.get(), pass);
  }
  return SIMULATION(gates->module(top));
}

// Values that a fact relates: of the reference (first) and of the netlist.
struct TERM {
  int m_net = -1;
  bool m_inverted = false;
  bool m_reference = false;
};

// The terms have, in one of the rows, those values together.
struct FACT {
  int m_point = -1;    // that it is about, or
  int m_machine = -1;  // that one
  std::vector<TERM> m_terms;
  std::vector<std::vector<bool>> m_rows;
  bool m_seen = false;
  bool m_false = false;
};

class SIDE_BY_SIDE {
 public:
  SIDE_BY_SIDE(SIMULATION reference, SIMULATION present)
      : m_reference(std::move(reference)), m_present(std::move(present)) {}

  std::vector<FACT> facts(const TRACKER& tracker) const;
  void run(std::vector<FACT>& facts, const AUDIT::EFFORT& effort);

 private:
  // How often an input is 1, in each of the runs: half of the time, seldom, or mostly.
  struct HABIT {
    std::uint64_t m_seldom = 0;
    std::uint64_t m_mostly = 0;
  };

  TERM reference_term(const POINT& point, bool inverted) const {
    return {m_reference.net(point.m_name), inverted, true};
  }
  TERM present_term(const TRACKER& tracker, const POINT& point) const {
    return {m_present.net(tracker.view().name(point.m_location)), point.m_inverted, false};
  }
  FACT fact_of(const TRACKER& tracker, int index) const;
  FACT fact_of_machine(const TRACKER& tracker, int index) const;
  TERNARY value(const TERM& term) const;
  void drive(const std::string& name, TERNARY value);
  void change_data(const std::vector<HABIT>& habits, bool settled);
  void change_clocks();
  void check(std::vector<FACT>& facts) const;
  void settle_and_check(std::vector<FACT>& facts);
  bool is_clock(const std::string& name) const;

  SIMULATION m_reference;
  SIMULATION m_present;
  std::mt19937_64 m_random{1};
};

FACT SIDE_BY_SIDE::fact_of(const TRACKER& tracker, int index) const {
  const POINT& point = tracker.points()[static_cast<std::size_t>(index)];
  FACT fact;
  fact.m_point = index;
  fact.m_terms.push_back(reference_term(point, false));
  if (point.m_fate == FATE::LIVE) {
    fact.m_terms.push_back(present_term(tracker, point));
    fact.m_rows = {{false, false}, {true, true}};
  } else {
    fact.m_rows = {{point.m_fate == FATE::ONE}};
  }
  return fact;
}

FACT SIDE_BY_SIDE::fact_of_machine(const TRACKER& tracker, int index) const {
  const MACHINE& machine = tracker.machines()[static_cast<std::size_t>(index)];
  FACT fact;
  fact.m_machine = index;
  fact.m_rows.resize(machine.m_codes.size());
  for (const POINT& point : tracker.points()) {
    if (point.m_fate == FATE::IN_MACHINE && point.m_machine == index && !point.m_name.empty()) {
      fact.m_terms.push_back(reference_term(point, point.m_column_inverted));
      for (std::size_t state = 0; state < machine.m_codes.size(); ++state) {
        fact.m_rows[state].push_back(machine.m_old_codes[state][static_cast<std::size_t>(point.m_column)] == '1');
      }
    }
  }
  const bool any = !fact.m_terms.empty();
  for (std::size_t bit = 0; any && bit < machine.m_points.size(); ++bit) {
    const POINT& point = tracker.points()[static_cast<std::size_t>(machine.m_points[bit])];
    if (point.m_fate == FATE::LIVE) {
      fact.m_terms.push_back(present_term(tracker, point));
      for (std::size_t state = 0; state < machine.m_codes.size(); ++state) {
        fact.m_rows[state].push_back(machine.m_codes[state][bit] == '1');
      }
    }
  }
  return fact;
}

std::vector<FACT> SIDE_BY_SIDE::facts(const TRACKER& tracker) const {
  std::vector<FACT> facts;
  for (std::size_t i = 0; i < tracker.points().size(); ++i) {
    const POINT& point = tracker.points()[i];
    const bool says = point.m_fate == FATE::LIVE || point.m_fate == FATE::ZERO || point.m_fate == FATE::ONE;
    if (says && !point.m_name.empty()) {
      facts.push_back(fact_of(tracker, static_cast<int>(i)));
    }
  }
  for (std::size_t i = 0; i < tracker.machines().size(); ++i) {
    FACT fact = fact_of_machine(tracker, static_cast<int>(i));
    if (!fact.m_terms.empty() && !tracker.machines()[i].m_points.empty()) {
      facts.push_back(std::move(fact));
    }
  }
  return facts;
}

TERNARY SIDE_BY_SIDE::value(const TERM& term) const {
  if (term.m_net < 0) {
    return {};
  }
  const TERNARY value = term.m_reference ? m_reference.value(term.m_net) : m_present.value(term.m_net);
  return term.m_inverted ? ~value : value;
}

bool SIDE_BY_SIDE::is_clock(const std::string& name) const {
  const auto in = [&name](const std::vector<std::string>& clocks) {
    return std::find(clocks.begin(), clocks.end(), name) != clocks.end();
  };
  return in(m_reference.clocks()) || in(m_present.clocks());
}

void SIDE_BY_SIDE::drive(const std::string& name, TERNARY value) {
  for (SIMULATION* const side : {&m_reference, &m_present}) {
    const int net = side->net(name);
    if (net > 2) {
      side->set(net, value);
    }
  }
}

void SIDE_BY_SIDE::change_data(const std::vector<HABIT>& habits, bool settled) {
  std::size_t at = 0;
  for (const auto& [name, net] : m_reference.inputs()) {
    const HABIT& habit = habits[at++];
    if (is_clock(name)) {
      continue;
    }
    const std::uint64_t half = m_random();
    const std::uint64_t few = half & m_random() & m_random() & m_random();
    std::uint64_t ones = half;
    if (settled) {
      ones = (few & habit.m_seldom) | (~few & habit.m_mostly) | (half & ~habit.m_seldom & ~habit.m_mostly);
    }
    drive(name, {ones, ~ones});
  }
}

void SIDE_BY_SIDE::change_clocks() {
  for (const auto& [name, net] : m_reference.inputs()) {
    if (is_clock(name)) {
      const std::uint64_t turns = m_reference.clocks().size() > 1 ? m_random() | m_random() : ~std::uint64_t{0};
      const TERNARY was = m_reference.value(net);
      drive(name, in_runs(turns, ~was, was));
    }
  }
}

void SIDE_BY_SIDE::check(std::vector<FACT>& facts) const {
  for (FACT& fact : facts) {
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

void SIDE_BY_SIDE::settle_and_check(std::vector<FACT>& facts) {
  m_reference.settle();
  m_present.settle();
  check(facts);
}

void SIDE_BY_SIDE::run(std::vector<FACT>& facts, const AUDIT::EFFORT& effort) {
  constexpr int RUNS_AT_A_TIME = 64;
  constexpr int CYCLES_UNTIL_HABITS = 4;  // in which all resets are likely to be active once
  for (int run = 0; run < effort.m_runs; run += RUNS_AT_A_TIME) {
    std::vector<HABIT> habits(m_reference.inputs().size());
    for (HABIT& habit : habits) {
      const std::uint64_t any = m_random();
      habit.m_seldom = any & m_random();
      habit.m_mostly = any & ~habit.m_seldom;
    }
    m_reference.power_up();
    m_present.power_up();
    for (const auto& [name, net] : m_reference.inputs()) {
      drive(name, ALL_ZERO);
    }
    change_data(habits, false);
    m_reference.begin();
    m_present.begin();
    // Inputs stay for both edges of the clock: a reset that comes and goes between two edges would be
    // seen by an asynchronous register only.
    for (int cycle = 0; cycle < effort.m_cycles; ++cycle) {
      change_data(habits, cycle >= CYCLES_UNTIL_HABITS);
      settle_and_check(facts);
      for (int edge = 0; edge < 2; ++edge) {
        change_clocks();
        settle_and_check(facts);
      }
    }
  }
}

bool send_all(int to, const void* bytes, std::size_t count) {
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t sent = write(to, at, count);
    if (sent <= 0) {
      return false;
    }
    at += sent;
    count -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool receive_all(int from, void* bytes, std::size_t count) {
  char* at = static_cast<char*>(bytes);
  while (count > 0) {
    const ssize_t received = read(from, at, count);
    if (received <= 0) {
      return false;
    }
    at += received;
    count -= static_cast<std::size_t>(received);
  }
  return true;
}

bool send(int to, const AUDIT::FINDINGS& findings) {
  const std::array counts{findings.m_held, findings.m_unseen, findings.m_false_points.size(),
                          findings.m_false_machines.size()};
  return send_all(to, counts.data(), sizeof counts) &&
         send_all(to, findings.m_false_points.data(), counts[2] * sizeof(int)) &&
         send_all(to, findings.m_false_machines.data(), counts[3] * sizeof(int));
}

bool receive(int from, AUDIT::FINDINGS& findings) {
  std::array<std::size_t, 4> counts{};
  if (!receive_all(from, counts.data(), sizeof counts)) {
    return false;
  }
  findings.m_held = counts[0];
  findings.m_unseen = counts[1];
  findings.m_false_points.resize(counts[2]);
  findings.m_false_machines.resize(counts[3]);
  return receive_all(from, findings.m_false_points.data(), counts[2] * sizeof(int)) &&
         receive_all(from, findings.m_false_machines.data(), counts[3] * sizeof(int));
}

}  // namespace

AUDIT::AUDIT(const NETLIST_VIEW& reference)
    : m_reference(text_of_modules(reference.module(0).module())), m_top(reference.module(0).module()->name.c_str()) {}

AUDIT::FINDINGS AUDIT::simulate(const TRACKER& tracker, const EFFORT& effort) const {
  RTLIL::Module* const top = tracker.view().module(0).module();
  SIDE_BY_SIDE both(gates_of(m_reference, m_top), gates_of(text_of_modules(top), top->name.c_str()));
  std::vector<FACT> facts = both.facts(tracker);
  both.run(facts, effort);
  FINDINGS findings;
  for (const FACT& fact : facts) {
    if (fact.m_false) {
      (fact.m_point >= 0 ? findings.m_false_points : findings.m_false_machines)
          .push_back(std::max(fact.m_point, fact.m_machine));
    } else {
      ++(fact.m_seen ? findings.m_held : findings.m_unseen);
    }
  }
  return findings;
}

// Nothing that is thrown leaves the process.
bool AUDIT::simulated_into(int to, const TRACKER& tracker, const EFFORT& effort) const {
  try {
    return send(to, simulate(tracker, effort));
  } catch (...) {
    return false;
  }
}

// In a process of its own, since the passes that make gates of a netlist leave identifiers behind,
// and Yosys' later passes would see their objects in another order.
AUDIT::FINDINGS AUDIT::check(const TRACKER& tracker, const EFFORT& effort) const {
  std::fflush(nullptr);  // what is printed already is not printed by both
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) {
    throw std::runtime_error("the audit needs a pipe, which the system refuses");
  }
  const pid_t child = fork();
  if (child == 0) {
    Yosys::log_files.clear();
    Yosys::log_streams.clear();
    Yosys::log_errfile = nullptr;
    close(ends[0]);
    _exit(simulated_into(ends[1], tracker, effort) ? 0 : 1);
  }
  close(ends[1]);
  FINDINGS findings;
  const bool received = child > 0 && receive(ends[0], findings);
  close(ends[0]);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0 || !received) {
    throw std::runtime_error("the audit could not be carried out");
  }
  return findings;
}

}  // namespace kpt_yosys
