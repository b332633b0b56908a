#include "netlist_view.h"

namespace kpt_yosys {

RTLIL::Module* submodule(const RTLIL::Cell& cell) {
  if (!is_public(cell.type) && std::string_view(cell.type.c_str()).find("$paramod") != 0) {
    return nullptr;
  }
  RTLIL::Module* const module = cell.module->design->module(cell.type);
  return module != nullptr && !module->get_blackbox_attribute() ? module : nullptr;
}

bool has_processes(RTLIL::Module* top) {
  if (!top->processes.empty()) {
    return true;
  }
  for (const auto& [name, cell] : top->cells_) {
    RTLIL::Module* const below = submodule(*cell);
    if (below != nullptr && has_processes(below)) {
      return true;
    }
  }
  return false;
}

NETLIST_VIEW::NETLIST_VIEW(RTLIL::Module* top, const TECHNOLOGY& technology) { add(top, "", technology); }

void NETLIST_VIEW::add(RTLIL::Module* module, const std::string& path, const TECHNOLOGY& technology) {
  std::shared_ptr<MODULE_VIEW>& view = m_modules[module->hashidx_];
  if (view == nullptr) {
    view = std::make_shared<MODULE_VIEW>(module, technology);
  }
  m_by_path.emplace(path, static_cast<int>(m_instances.size()));
  m_instances.push_back({path, view});
  for (const auto& [name, cell] : module->cells_) {
    if (RTLIL::Module* const below = submodule(*cell); below != nullptr) {
      add(below, path + text_of(cell->name) + ".", technology);
    }
  }
}

const FLOP& NETLIST_VIEW::flop(const LOCATION& location) const {
  return module(location.m_instance).flops()[static_cast<std::size_t>(location.m_flop)];
}

int NETLIST_VIEW::instance(const std::string& path) const {
  const auto found = m_by_path.find(path);
  return found != m_by_path.end() ? found->second : -1;
}

NETLIST_VIEW::PLACE NETLIST_VIEW::find(const std::string& name) const {
  if (m_by_name.empty()) {
    index_names();
  }
  const auto found = m_by_name.find(name);
  return found != m_by_name.end() ? found->second : PLACE{};
}

void NETLIST_VIEW::index_names() const {
  for (std::size_t i = 0; i < m_instances.size(); ++i) {
    for (const auto& [id, wire] : m_instances[i].m_module->module()->wires_) {
      for (int bit = 0; bit < wire->width; ++bit) {
        m_by_name.emplace(m_instances[i].m_path + text_of(*wire, bit),
                          PLACE{static_cast<int>(i), NET{wire->hashidx_, bit}});
      }
    }
  }
}

}  // namespace kpt_yosys
