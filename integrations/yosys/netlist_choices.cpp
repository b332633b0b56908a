#include "netlist_choices.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "added_gates.h"
#include "gate_functions.h"
#include "kernel/ff.h"
#include "kernel/ffinit.h"
#include "kernel/sigtools.h"
#include "open_machines.h"

namespace kpt_yosys {

namespace {

namespace ID = Yosys::ID;
using RTLIL::SigBit;
using RTLIL::State;

constexpr int MOST_MULTIPLEXERS = 100;

bool is_equiv(const RTLIL::Cell* cell) { return cell->type == RTLIL::IdString("$equiv"); }

// A value and whether it is undefined; while it is, the value means nothing. Each function is undefined
// where its inputs may choose the result.
struct OPEN_VALUES {
  struct VALUE {
    SigBit m_value, m_open;
  };
  ADDED_GATES& m_gates;

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
  bool compares_state(const RTLIL::Cell* equiv) const { return m_codes.count(input(equiv, ID::Y)) != 0; }
  void let_codes_open();
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
  std::vector<OPEN_MACHINE> m_machines;  // found first, because that changes cells
  Yosys::SigMap m_sigmap;
  Yosys::FfInitVals m_initial;
  ADDED_GATES m_gates;
  Yosys::dict<SigBit, RTLIL::Cell*> m_drivers;
  Yosys::dict<SigBit, std::vector<RTLIL::Cell*>> m_readers;
  std::vector<RTLIL::Cell*> m_equivs;
  Yosys::pool<RTLIL::Cell*> m_gold;
  Yosys::dict<SigBit, SigBit> m_codes;  // by the compared bits of a machine's state: whether the netlist is in a code
  Yosys::pool<SigBit> m_may_be_open;
  Yosys::pool<RTLIL::Cell*> m_inner;  // comparisons within the logic, of values that may be open
  Yosys::pool<SigBit> m_never_defined;
  Yosys::dict<SigBit, SigBit> m_open;
  Yosys::pool<SigBit> m_on_stack;
  std::vector<std::pair<RTLIL::Cell*, SigBit>> m_registers;  // whose companions have no data input yet
};

CHOICES::CHOICES(RTLIL::Module* equiv)
    : m_module(equiv),
      m_machines(find_open_machines(equiv)),
      m_sigmap(equiv),
      m_initial(&m_sigmap, equiv),
      m_gates(equiv) {
  for (const OPEN_MACHINE& machine : m_machines) {
    for (const RTLIL::Cell* const state : machine.m_states) {
      m_codes[input(state, ID::Y)] = input(machine.m_code, ID::B);
    }
  }
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
          const bool compared = is_equiv(reader) && input(reader, ID::A) == bit;
          const bool inner = compared && !is_boundary(reader);
          if (m_gold.count(reader) != 0 || (compared && compares_state(reader)) ||
              (inner && m_inner.insert(reader).second)) {
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

// Or what is undefined, through multiplexers and comparisons, as far as they are few.
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
    } else if (is_equiv(cell)) {  // readers read the compared value instead of the register
      waiting.push_back(input(cell, ID::A));
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
  if (is_equiv(cell)) {  // a state that the netlist chose is defined when it has a code
    return m_gates.both(known_open(input(cell, ID::A)), m_gates.inverse(m_codes.at(input(cell, ID::Y))));
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

// Only a state of the source that is undefined in all bits allows the netlist a state without a code.
void CHOICES::let_codes_open() {
  for (const OPEN_MACHINE& machine : m_machines) {
    SigBit all = State::S1;
    for (const RTLIL::Cell* const state : machine.m_states) {
      all = m_gates.both(all, open(input(state, ID::A)));
      open(input(state, ID::Y));  // is found now, because the input changes
    }
    const SigBit demanded = machine.m_code->getPort(ID::A)[0];
    machine.m_code->setPort(ID::A, m_gates.chosen(all, machine.m_code->getPort(ID::B)[0], demanded));
  }
}

std::size_t CHOICES::run() {
  find_gold();
  find_open();
  take_apart();
  free_gate();
  find_never_defined();
  let_codes_open();
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
  while (!m_registers.empty()) {
    const auto [companion, data] = m_registers.back();
    m_registers.pop_back();
    companion->setPort(ID::D, open(data));  // may add registers
  }
  return count;
}

}  // namespace

std::size_t take_choices(RTLIL::Module* equiv) { return CHOICES(equiv).run(); }

}  // namespace kpt_yosys
