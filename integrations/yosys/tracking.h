// What is known of a design's registers at one moment: a value that can be kept, and taken up again
// when the design comes back.
//
// Ownership: the points and machines are the holder's own; the view is shared, and points into a
// netlist that may have changed.
#ifndef TRACKING_H
#define TRACKING_H

#include <memory>
#include <string>
#include <vector>

#include "netlist_view.h"

namespace kpt_yosys {

enum class FATE {
  LIVE,        // stands at m_location
  ZERO,        // always 0
  ONE,         // always 1
  UNDEFINED,   // has no value in any state
  NO_FANOUT,   // drove nothing
  IN_MEMORY,   // a bit of a word that is kept in a memory, which is m_memory
  IN_MACHINE,  // a bit of a state machine's code, which is m_machine
  UNKNOWN      // cannot be told
};

/// One bit of the reference netlist, or of a state machine's new code, and where it is now.
struct POINT {
  std::string m_name;      // in the reference netlist; empty for a bit of a new code
  std::string m_instance;  // where the reference has it in a cell of the technology: that, its type and its pin
  std::string m_entity;
  std::string m_pin;
  FATE m_fate = FATE::LIVE;
  LOCATION m_location;
  unsigned int m_cell = 0;  // the number of the cell there
  bool m_inverted = false;  // its inverse is held there
  int m_memory = -1;
  int m_address = 0;  // of its word there
  int m_bit = 0;      // of that
  int m_machine = -1;
  int m_column = -1;               // of the machine's old code
  bool m_column_inverted = false;  // its inverse is in that column
  std::string m_pass;              // that settled its fate, or last gave it another cell or polarity
  std::string m_absorbed;          // the pass that may have put it into something else, while it lives on
  std::string m_path;              // of the instance where it was seen before it was lost
  std::string m_last_name;         // what it was called there
  std::vector<NET> m_nets;         // that carried it there
};

/// A state machine that was taken out of the netlist, to be given another code.
struct MACHINE {
  std::string m_path;
  std::string m_name;       // as Yosys spells it
  std::string m_cell_name;  // likewise
  unsigned int m_cell = 0;
  std::vector<std::string> m_old_codes;  // one of '0' and '1' per bit and state
  std::vector<std::string> m_codes;      // the same states, as they are coded now
  std::vector<int> m_points;             // per bit of the new code, once it is mapped
  bool m_mapped = false;
};

/// A memory of the reference netlist. Its words are the same as long as its name and shape are.
struct HELD_MEMORY {
  std::string m_path;
  MEMORY m_memory;
  bool m_gone = false;  // there is no more to follow
};

struct TRACKING {
  std::string m_top;
  TECHNOLOGY m_technology;
  std::shared_ptr<const NETLIST_VIEW> m_view;  // null as long as there are processes
  std::vector<POINT> m_points;
  std::vector<MACHINE> m_machines;
  std::vector<HELD_MEMORY> m_memories;
  std::size_t m_made_by_front_end = 0;  // registers of the reference that nobody wrote, and no points
};

}  // namespace kpt_yosys

#endif
