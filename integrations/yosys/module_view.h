// The registers of one module at one moment, and what drives each of its nets.
//
// Ownership: a view points into the module and is valid until the module changes.
// Its descriptions of registers (FLOP) contain no pointers and outlive the netlist.
#ifndef MODULE_VIEW_H
#define MODULE_VIEW_H

#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "kernel/sigtools.h"
#include "kernel/yosys.h"
#include "netlist_names.h"

namespace kpt_yosys {

/// A bit of a wire, by the number of the wire, which Yosys gives to no other wire.
struct NET {
  unsigned int m_wire = 0;
  int m_bit = 0;
  bool operator==(const NET&) const = default;
};

/// One bit of storage.
struct FLOP {
  unsigned int m_cell = 0;      // the number of the cell
  int m_index = 0;              // the bit of the cell
  std::string m_cell_name;      // as Yosys spells it
  std::string m_type;           // the type of a technology cell; empty for a flip-flop of Yosys
  std::string m_port;           // likewise
  std::string m_name;           // the name of its best net
  std::vector<NET> m_nets;      // all nets that have its value
  std::vector<NET> m_inverted;  // all nets that have the inverse
  NET m_data_net;               // the net of its data input, not one connected to it
  NET m_uninverted_data;        // when an inverter drives that net: the net of the inverter's input
  RTLIL::SigBit m_output;       // only used with the view
  RTLIL::SigBit m_data;         // likewise, as the cell has it
};

/// Words in a memory that something writes.
struct MEMORY {
  std::string m_name;
  int m_width = 0;
  int m_size = 0;
  int m_offset = 0;  // the address of the first word
  bool operator==(const MEMORY&) const = default;
};

/// The kind of value on a net.
enum class SOURCE_KIND { ZERO, ONE, UNDEFINED, FLOP, LOGIC };

struct SOURCE {
  SOURCE_KIND m_kind = SOURCE_KIND::LOGIC;
  int m_flop = -1;
  bool m_inverted = false;
};

/// The technology's registers that were found so far: "type/port".
using TECHNOLOGY = std::set<std::string, std::less<>>;

using WIRE_NUMBERS = std::unordered_set<unsigned int>;

class MODULE_VIEW {
 public:
  /// Answers questions about the nets of its registers and about the wires with the numbers in `asked`.
  MODULE_VIEW(RTLIL::Module* module, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked);

  RTLIL::Module* module() const { return m_module; }
  const std::vector<FLOP>& flops() const { return m_flops; }
  const std::vector<MEMORY>& memories() const { return m_memories; }

  /// What drives a net, through buffers and inverters. LOGIC also for a net that does not exist any more.
  SOURCE source(const NET& net) const;
  SOURCE source(RTLIL::SigBit bit) const;

  /// Null for a wire that does not exist any more.
  RTLIL::Wire* wire(unsigned int number) const;
  /// The bit that represents all bits connected to the net; a constant when the net does not exist any more.
  RTLIL::SigBit canonical(const NET& net) const;
  RTLIL::SigBit canonical(RTLIL::SigBit bit) const { return m_sigmap(bit); }

  /// Counts the readers of each net; valid until the netlist changes.
  void note_readers();
  bool has_readers_noted() const { return m_readers_noted; }
  /// The number of cell inputs and module outputs that read the register.
  int count_readers(int flop) const { return m_readers[static_cast<std::size_t>(flop)]; }

  /// The pin, as "type/port", of a cell that Yosys does not know and that drives,
  /// through inverters, what the flip-flop `before` drove; empty when there is none.
  std::string technology_driver(const FLOP& before) const;

 private:
  struct INVERTER {
    RTLIL::SigBit m_input;  // as the cell has it
    bool m_inverts = false;
  };

  NET net_of(RTLIL::SigBit bit);
  void read_cells(const TECHNOLOGY& technology);
  void read_memories();
  void add_flops(RTLIL::Cell* cell);
  void add_memory_flops(RTLIL::Cell* cell, const RTLIL::SigSpec& data, const RTLIL::Const& clocked);
  void add_technology_flops(RTLIL::Cell* cell, const TECHNOLOGY& technology);
  void add_flop(RTLIL::Cell* cell, int index, RTLIL::SigBit output, RTLIL::SigBit data);
  void add_unary(RTLIL::Cell* cell, bool inverts);
  void add_xor(RTLIL::Cell* cell, bool inverts);
  void add_lut(RTLIL::Cell* cell);
  void collect_nets();
  void collect_net(RTLIL::SigBit bit);
  void name_flops();
  void find_inverted_data();
  std::string technology_pin(RTLIL::SigBit bit, const std::string& cell_name) const;

  RTLIL::Module* m_module;
  Yosys::SigMap m_sigmap;
  std::vector<FLOP> m_flops;
  std::vector<MEMORY> m_memories;
  Yosys::dict<RTLIL::SigBit, int> m_by_output;
  Yosys::dict<RTLIL::SigBit, INVERTER> m_inverters;
  Yosys::dict<RTLIL::SigBit, int> m_by_inverted_output;
  std::unordered_map<unsigned int, RTLIL::Wire*> m_wires;
  bool m_readers_noted = false;
  std::vector<int> m_readers;  // by register
};

}  // namespace kpt_yosys

#endif
