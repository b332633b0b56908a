#include "netlist_choices.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gate_functions.h"
#include "kernel/ff.h"
#include "kernel/ffinit.h"
#include "kernel/sigtools.h"

namespace kpt_yosys {

namespace {

namespace RTLIL = Yosys::RTLIL;
namespace ID = Yosys::ID;
using RTLIL::SigBit;
using RTLIL::State;

constexpr int MOST_MULTIPLEXERS = 100;

bool is_undefined(SigBit bit) { return bit.wire == nullptr && bit.data != State::S0 && bit.data != State::S1; }

bool is_equiv(const RTLIL::Cell* cell) { return cell->type == RTLIL::IdString("$equiv"); }

// Gates that are added to a module, without those that constants make superfluous.
class GATES {
 public:
  explicit GATES(RTLIL::Module* module) : m_module(module) {}

  SigBit inverse(SigBit a) {
    if (a.wire == nullptr) {
      return a == State::S1 ? State::S0 : State::S1;
    }
    const auto known = m_inverses.find(a);
    if (known != m_inverses.end()) {
      return known->second;
    }
    const SigBit inverse = m_module->NotGate(NEW_ID, a);
    m_inverses[a] = inverse;
    m_inverses[inverse] = a;
    return inverse;
  }
  SigBit both(SigBit a, SigBit b) {
    if (a == State::S0 || b == State::S0) {
      return State::S0;
    }
    return a == State::S1 || a == b ? b : b == State::S1 ? a : m_module->AndGate(NEW_ID, a, b);
  }
  SigBit either(SigBit a, SigBit b) {
    if (a == State::S1 || b == State::S1) {
      return State::S1;
    }
    return a == State::S0 || a == b ? b : b == State::S0 ? a : m_module->OrGate(NEW_ID, a, b);
  }
  SigBit differ(SigBit a, SigBit b) {
    if (a.wire == nullptr || b.wire == nullptr) {
      const bool inverts = a == State::S1 || b == State::S1;
      const SigBit other = a.wire == nullptr ? b : a;
      return a == b ? SigBit(State::S0) : inverts && (a.wire != b.wire) ? inverse(other) : other;
    }
    return a == b ? SigBit(State::S0) : SigBit(m_module->XorGate(NEW_ID, a, b));
  }
  SigBit chosen(SigBit select, SigBit one, SigBit zero) {
    if (select.wire == nullptr || one == zero) {
      return select == State::S1 ? one : zero;
    }
    return m_module->MuxGate(NEW_ID, zero, one, select);
  }

 private:
  RTLIL::Module* m_module;
  Yosys::dict<SigBit, SigBit> m_inverses;
};

// A value and whether it is undefined; while it is, the value means nothing. Each function is undefined
// where its inputs may choose the result.
struct OPEN_VALUES {
  struct VALUE {
    SigBit m_value, m_open;
  };
  GATES& m_gates;

  VALUE inverse(VALUE a) { return {m_gates.inverse(a.m_value), a.m_open}; }
  // Open when no input is surely 0 and one is open.
  VALUE both(VALUE a, VALUE b) {
    const SigBit value = m_gates.both(a.m_value, b.m_value);
    if (a.m_open == State::S0 || b.m_open == State::S0) {
      return {value, a.m_open == State::S0 ? m_gates.both(a.m_value, b.m_open) : m_gates.both(a.m_open, b.m_value)};
    }
    const SigBit may_be_1 = m_gates.both(m_gates.either(a.m_open, a.m_value), m_gates.either(b.m_open, b.m_value));
    return {value, m_gates.both(may_be_1, m_gates.either(a.m_open, b.m_open))};
  }
  VALUE differ(VALUE a, VALUE b) { return {m_gates.differ(a.m_value, b.m_value), m_gates.either(a.m_open, b.m_open)}; }
  VALUE chosen(VALUE select, VALUE one, VALUE zero) {
    const SigBit value = m_gates.chosen(select.m_value, one.m_value, zero.m_value);
    const SigBit open = m_gates.chosen(select.m_value, one.m_open, zero.m_open);
    if (select.m_open == State::S0) {
      return {value, open};
    }
    const SigBit may_differ =
        m_gates.either(m_gates.differ(one.m_value, zero.m_value), m_gates.either(one.m_open, zero.m_open));
    return {value, m_gates.chosen(select.m_open, may_differ, open)};
  }
};

class CHOICES {
 public:
  explicit CHOICES(RTLIL::Module* equiv);
  std::size_t run();

 private:
  void find_gold();
  void free_gate();
  void free_inputs(RTLIL::Cell* cell);
  void find_open();
  void take_apart();
  SigBit open(SigBit bit);
  SigBit known_open(SigBit bit) const;
  bool open_inputs_known(const RTLIL::Cell* cell, std::vector<SigBit>& stack);
  SigBit open_output(RTLIL::Cell* cell);
  SigBit open_register(RTLIL::Cell* cell);
  bool is_boundary(const RTLIL::Cell* equiv) const;
  RTLIL::Cell* driver(SigBit bit) const;
  SigBit input(const RTLIL::Cell* cell, const RTLIL::IdString& port) const { return m_sigmap(cell->getPort(port)[0]); }
  void find_never_defined();
  bool loads_only_registers(SigBit data, std::vector<SigBit>& registers) const;
  static bool is_register(const RTLIL::Cell* cell);
  static bool is_plain_register(RTLIL::Cell* cell);

  RTLIL::Module* m_module;
  Yosys::SigMap m_sigmap;
  Yosys::FfInitVals m_initial;
  GATES m_gates;
  Yosys::dict<SigBit, RTLIL::Cell*> m_drivers;
  Yosys::dict<SigBit, std::vector<RTLIL::Cell*>> m_readers;
  std::vector<RTLIL::Cell*> m_equivs;
  Yosys::pool<RTLIL::Cell*> m_gold;
  Yosys::pool<SigBit> m_may_be_open;
  Yosys::pool<RTLIL::Cell*> m_inner;  // comparisons within the logic, of values that may be open
  Yosys::pool<SigBit> m_never_defined;
  Yosys::dict<SigBit, SigBit> m_open;
  Yosys::pool<SigBit> m_on_stack;
  std::vector<std::pair<RTLIL::Cell*, SigBit>> m_registers;  // whose companions have no data input yet
};

CHOICES::CHOICES(RTLIL::Module* equiv) : m_module(equiv), m_sigmap(equiv), m_initial(&m_sigmap, equiv), m_gates(equiv) {
  for (const auto& [name, cell] : equiv->cells_) {
    if (is_equiv(cell)) {
      m_equivs.push_back(cell);
    }
    for (const auto& [port, signal] : cell->connections_) {
      for (const SigBit& bit : m_sigmap(signal)) {
        if (bit.wire == nullptr) {
          continue;
        }
        if (cell->output(port)) {
          m_drivers[bit] = cell;
        } else {
          m_readers[bit].push_back(cell);
        }
      }
    }
  }
}

RTLIL::Cell* CHOICES::driver(SigBit bit) const {
  const auto found = m_drivers.find(bit);
  return found != m_drivers.end() ? found->second : nullptr;
}

bool CHOICES::is_register(const RTLIL::Cell* cell) { return RTLIL::builtin_ff_cell_types().count(cell->type) != 0; }

// What a gold side is computed from, back to other comparisons and to inputs.
void CHOICES::find_gold() {
  std::vector<SigBit> waiting;
  for (const RTLIL::Cell* const equiv : m_equivs) {
    waiting.push_back(input(equiv, ID::A));
  }
  while (!waiting.empty()) {
    RTLIL::Cell* const cell = driver(waiting.back());
    waiting.pop_back();
    if (cell == nullptr || is_equiv(cell) || !m_gold.insert(cell).second) {
      continue;
    }
    for (const auto& [port, signal] : cell->connections_) {
      if (!cell->output(port)) {
        const std::vector<SigBit> bits = m_sigmap(signal).to_sigbit_vector();
        waiting.insert(waiting.end(), bits.begin(), bits.end());
      }
    }
  }
}

// The proof has to hold for all values that a netlist leaves undefined itself.
void CHOICES::free_gate() {
  for (RTLIL::Cell* const cell : m_module->cells().to_vector()) {
    if (m_gold.count(cell) == 0) {
      free_inputs(cell);
    }
  }
}

void CHOICES::free_inputs(RTLIL::Cell* cell) {
  for (const auto& [port, signal] : Yosys::dict<RTLIL::IdString, RTLIL::SigSpec>(cell->connections_)) {
    RTLIL::SigSpec bits = m_sigmap(signal);
    bool changed = false;
    for (int i = 0; i < bits.size() && !cell->output(port) && !(is_equiv(cell) && port == ID::A); ++i) {
      if (is_undefined(bits[i])) {
        bits[i] = m_module->addWire(NEW_ID);
        changed = true;
      }
    }
    if (changed) {
      cell->setPort(port, bits);
    }
  }
}

// Registers and outputs are compared as they are. Any other comparison only helps a proof.
bool CHOICES::is_boundary(const RTLIL::Cell* equiv) const {
  const RTLIL::Cell* const gold = driver(input(equiv, ID::A));
  const SigBit compared = equiv->getPort(ID::Y)[0];
  return (gold != nullptr && is_register(gold)) || (compared.wire != nullptr && compared.wire->port_output);
}

// All nets to which an undefined value can come.
void CHOICES::find_open() {
  std::vector<RTLIL::Cell*> waiting;
  for (RTLIL::Cell* const cell : m_gold) {
    for (const auto& [port, signal] : cell->connections_) {
      const std::vector<SigBit> bits = m_sigmap(signal).to_sigbit_vector();
      if (!cell->output(port) && std::any_of(bits.begin(), bits.end(), is_undefined)) {
        waiting.push_back(cell);
        break;
      }
    }
  }
  while (!waiting.empty()) {
    const RTLIL::Cell* const cell = waiting.back();
    waiting.pop_back();
    for (const auto& [port, signal] : cell->connections_) {
      for (const SigBit& bit : cell->output(port) ? m_sigmap(signal) : RTLIL::SigSpec()) {
        if (bit.wire == nullptr || !m_may_be_open.insert(bit).second) {
          continue;
        }
        for (RTLIL::Cell* const reader : m_readers[bit]) {
          const bool inner = is_equiv(reader) && input(reader, ID::A) == bit && !is_boundary(reader);
          if (m_gold.count(reader) != 0 || (inner && m_inner.insert(reader).second)) {
            waiting.push_back(reader);
          }
        }
      }
    }
  }
}

// Synthesis may choose different values for different readers of such a net. So both sides get their
// own nets back.
void CHOICES::take_apart() {
  Yosys::dict<SigBit, std::pair<SigBit, SigBit>> sides;
  std::erase_if(m_equivs, [this](RTLIL::Cell* equiv) { return m_inner.count(equiv) != 0; });
  for (RTLIL::Cell* const equiv : m_inner) {
    sides[input(equiv, ID::Y)] = {input(equiv, ID::A), input(equiv, ID::B)};
    m_drivers.erase(input(equiv, ID::Y));
    m_module->remove(equiv);
  }
  m_inner.clear();
  for (RTLIL::Cell* const cell : m_module->cells().to_vector()) {
    const bool gold = m_gold.count(cell) != 0;
    for (const auto& [port, signal] : Yosys::dict<RTLIL::IdString, RTLIL::SigSpec>(cell->connections_)) {
      RTLIL::SigSpec bits = m_sigmap(signal);
      bool changed = false;
      for (int i = 0; i < bits.size() && !cell->output(port); ++i) {
        if (const auto side = sides.find(bits[i]); side != sides.end()) {
          bits[i] = gold ? side->second.first : side->second.second;
          changed = true;
        }
      }
      if (changed) {
        cell->setPort(port, bits);
      }
    }
  }
}

// Registers that power up undefined and load nothing that is defined.
void CHOICES::find_never_defined() {
  Yosys::dict<SigBit, std::vector<SigBit>> loaded_by;
  std::vector<SigBit> defined;
  for (RTLIL::Cell* const cell : m_gold) {
    if (!is_plain_register(cell)) {
      continue;
    }
    const SigBit output = input(cell, ID::Q);
    std::vector<SigBit> loaded;
    if (m_initial(output) == State::Sx && loads_only_registers(input(cell, ID::D), loaded)) {
      m_never_defined.insert(output);
      for (const SigBit& bit : loaded) {
        loaded_by[bit].push_back(output);
      }
    } else {
      defined.push_back(output);
    }
  }
  while (!defined.empty()) {
    const SigBit bit = defined.back();
    defined.pop_back();
    for (const SigBit& reader : loaded_by[bit]) {
      if (m_never_defined.erase(reader) != 0) {
        defined.push_back(reader);
      }
    }
  }
}

// Or what is undefined, through multiplexers, as far as they are few.
bool CHOICES::loads_only_registers(SigBit data, std::vector<SigBit>& registers) const {
  std::vector<SigBit> waiting{data};
  for (int seen = 0; !waiting.empty(); ++seen) {
    const SigBit bit = waiting.back();
    waiting.pop_back();
    if (is_undefined(bit)) {
      continue;
    }
    RTLIL::Cell* const cell = driver(bit);
    if (cell == nullptr || seen == MOST_MULTIPLEXERS) {
      return false;
    }
    if (is_plain_register(cell)) {
      registers.push_back(bit);
    } else if (cell->type == RTLIL::IdString("$_MUX_")) {
      waiting.push_back(input(cell, ID::A));
      waiting.push_back(input(cell, ID::B));
    } else {
      return false;
    }
  }
  return true;
}

bool CHOICES::is_plain_register(RTLIL::Cell* cell) {
  if (!is_register(cell)) {
    return false;
  }
  const Yosys::FfData ff(nullptr, cell);
  return (ff.has_clk || ff.has_gclk) && !ff.has_ce && !ff.has_srst && !ff.has_arst && !ff.has_aload && !ff.has_sr &&
         ff.width == 1;
}

// A register of which nothing but the clock is known holds what its data input was, open or not.
SigBit CHOICES::open_register(RTLIL::Cell* cell) {
  if (m_never_defined.count(input(cell, ID::Q)) != 0) {
    return State::S1;
  }
  if (!is_plain_register(cell)) {
    return State::S0;
  }
  const SigBit data = input(cell, ID::D);
  const SigBit open = m_module->addWire(NEW_ID);
  RTLIL::Cell* const companion = m_module->addCell(NEW_ID, cell);
  companion->setPort(ID::Q, open);
  m_registers.emplace_back(companion, data);
  return open;
}

SigBit CHOICES::open_output(RTLIL::Cell* cell) {
  if (is_register(cell)) {
    return open_register(cell);
  }
  const std::string type = cell->type.c_str();
  if (!type.starts_with("$_") || !cell->hasPort(ID::Y)) {
    return State::S0;
  }
  OPEN_VALUES algebra{m_gates};
  const auto in = [&](const RTLIL::IdString& port) -> OPEN_VALUES::VALUE {
    if (!cell->hasPort(port)) {
      return {State::S0, State::S0};
    }
    const SigBit bit = input(cell, port);
    return {is_undefined(bit) ? SigBit(State::S0) : bit, known_open(bit)};
  };
  const GATE_INPUTS<OPEN_VALUES::VALUE> inputs = {in(ID::A), in(ID::B), in(ID::C), in(ID::D), in(ID::S)};
  OPEN_VALUES::VALUE value{State::S0, State::S0};
  gate_value(algebra, std::string_view(type).substr(2, type.size() - 3), inputs, value);
  return value.m_open;
}

// Pushes the inputs whose openness has to be found first. A net in a loop counts as defined.
bool CHOICES::open_inputs_known(const RTLIL::Cell* cell, std::vector<SigBit>& stack) {
  const std::size_t before = stack.size();
  for (const auto& [port, signal] : cell->connections_) {
    for (const SigBit& bit : cell->output(port) || is_register(cell) ? RTLIL::SigSpec() : m_sigmap(signal)) {
      if (m_may_be_open.count(bit) == 0 || m_open.count(bit) != 0) {
        continue;
      }
      if (m_on_stack.count(bit) != 0) {
        m_open[bit] = State::S0;
      } else {
        stack.push_back(bit);
      }
    }
  }
  return stack.size() == before;
}

SigBit CHOICES::known_open(SigBit bit) const {
  if (is_undefined(bit)) {
    return State::S1;
  }
  const auto known = m_open.find(bit);
  return known != m_open.end() ? known->second : SigBit(State::S0);
}

SigBit CHOICES::open(SigBit bit) {
  std::vector<SigBit> stack;
  if (m_may_be_open.count(bit) != 0) {
    stack.push_back(bit);
  }
  while (!stack.empty()) {
    const SigBit top = stack.back();
    RTLIL::Cell* const cell = driver(top);
    if (m_open.count(top) == 0 && cell != nullptr) {
      m_on_stack.insert(top);
      if (!open_inputs_known(cell, stack)) {
        continue;
      }
      const SigBit found = open_output(cell);
      m_open.emplace(top, found);
    }
    m_on_stack.erase(top);
    stack.pop_back();
  }
  return known_open(bit);
}

std::size_t CHOICES::run() {
  find_gold();
  find_open();
  take_apart();
  free_gate();
  find_never_defined();
  std::size_t count = 0;
  for (RTLIL::Cell* const equiv : m_equivs) {
    const SigBit gold = input(equiv, ID::A);
    const SigBit taken = open(gold);
    if (taken != State::S0) {
      const SigBit value = is_undefined(gold) ? SigBit(State::S0) : gold;
      equiv->setPort(ID::A, m_gates.chosen(taken, equiv->getPort(ID::B)[0], value));
      ++count;
    }
  }
  for (std::size_t i = 0; i < m_registers.size(); ++i) {  // grows
    const auto [companion, data] = m_registers[i];
    companion->setPort(ID::D, open(data));
  }
  return count;
}

}  // namespace

namespace {

// `===` with an undefined constant is never true, because no register's value is undefined itself.
void decide(RTLIL::Cell* cell, const Yosys::SigMap& sigmap) {
  RTLIL::SigSpec a = sigmap(cell->getPort(ID::A));
  RTLIL::SigSpec b = sigmap(cell->getPort(ID::B));
  bool never = false;
  for (int i = 0; i < std::min(a.size(), b.size()); ++i) {
    never = never || (is_undefined(a[i]) != is_undefined(b[i]));
    if (is_undefined(a[i]) && is_undefined(b[i])) {
      a[i] = State::S0;
      b[i] = State::S0;
    }
  }
  cell->setPort(ID::A, a);
  cell->setPort(ID::B, b);
  if (never) {
    RTLIL::Module* const module = cell->module;
    const RTLIL::SigSpec output = cell->getPort(ID::Y);
    const bool equal = cell->type == RTLIL::IdString("$eqx");
    module->remove(cell);
    module->connect(output, RTLIL::Const(equal ? 0 : 1, output.size()));
  }
}

// The select inputs of one $pmux: which constants of which signal they stand for.
class SELECTS {
 public:
  SELECTS(const Yosys::SigMap& sigmap, const Yosys::dict<SigBit, RTLIL::Cell*>& drivers)
      : m_sigmap(sigmap), m_drivers(drivers) {}
  /// Whether never two of them are 1, because each compares one signal with other constants.
  bool exclude_each_other(const std::vector<SigBit>& selects) {
    return std::all_of(selects.begin(), selects.end(), [this](const SigBit& bit) { return is_comparison(bit, true); });
  }

 private:
  bool is_comparison(SigBit bit, bool several) {
    const auto found = m_drivers.find(m_sigmap(bit));
    const RTLIL::Cell* const cell = found != m_drivers.end() ? found->second : nullptr;
    if (cell == nullptr || cell->getPort(ID::Y).size() != 1) {
      return false;
    }
    const RTLIL::SigSpec a = m_sigmap(cell->getPort(ID::A));
    if (cell->type == RTLIL::IdString("$logic_not")) {
      return is_new(a, RTLIL::Const(0, a.size()));
    }
    if (cell->type == RTLIL::IdString("$eq")) {
      const RTLIL::SigSpec b = m_sigmap(cell->getPort(ID::B));
      return a.size() == b.size() && b.is_fully_def() && is_new(a, b.as_const());
    }
    if (several && cell->type == RTLIL::IdString("$reduce_or")) {
      const std::vector<SigBit> all = a.to_sigbit_vector();
      return std::all_of(all.begin(), all.end(), [this](const SigBit& one) { return is_comparison(one, false); });
    }
    return false;
  }
  bool is_new(const RTLIL::SigSpec& signal, const RTLIL::Const& value) {
    if (m_values.empty()) {
      m_signal = signal;
    }
    return m_signal == signal && m_values.insert(value).second;
  }

  const Yosys::SigMap& m_sigmap;
  const Yosys::dict<SigBit, RTLIL::Cell*>& m_drivers;
  RTLIL::SigSpec m_signal;
  Yosys::pool<RTLIL::Const> m_values;
};

// A $pmux with two active selects is undefined: a choice that the source declares to be a parallel case.
void open_overlap(RTLIL::Cell* cell) {
  RTLIL::Module* const module = cell->module;
  GATES gates(module);
  SigBit any = State::S0;
  SigBit two = State::S0;
  for (const SigBit& select : cell->getPort(ID::S).to_sigbit_vector()) {
    two = gates.either(two, gates.both(any, select));
    any = gates.either(any, select);
  }
  const RTLIL::SigSpec output = cell->getPort(ID::Y);
  const RTLIL::SigSpec chosen = module->addWire(NEW_ID, output.size());
  cell->setPort(ID::Y, chosen);
  module->addMux(NEW_ID, chosen, RTLIL::Const(State::Sx, output.size()), two, output);
}

// equiv_make takes all undefined constants for one value, that of a net that is connected to one. A
// net without a driver is undefined as well, and no other net is.
void part_undefined_nets(RTLIL::Module* module) {
  std::vector<RTLIL::SigSig> connections = module->connections();
  for (RTLIL::SigSig& connection : connections) {
    for (int i = 0; i < connection.second.size(); ++i) {
      if (is_undefined(connection.second[i])) {
        connection.second[i] = module->addWire(NEW_ID);
      }
    }
  }
  module->new_connections(connections);
}

}  // namespace

void write_down_choices(RTLIL::Module* module) {
  part_undefined_nets(module);
  const Yosys::SigMap sigmap(module);
  Yosys::dict<SigBit, RTLIL::Cell*> drivers;
  for (const auto& [name, cell] : module->cells_) {
    for (const SigBit& bit : cell->hasPort(ID::Y) ? sigmap(cell->getPort(ID::Y)) : RTLIL::SigSpec()) {
      drivers[bit] = cell;
    }
  }
  for (RTLIL::Cell* const cell : module->cells().to_vector()) {
    if (cell->type == RTLIL::IdString("$pmux")) {
      if (!SELECTS(sigmap, drivers).exclude_each_other(cell->getPort(ID::S).to_sigbit_vector())) {
        open_overlap(cell);
      }
    }
  }
  for (RTLIL::Cell* const cell : module->cells().to_vector()) {
    if (cell->type == RTLIL::IdString("$eqx") || cell->type == RTLIL::IdString("$nex")) {
      decide(cell, sigmap);
    }
  }
}

std::size_t take_choices(RTLIL::Module* equiv) { return CHOICES(equiv).run(); }

}  // namespace kpt_yosys
