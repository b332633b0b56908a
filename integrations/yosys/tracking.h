// What is known of a design's registers at one moment. The value can be kept and
// used again when the design comes back.
//
// Ownership: the holder owns the points and machines. The view is shared, and
// points into a netlist that may have changed.
#ifndef TRACKING_H
#define TRACKING_H

#include <memory>
#include <string>
#include <vector>

#include "netlist_view.h"

namespace kpt_yosys {

enum class FATE {
  LIVE,        // a register at m_location
  ZERO,        // always 0
  ONE,         // always 1
  UNDEFINED,   // has no value in any state
  NO_FANOUT,   // drove nothing
  IN_MEMORY,   // a bit of a word in the memory m_memory
  IN_MACHINE,  // a bit of the code of the state machine m_machine
  UNKNOWN      // not known
};

/// One bit of the reference netlist or of a state machine's new code, and its present position.
struct POINT {
  std::string m_name;      // in the reference netlist; empty for a bit of a new code
  std::string m_instance;  // for a technology cell in the reference: the cell, its type and its pin
  std::string m_entity;
  std::string m_pin;
  FATE m_fate = FATE::LIVE;
  LOCATION m_location;
  unsigned int m_cell = 0;  // the number of the cell there
  bool m_inverted = false;  // the register there holds the inverse
  int m_memory = -1;
  int m_address = 0;  // of its word in the memory
  int m_bit = 0;      // of the word
  int m_machine = -1;
  int m_column = -1;               // the column of the machine's old code
  bool m_column_inverted = false;  // the column has the inverse
  std::string m_pass;              // the pass that decided its fate, or changed its cell or polarity last
  std::string m_absorbed;          // the pass that may have made it part of something else, while it exists
  std::string m_path;              // the path of the instance where it was before it was lost
  std::string m_last_name;         // its name there
  std::vector<NET> m_nets;         // its nets there
};

/// A state machine that was taken out of the netlist to be re-encoded.
struct MACHINE {
  std::string m_path;
  std::string m_name;       // as Yosys spells it
  std::string m_cell_name;  // likewise
  unsigned int m_cell = 0;
  std::vector<std::string> m_old_codes;  // for each state, one '0' or '1' for each bit
  std::vector<std::string> m_codes;      // the present codes of the same states
  std::vector<int> m_points;             // for each bit of the new code, after it is mapped
  bool m_mapped = false;
};

/// A memory of the reference netlist. Its words are the same as long as its name and shape are the same.
struct HELD_MEMORY {
  std::string m_path;
  MEMORY m_memory;
  bool m_gone = false;  // nothing remains to follow
};

struct TRACKING {
  std::string m_top;
  TECHNOLOGY m_technology;
  std::shared_ptr<const NETLIST_VIEW> m_view;  // null while there are processes
  std::vector<POINT> m_points;
  std::vector<MACHINE> m_machines;
  std::vector<HELD_MEMORY> m_memories;
  std::size_t m_made_by_front_end = 0;  // reference registers that the front end made; they are no points
};

}  // namespace kpt_yosys

#endif
