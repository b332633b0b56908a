// State machines are taken out of the netlist (fsm_extract), re-encoded
// (fsm_recode), and put back as new registers (fsm_map).
#include <algorithm>
#include <cstring>
#include <set>

#include "pass_kinds.h"
#include "passes/fsm/fsmdata.h"
#include "tracker.h"
#include "yosys_version.h"

namespace kpt_yosys {

namespace {

constexpr const char* MACHINE_TYPE = "$fsm";
constexpr const char* OLD_STATE = "$fsm$oldstate";

bool is_machine(const RTLIL::Cell& cell) { return std::strcmp(cell.type.c_str(), MACHINE_TYPE) == 0; }

// The codes in the registers: a bit that a one-hot code leaves open is 0.
std::vector<std::string> codes_of(RTLIL::Cell* cell) {
  Yosys::FsmData data;
  data.copy_from_cell(cell);
  std::vector<std::string> codes;
  for (const RTLIL::Const& state : data.state_table) {
    std::string code;
    for (int i = 0; i < state.size(); ++i) {
      code += bit_of(state, i) == RTLIL::State::S1 ? '1' : '0';
    }
    codes.push_back(std::move(code));
  }
  return codes;
}

RTLIL::Wire* wire_called(const RTLIL::Module& module, const std::string& name) {
  for (const auto& [id, wire] : module.wires_) {
    if (name == id.c_str()) {
      return wire;
    }
  }
  return nullptr;
}

RTLIL::Cell* cell_of(const MACHINE& machine, const RTLIL::Module& module) {
  for (const auto& [id, cell] : module.cells_) {
    if (cell->hashidx_ == machine.m_cell) {
      return cell;
    }
  }
  return nullptr;
}

// The copy of the cell in a design that was saved and came back.
unsigned int number_of_copy(const MACHINE& machine, const RTLIL::Module& module) {
  for (const auto& [id, cell] : module.cells_) {
    if (machine.m_cell_name == id.c_str() && is_machine(*cell)) {
      return cell->hashidx_;
    }
  }
  return machine.m_cell;
}

// Keeps the states that remain, in their order.
void keep_states(MACHINE& machine, const std::vector<std::string>& left) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < machine.m_codes.size(); ++i) {
    if (std::find(left.begin(), left.end(), machine.m_codes[i]) != left.end()) {
      machine.m_codes[kept] = machine.m_codes[i];
      machine.m_old_codes[kept] = machine.m_old_codes[i];
      ++kept;
    }
  }
  machine.m_codes.resize(kept);
  machine.m_old_codes.resize(kept);
}

// The position of the first code with these bits; the number of codes when there is none.
std::size_t row_with(const std::vector<std::string>& codes, const std::map<int, bool>& bits) {
  const auto agrees = [&bits](const std::string& code) {
    return std::all_of(bits.begin(), bits.end(), [&code](const auto& bit) {
      return (code[static_cast<std::size_t>(bit.first)] == '1') == bit.second;
    });
  };
  return static_cast<std::size_t>(std::find_if(codes.begin(), codes.end(), agrees) - codes.begin());
}

// Whether a net may be the new state of a machine: it has the machine's name, or that name with a number after it.
bool bears_name(const RTLIL::Wire& wire, const MACHINE& machine) {
  const std::string_view name = wire.name.c_str();
  if (!name.starts_with(machine.m_name)) {
    return false;
  }
  const std::string_view rest = name.substr(machine.m_name.size());
  return rest.empty() ||
         (rest.front() == '_' && rest.size() > 1 && rest.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

// The registers of the new state, one for each bit of its code; -1 where there is none.
std::vector<int> find_new_state(const MODULE_VIEW& module, const std::set<unsigned int>& old_cells,
                                const MACHINE& machine, std::size_t width) {
  std::vector<int> bits(width, -1);
  for (std::size_t i = 0; i < module.flops().size(); ++i) {
    const FLOP& flop = module.flops()[i];
    for (const NET& net : flop.m_nets) {
      const RTLIL::Wire* const wire = module.wire(net.m_wire);
      if (!old_cells.contains(flop.m_cell) && wire != nullptr && wire->width == static_cast<int>(width) &&
          bears_name(*wire, machine)) {
        bits[static_cast<std::size_t>(net.m_bit)] = static_cast<int>(i);
      }
    }
  }
  return bits;
}

}  // namespace

void TRACKER::find_machines(const STEP& step) {
  if (step.m_pass != "fsm_extract") {
    return;
  }
  for (std::size_t i = 0; i < step.m_after.instances().size(); ++i) {
    const int instance = static_cast<int>(i);
    for (const auto& [name, cell] : step.m_after.module(instance).module()->cells_) {
      if (is_machine(*cell)) {
        add_machine(step, instance, cell);
      }
    }
  }
}

// The registers stay in the netlist on a renamed net until nothing reads them.
void TRACKER::add_machine(const STEP& step, int instance, RTLIL::Cell* cell) {
  const std::string& path = step.m_after.path(instance);
  const auto same = [&](const MACHINE& machine) { return machine.m_cell == cell->hashidx_ && machine.m_path == path; };
  const std::string name = cell->getParam(Yosys::ID::NAME).decode_string();
  const MODULE_VIEW& module = step.m_after.module(instance);
  RTLIL::Wire* const old_state = wire_called(*module.module(), OLD_STATE + name);
  if (old_state == nullptr || std::any_of(m_now.m_machines.begin(), m_now.m_machines.end(), same)) {
    return;
  }
  const int index = static_cast<int>(m_now.m_machines.size());
  for (int bit = 0; bit < old_state->width; ++bit) {
    const SOURCE source = module.source(RTLIL::SigBit(old_state, bit));
    for (POINT& point : m_now.m_points) {
      if (source.m_kind == SOURCE_KIND::FLOP && point.m_fate == FATE::LIVE &&
          point.m_location == LOCATION{instance, source.m_flop}) {
        point.m_machine = index;
        point.m_column = bit;
        point.m_column_inverted = point.m_inverted != source.m_inverted;
      }
    }
  }
  MACHINE machine;
  machine.m_path = path;
  machine.m_name = name;
  machine.m_cell_name = cell->name.c_str();
  machine.m_cell = cell->hashidx_;
  machine.m_codes = codes_of(cell);
  machine.m_old_codes = machine.m_codes;
  m_now.m_machines.push_back(std::move(machine));
}

void TRACKER::follow_machine(const STEP& step, int index) {
  MACHINE& machine = m_now.m_machines[static_cast<std::size_t>(index)];
  if (machine.m_mapped) {
    return;
  }
  const int instance = step.m_after.instance(machine.m_path);
  if (instance >= 0 && step.m_pass == "design") {
    machine.m_cell = number_of_copy(machine, *step.m_after.module(instance).module());
  }
  RTLIL::Cell* const cell = instance >= 0 ? cell_of(machine, *step.m_after.module(instance).module()) : nullptr;
  if (cell != nullptr) {
    machine.m_cell_name = cell->name.c_str();
  }
  if (cell == nullptr && instance >= 0 && step.m_pass == "fsm_map") {
    map_machine(step, index, instance);
  } else if (cell == nullptr) {
    drop_machine(step, index);
  } else if (step.m_pass == "fsm_recode") {
    machine.m_codes = codes_of(cell);
  } else {
    keep_states(machine, codes_of(cell));
  }
}

void TRACKER::map_machine(const STEP& step, int index, int instance) {
  MACHINE& machine = m_now.m_machines[static_cast<std::size_t>(index)];
  std::set<unsigned int> old_cells;
  if (const int before = step.m_before.instance(machine.m_path); before >= 0) {
    for (const FLOP& flop : step.m_before.module(before).flops()) {
      old_cells.insert(flop.m_cell);
    }
  }
  const std::size_t width = machine.m_codes.empty() ? 0 : machine.m_codes.front().size();
  const std::vector<int> bits = find_new_state(step.m_after.module(instance), old_cells, machine, width);
  if (bits.empty() || std::find(bits.begin(), bits.end(), -1) != bits.end()) {
    drop_machine(step, index);
    return;
  }
  machine.m_mapped = true;
  for (const int flop : bits) {
    POINT point;
    point.m_location = {instance, flop};
    point.m_cell = step.m_after.flop(point.m_location).m_cell;
    point.m_pass = step.m_pass;
    machine.m_points.push_back(static_cast<int>(m_now.m_points.size()));
    m_now.m_points.push_back(std::move(point));
  }
  for (MACHINE& earlier : m_now.m_machines) {
    if (&earlier != &machine) {
      carry_over(earlier, index);
    }
  }
}

// A machine that was re-encoded a second time: the earlier machine now has the later code.
void TRACKER::carry_over(MACHINE& earlier, int index) {
  const MACHINE& later = m_now.m_machines[static_cast<std::size_t>(index)];
  const auto went_in = [&](int point) {
    const POINT& bit = m_now.m_points[static_cast<std::size_t>(point)];
    return bit.m_fate == FATE::IN_MACHINE && bit.m_machine == index;
  };
  if (std::none_of(earlier.m_points.begin(), earlier.m_points.end(), went_in)) {
    return;
  }
  MACHINE carried = earlier;
  carried.m_codes.clear();
  carried.m_old_codes.clear();
  for (std::size_t state = 0; state < earlier.m_codes.size(); ++state) {
    std::string left;
    std::map<int, bool> wanted;  // by column of the later machine
    for (std::size_t k = 0; k < earlier.m_points.size(); ++k) {
      const POINT& bit = m_now.m_points[static_cast<std::size_t>(earlier.m_points[k])];
      if (went_in(earlier.m_points[k])) {
        wanted[bit.m_column] = (earlier.m_codes[state][k] == '1') != bit.m_column_inverted;
      } else {
        left += earlier.m_codes[state][k];
      }
    }
    const std::size_t row = row_with(later.m_old_codes, wanted);
    if (row < later.m_codes.size()) {  // otherwise the machine never gets there
      carried.m_codes.push_back(left + later.m_codes[row]);
      carried.m_old_codes.push_back(earlier.m_old_codes[state]);
    }
  }
  std::erase_if(carried.m_points, went_in);
  carried.m_points.insert(carried.m_points.end(), later.m_points.begin(), later.m_points.end());
  earlier = std::move(carried);
}

std::string TRACKER::refuse_machine(int machine) {
  for (std::size_t i = 0; i < m_now.m_points.size(); ++i) {
    if (m_now.m_points[i].m_machine == machine && m_now.m_points[i].m_fate == FATE::IN_MACHINE) {
      m_now.m_points[i].m_machine = -1;
      m_now.m_points[i].m_pass = "fsm_map";
      refuse(static_cast<int>(i));
    }
  }
  return "fsm_map";
}

// The machine is gone with its registers: it drove nothing, or the reason is unknown.
void TRACKER::drop_machine(const STEP& step, int index) {
  const bool unused = removes_unused(step.m_pass);
  for (POINT& point : m_now.m_points) {
    if (point.m_machine != index) {
      continue;
    }
    point.m_machine = -1;
    if (point.m_fate == FATE::IN_MACHINE) {
      point.m_fate = unused ? FATE::NO_FANOUT : FATE::UNKNOWN;
      point.m_pass = step.m_pass;
    }
  }
  m_now.m_machines[static_cast<std::size_t>(index)].m_mapped = true;  // nothing remains to follow
}

}  // namespace kpt_yosys
