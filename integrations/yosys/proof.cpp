#include "proof.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "kernel/ffinit.h"
#include "kernel/sigtools.h"
#include "netlist_names.h"
#include "register_copies.h"

namespace kpt_yosys {

namespace {

std::string to_string(const KPT_STRING& text) { return {text.data(), text.size()}; }

// The nets of a module by their names in a database, and their drivers.
class NETS {
 public:
  explicit NETS(RTLIL::Module* module) : m_module(module), m_sigmap(module), m_initial(&m_sigmap, module) {
    for (const auto& [name, wire] : module->wires_) {
      for (int bit = 0; bit < wire->width; ++bit) {
        m_bits.emplace(text_of(*wire, bit), RTLIL::SigBit(wire, bit));
      }
    }
    for (const auto& [name, cell] : module->cells_) {
      add_cell(cell);
    }
  }

  RTLIL::Module* module() const { return m_module; }

  /// False when the module has no such net. A pin of a cell is found by its net
  /// or, when the cell was flattened, by the net that is named after the pin.
  bool find(const KPT_REGISTER_KEYPOINT& keypoint, RTLIL::SigBit& bit) const {
    if (keypoint.is_null()) {
      return false;
    }
    const std::string name = to_string(keypoint.get_name());
    return find(keypoint.is_signal() ? name : name + "." + to_string(keypoint.get_type()), bit);
  }

  /// `to` powers up as `from` did, which loses its power-up value.
  void move_power_up_value(RTLIL::SigBit from, RTLIL::SigBit to) {
    const RTLIL::State value = m_initial(from);
    m_initial.remove_init(from);
    if (value != RTLIL::State::Sx) {
      m_initial.set_init(to, value);
    }
  }

  struct DRIVER {
    RTLIL::Cell* m_cell = nullptr;
    RTLIL::IdString m_port;
    int m_index = 0;
  };

  /// The flip-flop that drives the net; no cell when something else drives it.
  DRIVER register_of(RTLIL::SigBit bit) const {
    const auto found = m_registers.find(m_sigmap(bit));
    return found != m_registers.end() ? found->second : DRIVER{};
  }

 private:
  bool find(const std::string& name, RTLIL::SigBit& bit) const {
    const auto found = m_bits.find(name);
    if (found == m_bits.end()) {
      return false;
    }
    bit = found->second;
    return true;
  }

  void add_cell(RTLIL::Cell* cell) {
    const bool is_known = cell->type.c_str()[0] == '$';
    for (const auto& [port, signal] : cell->connections_) {
      int index = 0;
      for (const RTLIL::SigBit& bit : signal) {
        if (!is_known && bit.wire != nullptr) {
          m_bits.emplace(text_of(cell->name) + "." + text_of(port), bit);
        }
        if (is_known && port == Yosys::ID::Q) {
          m_registers[m_sigmap(bit)] = {cell, port, index};
        }
        ++index;
      }
    }
  }

  RTLIL::Module* m_module;
  Yosys::SigMap m_sigmap;
  Yosys::FfInitVals m_initial;
  std::unordered_map<std::string, RTLIL::SigBit> m_bits;
  Yosys::dict<RTLIL::SigBit, DRIVER> m_registers;
};

class PROOF {
 public:
  PROOF(const KPT_KEYPOINTS_DB& db, RTLIL::Module* gold, RTLIL::Module* gate, std::ostream& codes)
      : m_db(db), m_gold(gold), m_gate(gate), m_codes(codes) {}
  PROOF_SUMMARY run();

 private:
  // A register of the gold module and whether it holds the inverse of the map's representative.
  struct MEMBER {
    std::string m_name;
    RTLIL::SigBit m_bit;
    bool m_inverted = false;
  };

  void apply(const KPT_REGISTER_TRANSFORMATION& map);
  std::vector<MEMBER> reference_members(const KPT_REGISTER_TRANSFORMATION& map, unsigned short index);
  void add_member(std::vector<MEMBER>& members, const KPT_REGISTER_KEYPOINT& keypoint, bool inverted);
  void apply_constant(const std::vector<MEMBER>& members, bool value);
  void apply_plain(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<MEMBER>& members);
  static void take_over(NETS& nets, RTLIL::SigBit bit, RTLIL::SigBit driven, bool inverted);
  void apply_machine(const KPT_REGISTER_TRANSFORMATION& map);
  void apply_machine_bits(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<unsigned short>& r,
                          const std::vector<unsigned short>& t, const std::map<std::string, std::string>& codes);
  void demand_code(const std::string& name, const RTLIL::SigSpec& held, const std::vector<std::string>& codes);
  RTLIL::Wire* shared_wire(const NETS& nets, const std::string& name, int width);
  RTLIL::Wire* tie_gold(const MEMBER& member);
  void take(RTLIL::SigBit gate_bit);
  void add_copies();
  void add_copy(const REGISTER_BIT& copy, const REGISTER_BIT& original);
  void miss(const NETS& nets, const char* what, const std::string& name);
  void hide_names();
  static void drop_messages(RTLIL::Module* module);
  static void part_outputs(RTLIL::Module* module);
  static void part_output(RTLIL::Module* module, RTLIL::Wire* wire);

  const KPT_KEYPOINTS_DB& m_db;
  NETS m_gold;
  NETS m_gate;
  std::ostream& m_codes;
  std::set<RTLIL::Wire*> m_known;  // wires of the gold module that the database explains
  std::set<REGISTER_BIT> m_taken;  // registers of the gate module that the database explains
  // Of those that are one register of the gold module each: its net there, and whether they hold the inverse.
  std::map<REGISTER_BIT, std::pair<RTLIL::Wire*, bool>> m_originals;
  PROOF_SUMMARY m_summary;
};

// What prints and checks is no part of what is compared, and async2sync does not know it with several triggers.
void PROOF::drop_messages(RTLIL::Module* module) {
  for (RTLIL::Cell* const cell : std::vector<RTLIL::Cell*>(module->cells())) {
    if (const std::string type = cell->type.c_str(); type == "$print" || type == "$check") {
      module->remove(cell);
    }
  }
}

PROOF_SUMMARY PROOF::run() {
  drop_messages(m_gold.module());
  drop_messages(m_gate.module());
  for (const KPT_REGISTER_TRANSFORMATION& map : m_db.get_transformation_set().get_list_of_register_transformations()) {
    apply(map);
  }
  add_copies();
  hide_names();
  for (RTLIL::Module* const module : {m_gold.module(), m_gate.module()}) {
    part_outputs(module);
    module->fixup_ports();
  }
  return m_summary;
}

void PROOF::apply(const KPT_REGISTER_TRANSFORMATION& map) {
  if (map.has_fsm()) {
    apply_machine(map);
    return;
  }
  const std::vector<MEMBER> members = reference_members(map, 0);
  if (members.empty()) {
    return;
  }
  if (map.is_stuck_at_zero() || map.is_stuck_at_one()) {
    apply_constant(members, map.is_stuck_at_one());
  } else if (map.has_no_fanout()) {
    m_summary.m_no_fanout += members.size();
  } else {
    apply_plain(map, members);
  }
}

void PROOF::add_member(std::vector<MEMBER>& members, const KPT_REGISTER_KEYPOINT& keypoint, bool inverted) {
  MEMBER member;
  member.m_inverted = inverted;
  if (keypoint.is_null()) {
    return;
  }
  member.m_name = to_string(keypoint.get_name());
  if (m_gold.find(keypoint, member.m_bit)) {
    m_known.insert(member.m_bit.wire);
    members.push_back(std::move(member));
  } else {
    miss(m_gold, "register", member.m_name);
  }
}

// A pass after flattening may have deleted it, or the database belongs to another design.
void PROOF::miss(const NETS& nets, const char* what, const std::string& name) {
  ++m_summary.m_missing;
  Yosys::log_warning("Module %s has no %s %s.\n", text_of(nets.module()->name).c_str(), what, name.c_str());
}

std::vector<PROOF::MEMBER> PROOF::reference_members(const KPT_REGISTER_TRANSFORMATION& map, unsigned short index) {
  std::vector<MEMBER> members;
  add_member(members, map.get_reference(index), false);
  for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_reference_equivalents(index)) {
    add_member(members, keypoint, false);
  }
  for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_reference_inverted_equivalents(index)) {
    add_member(members, keypoint, true);
  }
  return members;
}

RTLIL::Wire* PROOF::shared_wire(const NETS& nets, const std::string& name, int width) {
  return nets.module()->addWire(nets.module()->uniquify(RTLIL::IdString("\\" + name)), width);
}

RTLIL::Wire* PROOF::tie_gold(const MEMBER& member) {
  RTLIL::Wire* const tied = shared_wire(m_gold, net_of_register(member.m_name), 1);
  take_over(m_gold, member.m_bit, tied, false);
  return tied;
}

void PROOF::take(RTLIL::SigBit gate_bit) {
  if (const NETS::DRIVER driver = m_gate.register_of(gate_bit); driver.m_cell != nullptr) {
    m_taken.emplace(driver.m_cell, driver.m_index);
  }
}

// A cell of its own drives the gate side. If the net were connected to a
// constant, every use of this constant would count as the register.
void PROOF::apply_constant(const std::vector<MEMBER>& members, bool value) {
  for (const MEMBER& member : members) {
    tie_gold(member);
    const RTLIL::State constant = value != member.m_inverted ? RTLIL::State::S1 : RTLIL::State::S0;
    m_gate.module()->addBufGate(Yosys::RTLIL::IdString(NEW_ID), constant,
                                shared_wire(m_gate, net_of_register(member.m_name), 1));
    ++m_summary.m_constants;
  }
}

// The first register replaces the gate's own register, in the polarity of the
// gold side, so that every reader reads the shared name. The others are copies.
void PROOF::apply_plain(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<MEMBER>& members) {
  RTLIL::SigBit gate_bit;
  if (const KPT_REGISTER_KEYPOINT transformed = map.get_transformed(0); !m_gate.find(transformed, gate_bit)) {
    for (const MEMBER& member : members) {
      miss(m_gate, "net for register", member.m_name);
    }
    return;
  }
  const bool inverted = map.is_negative_unate(0, 0) != members.front().m_inverted;
  const RTLIL::SigBit first = shared_wire(m_gate, net_of_register(members.front().m_name), 1);
  const NETS::DRIVER driver = m_gate.register_of(gate_bit);
  take(gate_bit);
  take_over(m_gate, gate_bit, first, inverted);
  for (const MEMBER& member : members) {
    RTLIL::Wire* const tied = tie_gold(member);
    ++m_summary.m_registers;
    if (&member == &members.front()) {
      m_originals.emplace(REGISTER_BIT(driver.m_cell, driver.m_index), std::pair(tied, inverted));
      continue;
    }
    RTLIL::Wire* const copy = shared_wire(m_gate, net_of_register(member.m_name), 1);
    if (member.m_inverted != members.front().m_inverted) {
      m_gate.module()->addNotGate(NEW_ID, first, copy);
    } else {
      m_gate.module()->addBufGate(NEW_ID, first, copy);
    }
  }
}

// Makes the flip-flop that drives `bit` drive `driven` instead, from which `bit` gets its value,
// because equiv_make looks at the net of the driver. Without a flip-flop there is only the value. Both
// nets stay apart, because equiv_make takes all names of a net of one module for one net of the other.
void PROOF::take_over(NETS& nets, RTLIL::SigBit bit, RTLIL::SigBit driven, bool inverted) {
  RTLIL::Module* const module = nets.module();
  const NETS::DRIVER driver = nets.register_of(bit);
  if (driver.m_cell == nullptr) {
    inverted ? module->addNotGate(NEW_ID, bit, driven) : module->addBufGate(NEW_ID, bit, driven);
    return;
  }
  RTLIL::SigSpec output = driver.m_cell->getPort(driver.m_port);
  const RTLIL::SigBit before = output[driver.m_index];
  const RTLIL::SigBit held = inverted ? RTLIL::SigBit(module->addWire(NEW_ID)) : driven;
  output[driver.m_index] = held;
  driver.m_cell->setPort(driver.m_port, output);
  nets.move_power_up_value(before, held);
  if (inverted) {
    module->addNotGate(NEW_ID, held, driven);
    module->addNotGate(NEW_ID, driven, before);
  } else {
    module->addBufGate(NEW_ID, driven, before);
  }
}

// A code that two states share cannot be decoded, so such a machine is not changed.
void PROOF::apply_machine(const KPT_REGISTER_TRANSFORMATION& map) {
  RTLIL::SigBit bit;
  std::vector<unsigned short> r;
  std::vector<unsigned short> t;
  for (unsigned short i = 0; i < map.get_state_reference_size(); ++i) {
    if (m_gold.find(map.get_reference(i), bit)) {
      r.push_back(i);
      m_known.insert(bit.wire);
    } else if (!map.get_reference(i).is_null()) {
      miss(m_gold, "register", to_string(map.get_reference(i).get_name()));
    }
  }
  for (unsigned short i = 0; i < map.get_state_transformed_size(); ++i) {
    if (m_gate.find(map.get_transformed(i), bit)) {
      t.push_back(i);
    } else if (!map.get_transformed(i).is_null()) {
      miss(m_gate, "net for state bit", to_string(map.get_transformed(i).get_name()));
    }
  }
  const KPT_STATE_TABLE table = map.get_state_table();
  std::map<std::string, std::string> codes;  // by the gate's code; the highest bit comes first
  for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
    std::string gold_code;
    std::string gate_code;
    for (const unsigned short i : r) {
      gold_code.insert(0, table.get_reference_entry(row, static_cast<unsigned short>(i + 1)) == 1 ? "1" : "0");
    }
    for (const unsigned short i : t) {
      gate_code.insert(0, table.get_transformed_entry(row, static_cast<unsigned short>(i + 1)) == 1 ? "1" : "0");
    }
    if (codes.emplace(gate_code, gold_code).first->second != gold_code) {
      Yosys::log_warning(
          "Two states of a state machine have the same code in the netlist, so the proof leaves the machine out.\n");
      return;
    }
  }
  if (!r.empty() && !t.empty()) {
    apply_machine_bits(map, r, t, codes);
  }
}

void PROOF::apply_machine_bits(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<unsigned short>& r,
                               const std::vector<unsigned short>& t, const std::map<std::string, std::string>& codes) {
  const std::string name = net_of_machine(to_string(map.get_reference(r.front()).get_name()));
  ++m_summary.m_machines;
  RTLIL::Wire* const gold_code = shared_wire(m_gold, name, static_cast<int>(r.size()));
  RTLIL::Wire* const gate_code = shared_wire(m_gate, name, static_cast<int>(t.size()));
  RTLIL::SigBit bit;
  for (std::size_t i = 0; i < r.size(); ++i) {
    m_gold.find(map.get_reference(r[i]), bit);
    take_over(m_gold, bit, RTLIL::SigBit(gold_code, static_cast<int>(i)), false);
  }
  RTLIL::Wire* const held = m_gate.module()->addWire(NEW_ID, static_cast<int>(t.size()));
  for (std::size_t i = 0; i < t.size(); ++i) {
    m_gate.find(map.get_transformed(t[i]), bit);
    take(bit);
    take_over(m_gate, bit, RTLIL::SigBit(gate_code, static_cast<int>(i)), false);
    take_over(m_gate, bit, RTLIL::SigBit(held, static_cast<int>(i)), false);
  }
  std::map<std::string, std::string> encoded;  // by the gold module's code, for which equiv_make takes one code
  for (const auto& [gate_bits, gold_bits] : codes) {
    encoded.emplace(gold_bits, gate_bits);
  }
  m_codes << ".fsm " << text_of(m_gold.module()->name) << " " << name << "\n";
  std::vector<std::string> gate_codes;
  for (const auto& [gold_bits, gate_bits] : encoded) {
    m_codes << ".map " << gold_bits << " " << gate_bits << "\n";
    gate_codes.push_back(gate_bits);
  }
  demand_code(net_of_code(to_string(map.get_reference(r.front()).get_name())), held, gate_codes);
}

// equiv_make takes a code that is in no line of the file for the code of zeros, in the place of which the
// readers of the state would then get a right code. So one more value is compared: that the netlist's
// registers hold one of the codes. It reads the registers themselves and not what equiv_make puts there.
void PROOF::demand_code(const std::string& name, const RTLIL::SigSpec& held, const std::vector<std::string>& codes) {
  RTLIL::Module* const gate = m_gate.module();
  RTLIL::SigSpec holds;
  for (const std::string& code : codes) {
    RTLIL::Wire* const one = gate->addWire(NEW_ID);
    gate->addEq(NEW_ID, held, RTLIL::Const::from_string(code), one);
    holds.append(one);
  }
  gate->addReduceOr(NEW_ID, holds, shared_wire(m_gate, name, 1));
  m_gold.module()->addBufGate(NEW_ID, RTLIL::State::S1, shared_wire(m_gold, name, 1));
}

// Synthesis may copy a register, like the address of a memory, and the database does not tell. A register
// that no map names and that seems to be a copy is compared with the gold module's register.
void PROOF::add_copies() {
  RTLIL::Module* const gate = m_gate.module();
  bool any = false;
  for (const auto& [name, cell] : gate->cells_) {
    const bool is_register = RTLIL::builtin_ff_cell_types().count(cell->type) != 0;
    for (int i = 0; is_register && i < cell->getPort(Yosys::ID::Q).size(); ++i) {
      any = any || !m_taken.contains({cell, i});
    }
  }
  for (const std::vector<REGISTER_BIT>& alike :
       any ? registers_alike(gate) : std::vector<std::vector<REGISTER_BIT>>()) {
    const auto original =
        std::find_if(alike.begin(), alike.end(), [this](const REGISTER_BIT& bit) { return m_originals.contains(bit); });
    for (const REGISTER_BIT& bit : original != alike.end() ? alike : std::vector<REGISTER_BIT>()) {
      if (!m_taken.contains(bit)) {
        add_copy(bit, *original);
      }
    }
  }
}

void PROOF::add_copy(const REGISTER_BIT& copy, const REGISTER_BIT& original) {
  const auto& [gold_bit, inverted] = m_originals.at(original);
  const RTLIL::SigBit gate_bit = copy.first->getPort(Yosys::ID::Q)[copy.second];
  const std::string name = "kpt:copy:" + text_of(*gate_bit.wire, gate_bit.offset);
  m_gold.module()->addBufGate(NEW_ID, gold_bit, shared_wire(m_gold, name, 1));
  take_over(m_gate, gate_bit, shared_wire(m_gate, name, 1), inverted);
  ++m_summary.m_copies;
}

// Both modules use a common name for the same signal. When the database says what
// became of a register, its own name in the gate module may have another meaning.
void PROOF::hide_names() {
  for (const RTLIL::Wire* const known : m_known) {
    RTLIL::Wire* const same = m_gate.module()->wire(known->name);
    if (same != nullptr && same->port_id == 0) {
      m_gate.module()->rename(same, NEW_ID);
      ++m_summary.m_hidden;
    }
  }
}

// An output that shares its net with another name gets a net of its own. Otherwise equiv_make would
// take both names for one value in the other module too, where they may be different functions, and
// would compare the output with itself.
void PROOF::part_outputs(RTLIL::Module* module) {
  const Yosys::SigMap sigmap(module);
  Yosys::dict<RTLIL::SigBit, int> names;
  for (const auto& [name, wire] : module->wires_) {
    for (int i = 0; name.isPublic() && i < wire->width; ++i) {
      ++names[sigmap(RTLIL::SigBit(wire, i))];
    }
  }
  for (const RTLIL::IdString& port : std::vector<RTLIL::IdString>(module->ports)) {
    RTLIL::Wire* const wire = module->wire(port);
    bool shares = false;
    for (int i = 0; i < wire->width; ++i) {
      shares = shares || names[sigmap(RTLIL::SigBit(wire, i))] > 1;
    }
    if (shares && wire->port_output && !wire->port_input) {
      part_output(module, wire);
    }
  }
}

void PROOF::part_output(RTLIL::Module* module, RTLIL::Wire* wire) {
  const RTLIL::IdString name = wire->name;
  module->rename(wire, NEW_ID);
  RTLIL::Wire* const output = module->addWire(name, wire->width);
  output->start_offset = wire->start_offset;
  output->upto = wire->upto;
  output->port_id = wire->port_id;
  output->port_output = true;
  wire->port_id = 0;
  wire->port_output = false;
  for (int i = 0; i < wire->width; ++i) {
    module->addBufGate(NEW_ID, RTLIL::SigBit(wire, i), RTLIL::SigBit(output, i));
  }
}

}  // namespace

std::string net_of_register(const std::string& name) { return "kpt:" + name; }
std::string net_of_machine(const std::string& first) { return "kpt:machine:" + first; }
std::string net_of_code(const std::string& first) { return "kpt:code:" + first; }

PROOF_SUMMARY prepare_proof(const KPT_KEYPOINTS_DB& db, RTLIL::Module* gold, RTLIL::Module* gate, std::ostream& codes) {
  return PROOF(db, gold, gate, codes).run();
}

}  // namespace kpt_yosys
