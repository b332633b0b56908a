// All registers below a top module at one moment: each module once, with all its
// instances in the hierarchy.
//
// Ownership: like MODULE_VIEW; FLOPs outlive the netlist.
#ifndef NETLIST_VIEW_H
#define NETLIST_VIEW_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "module_view.h"

namespace kpt_yosys {

/// A register: an instance of the view and a register of its module.
struct LOCATION {
  int m_instance = -1;
  int m_flop = -1;
  auto operator<=>(const LOCATION&) const = default;  // NOLINT(modernize-use-nullptr): not ours, the compiler's 0
};

/// Valid until the netlist changes, except for FLOPs and `path`.
class NETLIST_VIEW {
 public:
  struct INSTANCE {
    std::string m_path;  // "u1.u2." for the module at u1.u2; empty for the top module
    std::shared_ptr<MODULE_VIEW> m_module;
  };

  /// A net of an instance, only used with the view.
  struct PLACE {
    int m_instance = -1;
    RTLIL::SigBit m_bit;
  };

  NETLIST_VIEW(RTLIL::Module* top, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked);

  const std::vector<INSTANCE>& instances() const { return m_instances; }
  const MODULE_VIEW& module(int instance) const { return *m_instances[static_cast<std::size_t>(instance)].m_module; }
  const std::string& path(int instance) const { return m_instances[static_cast<std::size_t>(instance)].m_path; }
  const FLOP& flop(const LOCATION& location) const;
  /// The wires of all registers' nets, of their inverses, and of their drivers.
  WIRE_NUMBERS wires() const;
  /// The name of a register, with its path.
  std::string name(const LOCATION& location) const { return path(location.m_instance) + flop(location).m_name; }

  /// Whether one of the register's nets has this name.
  bool bears(const LOCATION& location, const std::string& name) const;

  /// -1 when there is none.
  int instance(const std::string& path) const;
  /// The net with this name and path; an instance of -1 when there is none, or several.
  PLACE find(const std::string& name) const;
  /// Makes `find` answer for the present netlist as long as the view exists. A
  /// PLACE then only says that there is a net.
  void index_names() const;

  /// Counts the present readers of each register.
  void note_readers() const;
  /// -1 when they were not counted.
  int count_readers(const LOCATION& location) const;

 private:
  void add(RTLIL::Module* module, const std::string& path, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked,
           std::vector<const RTLIL::Module*>& above);

  std::unordered_map<unsigned int, std::shared_ptr<MODULE_VIEW>> m_modules;
  std::vector<INSTANCE> m_instances;
  std::unordered_map<std::string, int> m_by_path;
  mutable std::unordered_map<std::string, PLACE> m_by_name;  // filled by the first question
};

/// The module of which a cell is an instance, if it is in the design and has a netlist.
RTLIL::Module* submodule(const RTLIL::Cell& cell);

/// Whether there are processes, which are not a netlist yet, anywhere below `top`.
bool has_processes(RTLIL::Module* top);

}  // namespace kpt_yosys

#endif
