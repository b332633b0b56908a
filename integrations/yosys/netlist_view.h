// All registers below a top module, as they stand at one moment: each module once, and each place
// where it stands in the hierarchy.
//
// Ownership: as for MODULE_VIEW; what FLOPs say outlives the netlist.
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

/// Good until the netlist changes, but for what FLOPs say and `path`.
class NETLIST_VIEW {
 public:
  struct INSTANCE {
    std::string m_path;  // "u1.u2." for the module at u1.u2; empty for the top module
    std::shared_ptr<MODULE_VIEW> m_module;
  };

  /// A net of an instance, of use only with the view.
  struct PLACE {
    int m_instance = -1;
    RTLIL::SigBit m_bit;
  };

  NETLIST_VIEW(RTLIL::Module* top, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked);

  const std::vector<INSTANCE>& instances() const { return m_instances; }
  const MODULE_VIEW& module(int instance) const { return *m_instances[static_cast<std::size_t>(instance)].m_module; }
  const std::string& path(int instance) const { return m_instances[static_cast<std::size_t>(instance)].m_path; }
  const FLOP& flop(const LOCATION& location) const;
  /// The wires of all registers' nets and of their inverses, and of what drives them.
  WIRE_NUMBERS wires() const;
  /// The name of a register, with its path.
  std::string name(const LOCATION& location) const { return path(location.m_instance) + flop(location).m_name; }

  /// Whether one of the register's nets is called so.
  bool bears(const LOCATION& location, const std::string& name) const;

  /// -1 when nothing stands there.
  int instance(const std::string& path) const;
  /// The net that is called so, with its path; an instance of -1 when none is, or several are.
  PLACE find(const std::string& name) const;
  /// Makes `find` answer for the netlist as it is now, as long as the view exists; then a PLACE tells
  /// no more than that there is one.
  void index_names() const;

  /// Counts who reads each register, as it is now.
  void note_readers() const;
  /// -1 where that was not counted.
  int count_readers(const LOCATION& location) const;

 private:
  void add(RTLIL::Module* module, const std::string& path, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked,
           std::vector<const RTLIL::Module*>& above);

  std::unordered_map<unsigned int, std::shared_ptr<MODULE_VIEW>> m_modules;
  std::vector<INSTANCE> m_instances;
  std::unordered_map<std::string, int> m_by_path;
  mutable std::unordered_map<std::string, PLACE> m_by_name;  // filled by the first question
};

/// The module that a cell is an instance of, if it is one of ours and holds a netlist.
RTLIL::Module* submodule(const RTLIL::Cell& cell);

/// Whether behaviour that is no netlist yet (processes) is left anywhere below `top`.
bool has_processes(RTLIL::Module* top);

}  // namespace kpt_yosys

#endif
