#include "gates.h"

#include <memory>
#include <set>
#include <sstream>

#include "backends/rtlil/rtlil_backend.h"
#include "netlist_view.h"

namespace kpt_yosys {

namespace {

void add_below(RTLIL::Module* module, std::set<RTLIL::Module*>& modules) {
  if (!modules.insert(module).second) {
    return;
  }
  for (const auto& [name, cell] : module->cells_) {
    if (RTLIL::Module* const below = submodule(*cell); below != nullptr) {
      add_below(below, modules);
    }
  }
}

}  // namespace

std::string text_of_modules(RTLIL::Module* top) {
  std::set<RTLIL::Module*> modules;
  add_below(top, modules);
  std::ostringstream text;
  for (RTLIL::Module* const module : modules) {
    Yosys::RTLIL_BACKEND::dump_module(text, "", module, module->design, false);
  }
  return text.str();
}

SIMULATION gates_of(const std::string& text, const std::string& top) {
  const auto gates = std::make_unique<RTLIL::Design>();
  std::istringstream in(text);
  Yosys::Frontend::frontend_call(gates.get(), &in, "kept", "rtlil");
  for (const char* const pass :
       {"flatten", "memory_collect", "memory_map t:$mem_v2 r:SIZE<=1024 %i", "techmap", "simplemap"}) {
    Yosys::Pass::call(gates.get(), pass);
  }
  return SIMULATION(gates->module(top));
}

}  // namespace kpt_yosys
