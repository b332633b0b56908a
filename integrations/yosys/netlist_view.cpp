#include "netlist_view.h"

#include <algorithm>
#include <set>

namespace kpt_yosys {

RTLIL::Module* submodule(const RTLIL::Cell& cell) {
  if (!is_public(cell.type) && std::string_view(cell.type.c_str()).find("$paramod") != 0) {
    return nullptr;
  }
  RTLIL::Module* const module = cell.module->design->module(cell.type);
  return module != nullptr && !module->get_blackbox_attribute() ? module : nullptr;
}

namespace {

bool has_processes_below(RTLIL::Module* module, std::set<const RTLIL::Module*>& seen) {
  if (!module->processes.empty()) {
    return true;
  }
  for (const auto& [name, cell] : module->cells_) {
    RTLIL::Module* const below = submodule(*cell);
    if (below != nullptr && seen.insert(below).second && has_processes_below(below, seen)) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool has_processes(RTLIL::Module* top) {
  std::set<const RTLIL::Module*> seen{top};
  return has_processes_below(top, seen);
}

NETLIST_VIEW::NETLIST_VIEW(RTLIL::Module* top, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked) {
  std::vector<const RTLIL::Module*> above;
  add(top, "", technology, asked, above);
}

void NETLIST_VIEW::add(RTLIL::Module* module, const std::string& path, const TECHNOLOGY& technology,
                       const WIRE_NUMBERS& asked, std::vector<const RTLIL::Module*>& above) {
  std::shared_ptr<MODULE_VIEW>& view = m_modules[module->hashidx_];
  if (view == nullptr) {
    view = std::make_shared<MODULE_VIEW>(module, technology, asked);
  }
  m_by_path.emplace(path, static_cast<int>(m_instances.size()));
  m_instances.push_back({path, view});
  above.push_back(module);
  for (const auto& [name, cell] : module->cells_) {
    RTLIL::Module* const below = submodule(*cell);
    // Before parameters are known, a module may seem to contain itself.
    if (below != nullptr && std::find(above.begin(), above.end(), below) == above.end()) {
      add(below, path + text_of(cell->name) + ".", technology, asked, above);
    }
  }
  above.pop_back();
}

const FLOP& NETLIST_VIEW::flop(const LOCATION& location) const {
  return module(location.m_instance).flops()[static_cast<std::size_t>(location.m_flop)];
}

WIRE_NUMBERS NETLIST_VIEW::wires() const {
  WIRE_NUMBERS numbers;
  for (const auto& [number, module] : m_modules) {
    for (const FLOP& flop : module->flops()) {
      for (const NET& net : flop.m_nets) {
        numbers.insert(net.m_wire);
      }
      for (const NET& net : flop.m_inverted) {
        numbers.insert(net.m_wire);
      }
      numbers.insert(flop.m_uninverted_data.m_wire);
    }
  }
  return numbers;
}

bool NETLIST_VIEW::bears(const LOCATION& location, const std::string& name) const {
  const MODULE_VIEW& module_of = module(location.m_instance);
  for (const NET& net : flop(location).m_nets) {
    const RTLIL::Wire* const wire = module_of.wire(net.m_wire);
    if (wire != nullptr && path(location.m_instance) + text_of(*wire, net.m_bit) == name) {
      return true;
    }
  }
  return false;
}

int NETLIST_VIEW::instance(const std::string& path) const {
  const auto found = m_by_path.find(path);
  return found != m_by_path.end() ? found->second : -1;
}

NETLIST_VIEW::PLACE NETLIST_VIEW::find(const std::string& name) const {
  index_names();
  const auto found = m_by_name.find(name);
  return found != m_by_name.end() ? found->second : PLACE{};
}

void NETLIST_VIEW::index_names() const {
  if (!m_by_name.empty()) {
    return;
  }
  for (std::size_t i = 0; i < m_instances.size(); ++i) {
    for (const auto& [id, wire] : m_instances[i].m_module->module()->wires_) {
      for (int bit = 0; bit < wire->width; ++bit) {
        const PLACE place{static_cast<int>(i), RTLIL::SigBit(wire, bit)};
        if (const auto [entry, is_new] = m_by_name.emplace(m_instances[i].m_path + text_of(*wire, bit), place);
            !is_new) {
          entry->second = PLACE{};
        }
      }
    }
  }
}

void NETLIST_VIEW::note_readers() const {
  for (const auto& [number, module] : m_modules) {
    if (!module->has_readers_noted()) {
      module->note_readers();
    }
  }
}

int NETLIST_VIEW::count_readers(const LOCATION& location) const {
  const MODULE_VIEW& module_of = module(location.m_instance);
  return module_of.has_readers_noted() ? module_of.count_readers(location.m_flop) : -1;
}

}  // namespace kpt_yosys
