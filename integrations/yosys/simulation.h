// A flat netlist of gates and registers in 64 runs at once, from power-up. An unknown value
// stays unknown through all logic, so a known value is right whatever the unknown values are.
//
// Ownership: only the constructor reads the module.
#ifndef SIMULATION_H
#define SIMULATION_H

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kernel/ff.h"
#include "kernel/sigtools.h"
#include "kernel/yosys.h"
#include "ternary.h"

namespace kpt_yosys {

namespace RTLIL = Yosys::RTLIL;

class SIMULATION {
 public:
  enum class KIND { NOT, AND, XOR, MUX, STORAGE };
  // Net 0 is 0, net 1 is 1, net 2 is never known. Inputs of a MUX: the value for 0, the value for 1, the select input.
  struct NODE {
    KIND m_kind = KIND::NOT;
    int m_output = 2;
    int m_inputs[3] = {2, 2, 2};
    int m_storage = -1;
  };
  // One bit. A missing control input is 0. An active control input is 1, through inverters that are added.
  struct STORAGE {
    int m_q = 2, m_d = 2, m_clock = 0, m_enable = 1, m_reset = 0, m_load = 0, m_load_data = 2, m_clear = 0, m_set = 0;
    bool m_clocked = false;
    bool m_enable_first = false;  // a disabled register ignores its reset
    TERNARY m_reset_value, m_initial;
  };

  explicit SIMULATION(RTLIL::Module* module);

  /// The netlist itself: each node comes after the nodes that it reads, except in loops.
  const std::vector<NODE>& nodes() const { return m_nodes; }
  const std::vector<STORAGE>& storage() const { return m_storage; }
  std::size_t count_nets() const { return m_values.size(); }
  bool has_loops() const { return m_has_loops; }

  /// The inputs by name, in the form of text_of(). Inputs that clock a register,
  /// directly or through inverters, are also in `clocks`.
  const std::vector<std::pair<std::string, int>>& inputs() const { return m_inputs; }
  const std::vector<std::string>& clocks() const { return m_clocks; }
  /// The net of that name; -1 when there is none or several.
  int net(const std::string& name) const;

  /// Call it before set() for all inputs, and before begin().
  void power_up();
  /// Takes the present inputs as the previous ones.
  void begin();
  void set(int net, TERNARY value) { at(net) = value; }
  TERNARY value(int net) const { return m_values[static_cast<std::size_t>(net)]; }
  /// Propagates the changes of the inputs through logic and registers.
  void settle();

 private:
  TERNARY& at(int net) { return m_values[static_cast<std::size_t>(net)]; }
  int net_of(RTLIL::SigBit bit);
  int new_net();
  int add(KIND kind, int a, int b = 2, int c = 2);
  void join(int output, int value);
  int active(const RTLIL::SigSpec& signal, int index, bool high);
  void add_cell(RTLIL::Cell* cell);
  void add_gate(const std::string& type, RTLIL::Cell* cell);
  void add_storage(RTLIL::Cell* cell, const Yosys::dict<RTLIL::SigBit, RTLIL::State>& initial);
  void add_names(RTLIL::Module* module);
  void find_clocks();
  void sort_nodes();

  TERNARY evaluated(const NODE& node) const;
  TERNARY held(const STORAGE& storage, TERNARY q) const;
  TERNARY loaded(const STORAGE& storage) const;
  void settle_logic();
  bool clock_registers();

  Yosys::SigMap m_sigmap;
  Yosys::dict<RTLIL::SigBit, int> m_nets;
  std::unordered_map<std::string, int> m_names;
  std::vector<std::pair<std::string, int>> m_inputs;
  std::vector<std::string> m_clocks;
  std::vector<NODE> m_nodes;
  std::vector<STORAGE> m_storage;
  std::vector<TERNARY> m_values;
  std::vector<TERNARY> m_before;  // before the last change of inputs or registers
  bool m_has_loops = false;
};

}  // namespace kpt_yosys

#endif
