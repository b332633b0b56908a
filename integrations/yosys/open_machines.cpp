#include "open_machines.h"

#include <string>

#include "kernel/sigtools.h"
#include "proof.h"

namespace kpt_yosys {

namespace {

namespace ID = Yosys::ID;
namespace RTLIL = Yosys::RTLIL;
using RTLIL::SigBit;

class MACHINES {
 public:
  explicit MACHINES(RTLIL::Module* equiv);
  std::vector<OPEN_MACHINE> find();

 private:
  bool find_machine(const std::string& first, OPEN_MACHINE& machine) const;
  bool read_the_state_itself(const std::string& first, const OPEN_MACHINE& machine);
  RTLIL::Cell* comparison(SigBit compared) const;
  RTLIL::Cell* driver(SigBit bit) const;
  RTLIL::Wire* wire(const std::string& name) const { return m_module->wire(RTLIL::IdString("\\" + name)); }

  RTLIL::Module* m_module;
  Yosys::SigMap m_sigmap;
  Yosys::dict<SigBit, RTLIL::Cell*> m_drivers;
};

MACHINES::MACHINES(RTLIL::Module* equiv) : m_module(equiv), m_sigmap(equiv) {
  for (const auto& [name, cell] : equiv->cells_) {
    for (const auto& [port, signal] : cell->connections_) {
      for (const SigBit& bit : cell->output(port) ? m_sigmap(signal) : RTLIL::SigSpec()) {
        m_drivers[bit] = cell;
      }
    }
  }
}

RTLIL::Cell* MACHINES::driver(SigBit bit) const {
  const auto found = m_drivers.find(m_sigmap(bit));
  return found != m_drivers.end() ? found->second : nullptr;
}

RTLIL::Cell* MACHINES::comparison(SigBit compared) const {
  RTLIL::Cell* const cell = driver(compared);
  return cell != nullptr && cell->type == RTLIL::IdString("$equiv") ? cell : nullptr;
}

bool MACHINES::find_machine(const std::string& first, OPEN_MACHINE& machine) const {
  RTLIL::Wire* const code = wire(net_of_code(first));
  RTLIL::Wire* const state = wire(net_of_machine(first));
  if (code == nullptr || state == nullptr) {
    return false;
  }
  machine.m_code = comparison(code);
  for (int i = 0; i < state->width; ++i) {
    RTLIL::Cell* const bit = comparison(SigBit(state, i));
    const RTLIL::Cell* const held = bit != nullptr ? driver(bit->getPort(ID::A)) : nullptr;
    if (held == nullptr || RTLIL::builtin_ff_cell_types().count(held->type) == 0) {
      return false;
    }
    machine.m_states.push_back(bit);
  }
  return machine.m_code != nullptr;
}

// equiv_make gives the netlist's readers a code for the state of the gold module. When there is
// none, it gives them undefined values.
bool MACHINES::read_the_state_itself(const std::string& first, const OPEN_MACHINE& machine) {
  RTLIL::Wire* const read = wire(net_of_machine(first) + "_encoded");
  RTLIL::Wire* const held = wire(net_of_machine(first) + "_gate");
  RTLIL::Cell* const encoder = read != nullptr && held != nullptr ? driver(SigBit(read, 0)) : nullptr;
  if (encoder == nullptr || encoder->getPort(ID::Y) != RTLIL::SigSpec(read)) {
    return false;
  }
  RTLIL::Wire* const encoded = m_module->addWire(NEW_ID, read->width);
  encoder->setPort(ID::Y, encoded);
  m_module->addMux(NEW_ID, held, encoded, machine.m_code->getPort(ID::B), read);
  return true;
}

std::vector<OPEN_MACHINE> MACHINES::find() {
  const std::string prefix = "\\" + net_of_code("");
  std::vector<OPEN_MACHINE> machines;
  for (const RTLIL::Wire* const code : m_module->wires().to_vector()) {
    const std::string name = code->name.str();
    const std::string first = name.starts_with(prefix) ? name.substr(prefix.size()) : "";
    OPEN_MACHINE machine;
    if (!first.empty() && find_machine(first, machine) && read_the_state_itself(first, machine)) {
      machines.push_back(machine);
    }
  }
  return machines;
}

}  // namespace

std::vector<OPEN_MACHINE> find_open_machines(RTLIL::Module* equiv) { return MACHINES(equiv).find(); }

}  // namespace kpt_yosys
