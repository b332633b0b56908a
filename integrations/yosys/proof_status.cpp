#include "proof_status.h"

#include <algorithm>
#include <map>

#include "module_view.h"
#include "proof.h"
#include "yosys_version.h"

namespace kpt_yosys {

namespace {

using State = RTLIL::State;

// One value that is compared: the names of its nets, and the bit in them.
struct COMPARED {
  std::string m_name;
  int m_bit = 0;
};

class STATUS_READER {
 public:
  STATUS_READER(const KPT_KEYPOINTS_DB& db, RTLIL::Module* equiv) : m_db(db), m_view(equiv, {}, {}) {
    read_cells();
    read_initial_values();
  }
  PROOF_STATUS run();

 private:
  enum class OUTCOME { ABSENT, OPEN, PROVEN };

  void read_cells();
  void read_initial_values();
  void settle(const KPT_REGISTER_TRANSFORMATION& map);
  std::vector<COMPARED> compared(const KPT_REGISTER_TRANSFORMATION& map) const;
  OUTCOME outcome(const std::vector<COMPARED>& all) const;
  bool starts_otherwise(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<COMPARED>& all) const;
  bool machine_starts_otherwise(const KPT_REGISTER_TRANSFORMATION& map, const std::string& name) const;
  State initial(const COMPARED& value, const char* side) const;
  RTLIL::Wire* wire(const std::string& name) const;

  const KPT_KEYPOINTS_DB& m_db;
  MODULE_VIEW m_view;
  Yosys::dict<RTLIL::SigBit, bool> m_cells;  // by output: whether it is proven
  Yosys::dict<RTLIL::SigBit, State> m_initial;
  PROOF_STATUS m_status;
};

// A cell is proven when both of its inputs are one net.
void STATUS_READER::read_cells() {
  for (const auto& [name, cell] : m_view.module()->cells_) {
    if (cell->type == Yosys::RTLIL::IdString("$equiv")) {
      const bool proven = cell->getPort(Yosys::ID::A) == cell->getPort(Yosys::ID::B);
      m_cells[m_view.canonical(cell->getPort(Yosys::ID::Y)[0])] = proven;
      m_status.m_unproven_cells += proven ? 0 : 1;
    }
  }
}

void STATUS_READER::read_initial_values() {
  for (const auto& [name, wire] : m_view.module()->wires_) {
    const auto init = wire->attributes.find(Yosys::ID::init);
    for (int i = 0; init != wire->attributes.end() && i < wire->width && i < init->second.size(); ++i) {
      if (bit_of(init->second, i) == State::S0 || bit_of(init->second, i) == State::S1) {
        m_initial[m_view.canonical(RTLIL::SigBit(wire, i))] = bit_of(init->second, i);
      }
    }
  }
}

RTLIL::Wire* STATUS_READER::wire(const std::string& name) const {
  return m_view.module()->wire(RTLIL::IdString("\\" + name));
}

PROOF_STATUS STATUS_READER::run() {
  for (const KPT_REGISTER_TRANSFORMATION& map : m_db.get_transformation_set().get_list_of_register_transformations()) {
    settle(map);
  }
  return std::move(m_status);
}

void STATUS_READER::settle(const KPT_REGISTER_TRANSFORMATION& map) {
  const std::vector<COMPARED> all = compared(map);
  const OUTCOME found = outcome(all);
  if (found == OUTCOME::ABSENT) {
    ++m_status.m_absent;
    return;
  }
  const std::string first(map.get_reference(0).get_name());
  map.remove_attribute("note");
  if (starts_otherwise(map, all)) {
    map.add_attribute("status", "refuted");
    map.add_attribute("note", "power-up values differ");
    m_status.m_refuted.push_back(first);
    return;
  }
  if (m_status.m_unproven_cells == 0) {
    map.add_attribute("status", "proved");
    ++m_status.m_proved;
    return;
  }
  // The proof of one cell assumes that the others hold.
  map.add_attribute("status", "claimed");
  map.add_attribute("note", found == OUTCOME::OPEN ? "unproven" : "proven if what is unproven holds");
  ++m_status.m_claimed;
  if (found == OUTCOME::OPEN) {
    m_status.m_open.push_back(first);
  }
}

std::vector<COMPARED> STATUS_READER::compared(const KPT_REGISTER_TRANSFORMATION& map) const {
  std::vector<COMPARED> all;
  if (map.has_fsm()) {
    for (unsigned short i = 0; i < map.get_state_reference_size(); ++i) {
      const std::string first(map.get_reference(i).get_name());
      const std::string name = net_of_machine(first);
      const RTLIL::Wire* const code = map.get_reference(i).is_null() ? nullptr : wire(name);
      if (code != nullptr && code->width != map.get_state_reference_size()) {
        return {};  // the gold module lacks some of its registers
      }
      for (int bit = 0; code != nullptr && bit < code->width; ++bit) {
        all.push_back({name, bit});
      }
      if (code != nullptr) {
        all.push_back({net_of_code(first), 0});
      }
    }
    return all;
  }
  for (const bool inverted : {false, true}) {
    for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_reference_group(0, inverted)) {
      if (!keypoint.is_null()) {
        all.push_back({net_of_register(std::string(keypoint.get_name())), 0});
      }
    }
  }
  return all;
}

STATUS_READER::OUTCOME STATUS_READER::outcome(const std::vector<COMPARED>& all) const {
  OUTCOME outcome = all.empty() ? OUTCOME::ABSENT : OUTCOME::PROVEN;
  for (const COMPARED& value : all) {
    RTLIL::Wire* const net = wire(value.m_name);
    const auto cell = net != nullptr ? m_cells.find(m_view.canonical(RTLIL::SigBit(net, value.m_bit))) : m_cells.end();
    if (cell == m_cells.end()) {
      return OUTCOME::ABSENT;
    }
    outcome = cell->second ? outcome : OUTCOME::OPEN;
  }
  return outcome;
}

// The power-up value on one side; Sx when it is open.
State STATUS_READER::initial(const COMPARED& value, const char* side) const {
  RTLIL::Wire* const net = wire(value.m_name + side);
  if (net == nullptr || value.m_bit >= net->width) {
    return State::Sx;
  }
  const SOURCE source = m_view.source(RTLIL::SigBit(net, value.m_bit));
  if (source.m_kind == SOURCE_KIND::ZERO || source.m_kind == SOURCE_KIND::ONE) {
    return source.m_kind == SOURCE_KIND::ONE ? State::S1 : State::S0;
  }
  if (source.m_kind != SOURCE_KIND::FLOP) {
    return State::Sx;
  }
  const FLOP& flop = m_view.flops()[static_cast<std::size_t>(source.m_flop)];
  const auto found = m_initial.find(m_view.canonical(flop.m_output));
  if (found == m_initial.end()) {
    return State::Sx;
  }
  return (found->second == State::S1) != source.m_inverted ? State::S1 : State::S0;
}

// Such a map fails at power-up, which a proof by induction does not check.
bool STATUS_READER::starts_otherwise(const KPT_REGISTER_TRANSFORMATION& map, const std::vector<COMPARED>& all) const {
  if (map.has_fsm()) {
    return machine_starts_otherwise(map, all.front().m_name);
  }
  return std::any_of(all.begin(), all.end(), [&](const COMPARED& value) {
    const State gold = initial(value, "_gold");
    const State gate = initial(value, "_gate");
    return gold != State::Sx && gate != State::Sx && gold != gate;
  });
}

// The reference is in a state of the codes, and the netlist is in no matching state.
bool STATUS_READER::machine_starts_otherwise(const KPT_REGISTER_TRANSFORMATION& map, const std::string& name) const {
  const KPT_STATE_TABLE table = map.get_state_table();
  const auto fits = [&](unsigned short row, bool reference) {
    const auto size = reference ? map.get_state_reference_size() : map.get_state_transformed_size();
    for (unsigned short column = 1; column <= size; ++column) {
      const State is = initial({name, column - 1}, reference ? "_gold" : "_gate");
      const int entry = reference ? table.get_reference_entry(row, column) : table.get_transformed_entry(row, column);
      if (is != State::Sx && (is == State::S1) != (entry == 1)) {
        return false;
      }
    }
    return true;
  };
  bool in_code = false;
  for (unsigned short row = 1; row <= table.get_number_of_states(); ++row) {
    if (fits(row, true)) {
      in_code = true;
      if (fits(row, false)) {
        return false;
      }
    }
  }
  return in_code;
}

}  // namespace

PROOF_STATUS read_proof_status(const KPT_KEYPOINTS_DB& db, RTLIL::Module* equiv) {
  return STATUS_READER(db, equiv).run();
}

}  // namespace kpt_yosys
