#include "lasting_names.h"

#include <algorithm>
#include <set>

namespace kpt_yosys {

namespace {

std::set<LOCATION> registers_of(const TRACKER& tracker) {
  std::set<LOCATION> locations;
  for (const POINT& point : tracker.points()) {
    if (point.m_fate == FATE::LIVE) {
      locations.insert(point.m_location);
    }
  }
  return locations;
}

// The wire from which the register has its name.
RTLIL::Wire* naming_wire(const MODULE_VIEW& module, const FLOP& flop) {
  for (const NET& net : flop.m_nets) {
    RTLIL::Wire* const wire = module.wire(net.m_wire);
    if (wire != nullptr && text_of(*wire, net.m_bit) == flop.m_name) {
      return wire;
    }
  }
  return nullptr;
}

RTLIL::IdString free_name(RTLIL::Module& module, int& number) {
  for (;; ++number) {
    RTLIL::IdString name("\\_kpt_" + std::to_string(number) + "_");
    if (module.count_id(name) == 0) {
      return name;
    }
  }
}

// For a technology cell the name of the cell counts, for all others that of the net.
bool is_private(const MODULE_VIEW& module, const FLOP& flop) {
  if (!flop.m_type.empty()) {
    return flop.m_cell_name.starts_with('$');
  }
  const RTLIL::Wire* const wire = naming_wire(module, flop);
  return wire != nullptr && !is_public(wire->name);
}

void rename_cell(RTLIL::Module* module, const FLOP& flop, int& number) {
  for (const auto& [name, cell] : module->cells_) {
    if (cell->hashidx_ == flop.m_cell) {
      module->rename(cell, free_name(*module, number));
      return;
    }
  }
}

}  // namespace

std::size_t count_private_names(const TRACKER& tracker) {
  const std::set<LOCATION> registers = registers_of(tracker);
  return static_cast<std::size_t>(std::count_if(registers.begin(), registers.end(), [&](const LOCATION& location) {
    return is_private(tracker.view().module(location.m_instance), tracker.view().flop(location));
  }));
}

void give_lasting_names(const TRACKER& tracker) {
  int number = 1;
  std::set<unsigned int> renamed;  // a wire may hold many registers, and a module may have many instances
  for (const LOCATION& location : registers_of(tracker)) {
    const MODULE_VIEW& module = tracker.view().module(location.m_instance);
    const FLOP& flop = tracker.view().flop(location);
    RTLIL::Wire* const wire = naming_wire(module, flop);
    if (!flop.m_type.empty()) {
      if (flop.m_cell_name.starts_with('$') && renamed.insert(flop.m_cell).second) {
        rename_cell(module.module(), flop, number);
      }
    } else if (wire != nullptr && !is_public(wire->name) && renamed.insert(wire->hashidx_).second) {
      module.module()->rename(wire, free_name(*module.module(), number));
    }
  }
}

}  // namespace kpt_yosys
