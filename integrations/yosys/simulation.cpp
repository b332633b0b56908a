#include "simulation.h"

#include <algorithm>

#include "gate_functions.h"
#include "netlist_names.h"
#include "yosys_version.h"

namespace kpt_yosys {

namespace {

constexpr int ZERO = 0;
constexpr int ONE = 1;
constexpr int NEVER_KNOWN = 2;
constexpr int MOST_ROUNDS = 64;  // the most rounds for a loop that may not settle

TERNARY constant(RTLIL::State state) {
  if (state == RTLIL::State::S0) {
    return ALL_ZERO;
  }
  return state == RTLIL::State::S1 ? ALL_ONE : TERNARY{};
}

}  // namespace

SIMULATION::SIMULATION(RTLIL::Module* module) : m_sigmap(module), m_values(3) {
  Yosys::dict<RTLIL::SigBit, RTLIL::State> initial;
  for (const auto& [name, wire] : module->wires_) {
    const auto init = wire->attributes.find(Yosys::ID::init);
    for (int i = 0; init != wire->attributes.end() && i < wire->width && i < init->second.size(); ++i) {
      if (bit_of(init->second, i) == RTLIL::State::S0 || bit_of(init->second, i) == RTLIL::State::S1) {
        initial[m_sigmap(RTLIL::SigBit(wire, i))] = bit_of(init->second, i);
      }
    }
  }
  add_names(module);
  for (const auto& [name, cell] : module->cells_) {
    if (RTLIL::builtin_ff_cell_types().count(cell->type) != 0) {
      add_storage(cell, initial);
    } else {
      add_cell(cell);
    }
  }
  find_clocks();
  sort_nodes();
}

void SIMULATION::add_names(RTLIL::Module* module) {
  for (const auto& [name, wire] : module->wires_) {
    for (int i = 0; i < wire->width; ++i) {
      const int net = net_of(RTLIL::SigBit(wire, i));
      if (const auto [known, is_new] = m_names.emplace(text_of(*wire, i), net); !is_new && known->second != net) {
        known->second = -1;
      }
      if (wire->port_input && !wire->port_output) {
        m_inputs.emplace_back(text_of(*wire, i), net);
      }
    }
  }
}

int SIMULATION::net(const std::string& name) const {
  const auto found = m_names.find(name);
  return found != m_names.end() ? found->second : -1;
}

int SIMULATION::new_net() {
  m_values.emplace_back();
  return static_cast<int>(m_values.size()) - 1;
}

int SIMULATION::net_of(RTLIL::SigBit bit) {
  const RTLIL::SigBit stands_for_all = m_sigmap(bit);
  if (stands_for_all.wire == nullptr) {
    const TERNARY value = constant(stands_for_all.data);
    return value.m_zero != 0 ? ZERO : value.m_one != 0 ? ONE : NEVER_KNOWN;
  }
  if (const auto found = m_nets.find(stands_for_all); found != m_nets.end()) {
    return found->second;
  }
  const int net = new_net();
  m_nets[stands_for_all] = net;
  return net;
}

int SIMULATION::add(KIND kind, int a, int b, int c) {
  NODE node;
  node.m_kind = kind;
  node.m_output = new_net();
  node.m_inputs[0] = a;
  node.m_inputs[1] = b;
  node.m_inputs[2] = c;
  m_nodes.push_back(node);
  return node.m_output;
}

// The last node that was added drives that net itself.
void SIMULATION::join(int output, int value) {
  if (!m_nodes.empty() && m_nodes.back().m_output == value && output > NEVER_KNOWN) {
    m_nodes.back().m_output = output;
  }
}

// A cell of any other kind drives nothing here, so its outputs are never known.
void SIMULATION::add_cell(RTLIL::Cell* cell) {
  const std::string type = cell->type.c_str();
  if (type.starts_with("$_") && cell->hasPort(Yosys::ID::Y) && cell->hasPort(Yosys::ID::A)) {
    add_gate(type.substr(2, type.size() - 3), cell);
  }
}

void SIMULATION::add_gate(const std::string& type, RTLIL::Cell* cell) {
  struct NODES {
    using VALUE = int;
    SIMULATION& m_simulation;
    VALUE inverse(VALUE a) { return m_simulation.add(KIND::NOT, a); }
    VALUE both(VALUE a, VALUE b) { return m_simulation.add(KIND::AND, a, b); }
    VALUE differ(VALUE a, VALUE b) { return m_simulation.add(KIND::XOR, a, b); }
    VALUE chosen(VALUE select, VALUE one, VALUE zero) { return m_simulation.add(KIND::MUX, zero, one, select); }
  };
  const auto in = [&](const RTLIL::IdString& port) {
    return cell->hasPort(port) ? net_of(cell->getPort(port)[0]) : NEVER_KNOWN;
  };
  NODES nodes{*this};
  const GATE_INPUTS<int> inputs = {in(Yosys::ID::A), in(Yosys::ID::B), in(Yosys::ID::C), in(Yosys::ID::D),
                                   in(Yosys::ID::S)};
  if (int value = 0; gate_value(nodes, type, inputs, value)) {
    join(net_of(cell->getPort(Yosys::ID::Y)[0]), value);
  }
}

int SIMULATION::active(const RTLIL::SigSpec& signal, int index, bool high) {
  const int net = net_of(signal[signal.size() > 1 ? index : 0]);
  return high ? net : add(KIND::NOT, net);
}

void SIMULATION::add_storage(RTLIL::Cell* cell, const Yosys::dict<RTLIL::SigBit, RTLIL::State>& initial) {
  const Yosys::FfData ff(nullptr, cell);
  for (int i = 0; i < ff.width; ++i) {
    STORAGE bit;
    bit.m_q = net_of(ff.sig_q[i]);
    if (bit.m_q <= NEVER_KNOWN || ff.has_gclk) {
      continue;
    }
    if (const auto value = initial.find(m_sigmap(ff.sig_q[i])); value != initial.end()) {
      bit.m_initial = constant(value->second);
    }
    bit.m_clocked = ff.has_clk;
    bit.m_enable_first = ff.ce_over_srst;
    bit.m_d = ff.has_clk ? net_of(ff.sig_d[i]) : NEVER_KNOWN;
    bit.m_clock = ff.has_clk ? active(ff.sig_clk, i, ff.pol_clk) : ZERO;
    bit.m_enable = ff.has_ce ? active(ff.sig_ce, i, ff.pol_ce) : ONE;
    bit.m_reset = ff.has_srst ? active(ff.sig_srst, i, ff.pol_srst) : ZERO;
    bit.m_reset_value = ff.has_srst ? constant(bit_of(ff.val_srst, i)) : TERNARY{};
    bit.m_load = ff.has_aload ? active(ff.sig_aload, i, ff.pol_aload) : ZERO;
    bit.m_load_data = ff.has_aload ? net_of(ff.sig_ad[i]) : NEVER_KNOWN;
    bit.m_clear = ff.has_sr ? active(ff.sig_clr, i, ff.pol_clr) : ZERO;
    bit.m_set = ff.has_sr ? active(ff.sig_set, i, ff.pol_set) : ZERO;
    if (ff.has_arst) {
      const int reset = active(ff.sig_arst, i, ff.pol_arst);
      if (bit_of(ff.val_arst, i) == RTLIL::State::S1) {
        bit.m_set = reset;
      } else if (bit_of(ff.val_arst, i) == RTLIL::State::S0) {
        bit.m_clear = reset;
      } else {
        bit.m_load = ff.has_aload ? NEVER_KNOWN : reset;  // loads a value that is never known
      }
    }
    m_storage.push_back(bit);
    if (bit.m_load != ZERO || bit.m_clear != ZERO || bit.m_set != ZERO) {
      NODE node;
      node.m_kind = KIND::STORAGE;
      node.m_output = bit.m_q;
      node.m_storage = static_cast<int>(m_storage.size()) - 1;
      m_nodes.push_back(node);
    }
  }
}

void SIMULATION::find_clocks() {
  std::unordered_map<int, int> inverters;
  for (const NODE& node : m_nodes) {
    if (node.m_kind == KIND::NOT) {
      inverters[node.m_output] = node.m_inputs[0];
    }
  }
  std::unordered_map<int, bool> clocks;
  for (const STORAGE& bit : m_storage) {
    int net = bit.m_clock;
    for (int i = 0; i < MOST_ROUNDS && inverters.contains(net); ++i) {
      net = inverters[net];
    }
    clocks[net] = bit.m_clocked;
  }
  for (const auto& [name, net] : m_inputs) {
    if (clocks.contains(net) && clocks[net]) {
      m_clocks.push_back(name);
    }
  }
}

// Puts each node after the nodes that it reads, except in loops.
void SIMULATION::sort_nodes() {
  const auto inputs_of = [this](const NODE& node) {
    if (node.m_kind == KIND::STORAGE) {
      const STORAGE& bit = m_storage[static_cast<std::size_t>(node.m_storage)];
      return std::vector<int>{bit.m_load, bit.m_load_data, bit.m_clear, bit.m_set};
    }
    return std::vector<int>(std::begin(node.m_inputs), std::end(node.m_inputs));
  };
  std::vector<int> waits(m_nodes.size(), 0);
  std::vector<std::vector<std::size_t>> readers(m_values.size());
  std::vector<char> is_driven(m_values.size(), 0);
  for (const NODE& node : m_nodes) {
    is_driven[static_cast<std::size_t>(node.m_output)] = 1;
  }
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    for (const int input : inputs_of(m_nodes[i])) {
      if (is_driven[static_cast<std::size_t>(input)] != 0) {
        ++waits[i];
        readers[static_cast<std::size_t>(input)].push_back(i);
      }
    }
  }
  std::vector<std::size_t> order;
  order.reserve(m_nodes.size());
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    if (waits[i] == 0) {
      order.push_back(i);
    }
  }
  for (std::size_t done = 0; done < order.size(); ++done) {
    for (const std::size_t reader : readers[static_cast<std::size_t>(m_nodes[order[done]].m_output)]) {
      if (--waits[reader] == 0) {
        order.push_back(reader);
      }
    }
  }
  m_has_loops = order.size() < m_nodes.size();
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    if (waits[i] > 0) {
      order.push_back(i);
    }
  }
  std::vector<NODE> sorted;
  sorted.reserve(m_nodes.size());
  for (const std::size_t i : order) {
    sorted.push_back(m_nodes[i]);
  }
  m_nodes = std::move(sorted);
}

void SIMULATION::power_up() {
  std::fill(m_values.begin(), m_values.end(), TERNARY{});
  at(ZERO) = ALL_ZERO;
  at(ONE) = ALL_ONE;
  for (const STORAGE& bit : m_storage) {
    at(bit.m_q) = bit.m_initial;
  }
}

void SIMULATION::begin() {
  settle_logic();
  m_before = m_values;
}

TERNARY SIMULATION::evaluated(const NODE& node) const {
  const TERNARY a = value(node.m_inputs[0]);
  switch (node.m_kind) {
    case KIND::NOT:
      return ~a;
    case KIND::AND:
      return a & value(node.m_inputs[1]);
    case KIND::XOR:
      return a ^ value(node.m_inputs[1]);
    case KIND::MUX:
      return chosen(value(node.m_inputs[2]), value(node.m_inputs[1]), a);
    case KIND::STORAGE:
      break;
  }
  return held(m_storage[static_cast<std::size_t>(node.m_storage)], value(node.m_output));
}

// A register's value after its asynchronous inputs; the clear input has priority over the set input.
TERNARY SIMULATION::held(const STORAGE& storage, TERNARY q) const {
  q = chosen(value(storage.m_load), value(storage.m_load_data), q);
  q = chosen(value(storage.m_set), ALL_ONE, q);
  return chosen(value(storage.m_clear), ALL_ZERO, q);
}

// The value that a clock edge loads, from the values before the edge.
TERNARY SIMULATION::loaded(const STORAGE& storage) const {
  const auto was = [this](int net) { return m_before[static_cast<std::size_t>(net)]; };
  const TERNARY q = was(storage.m_q);
  if (storage.m_enable_first) {
    return chosen(was(storage.m_enable), chosen(was(storage.m_reset), storage.m_reset_value, was(storage.m_d)), q);
  }
  return chosen(was(storage.m_reset), storage.m_reset_value, chosen(was(storage.m_enable), was(storage.m_d), q));
}

void SIMULATION::settle_logic() {
  bool changed = true;
  for (int round = 0; changed && round < 2 * MOST_ROUNDS; ++round) {
    changed = false;
    for (const NODE& node : m_nodes) {
      TERNARY now = evaluated(node);
      TERNARY& last = at(node.m_output);
      if (now != last) {
        changed = m_has_loops;
        last = round < MOST_ROUNDS ? now : TERNARY{};  // a loop that does not settle
      }
    }
  }
}

bool SIMULATION::clock_registers() {
  std::vector<std::pair<int, TERNARY>> updates;
  for (const STORAGE& bit : m_storage) {
    if (!bit.m_clocked) {
      continue;
    }
    const TERNARY was = m_before[static_cast<std::size_t>(bit.m_clock)];
    const TERNARY is = value(bit.m_clock);
    const std::uint64_t rises = was.m_zero & is.m_one;
    const std::uint64_t may_rise = ~was.m_one & ~is.m_zero & ~rises;
    if ((rises | may_rise) == 0) {
      continue;
    }
    const TERNARY next = loaded(bit);
    const TERNARY q = value(bit.m_q);
    updates.emplace_back(bit.m_q, held(bit, in_runs(rises, next, in_runs(may_rise, agreed(next, q), q))));
  }
  for (const auto& [net, next] : updates) {
    at(net) = next;
  }
  return !updates.empty();
}

// A register that another register clocks follows in the next step.
void SIMULATION::settle() {
  settle_logic();
  for (int wave = 0; wave < MOST_ROUNDS; ++wave) {
    std::vector<TERNARY> now = m_values;
    if (!clock_registers()) {
      break;
    }
    m_before = std::move(now);
    settle_logic();
  }
  m_before = m_values;
}

}  // namespace kpt_yosys
