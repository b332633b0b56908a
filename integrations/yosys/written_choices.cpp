#include "written_choices.h"

#include <algorithm>
#include <vector>

#include "added_gates.h"
#include "kernel/sigtools.h"

namespace kpt_yosys {

namespace {

namespace ID = Yosys::ID;
using RTLIL::SigBit;
using RTLIL::State;

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
  ADDED_GATES gates(module);
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

// A $pmux with an undefined select is undefined in all bits. The gates that take its place would leave those
// bits defined that all its values share. So each bit gets gates that change no value, and that are
// undefined when a select is.
void open_selects(RTLIL::Cell* cell) {
  RTLIL::Module* const module = cell->module;
  SigBit nothing = State::S0;
  for (const SigBit& select : cell->getPort(ID::S).to_sigbit_vector()) {
    nothing = module->XorGate(NEW_ID, nothing, module->XorGate(NEW_ID, select, select));
  }
  const RTLIL::SigSpec output = cell->getPort(ID::Y);
  const RTLIL::SigSpec chosen = module->addWire(NEW_ID, output.size());
  cell->setPort(ID::Y, chosen);
  for (int i = 0; i < output.size(); ++i) {
    module->addXorGate(NEW_ID, chosen[i], nothing, output[i]);
  }
}

// equiv_make takes all undefined constants for one value, that of a net that is connected to one. A
// net without a driver is undefined as well, and no other net is.
void part_undefined_nets(RTLIL::Module* module) {
  std::vector<RTLIL::SigSig> connections = module->connections();
  for (RTLIL::SigSig& connection : connections) {
    for (SigBit& bit : connection.second) {
      if (is_undefined(bit)) {
        bit = module->addWire(NEW_ID);
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
      open_selects(cell);
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

}  // namespace kpt_yosys
