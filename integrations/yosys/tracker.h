// Follows the registers of a design from pass to pass.
//
// Ownership: a tracker holds no part of the design between two calls, so the design may change in
// any way between them.
#ifndef TRACKER_H
#define TRACKER_H

#include <map>
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
  IN_MACHINE,  // a bit of a state machine's code, which is m_machine
  UNKNOWN      // cannot be told
};

/// One bit of the reference netlist, or of a state machine's new code, and where it is now.
struct POINT {
  std::string m_name;  // in the reference netlist; empty for a bit of a new code
  FATE m_fate = FATE::LIVE;
  LOCATION m_location;
  bool m_inverted = false;  // its inverse is held there, or in that column of its machine
  int m_machine = -1;
  int m_column = -1;        // of the machine's old code
  std::string m_pass;       // that settled its fate
  std::string m_path;       // of the instance where it was seen before it was lost
  std::string m_last_name;  // what it was called there
  std::vector<NET> m_nets;  // that carried it there
};

/// A state machine that was taken out of the netlist, to be given another code.
struct MACHINE {
  std::string m_path;
  std::string m_name;  // as Yosys spells it
  unsigned int m_cell = 0;
  std::vector<std::string> m_old_codes;  // one of '0' and '1' per bit and state
  std::vector<std::string> m_codes;      // the same states, as they are coded now
  std::vector<int> m_points;             // per bit of the new code, once it is mapped
  bool m_mapped = false;
};

class TRACKER {
 public:
  /// Starts with the registers of `top`. With processes still in the design, starts after the pass
  /// that turns the last one into a netlist.
  TRACKER(RTLIL::Design* design, std::string top);
  ~TRACKER();
  TRACKER(const TRACKER&) = delete;
  TRACKER& operator=(const TRACKER&) = delete;

  /// To be called after every pass, and before one that is called by another: tells what became of
  /// the registers since the last call. `pass` is who changed the netlist, empty when nobody knows.
  void boundary(RTLIL::Design* design, const std::string& pass);

  /// Ends the stage: what is left of the registers becomes the reference of the next, under the
  /// names of current_names().
  void restart();

  using NAMES = std::map<LOCATION, std::string>;
  /// A name for each register that is there now: that of the reference register, if a net still
  /// bears it, else the best.
  NAMES current_names() const;

  bool started() const { return m_view != nullptr; }
  const std::vector<POINT>& points() const { return m_points; }
  const std::vector<MACHINE>& machines() const { return m_machines; }
  const NETLIST_VIEW& view() const { return *m_view; }
  /// Registers of the netlist that no reference register explains.
  std::size_t count_new_registers() const;

 private:
  // One pass: the registers before and after it.
  struct STEP {
    const NETLIST_VIEW& m_before;
    const NETLIST_VIEW& m_after;
    const std::string& m_pass;
  };
  struct CHANGES;

  RTLIL::Module* find_top(RTLIL::Design* design) const;
  bool changed(RTLIL::Design* design, const std::string& pass);
  void begin(RTLIL::Module* top);
  void begin_points(const NAMES& names);
  void follow(RTLIL::Module* top, const std::string& pass);

  bool find_technology(const STEP& step);

  // One register.
  static void follow_point(const STEP& step, POINT& point);
  static bool find_by_net(const STEP& step, POINT& point, const FLOP& flop, int instance);
  static bool find_by_name(const STEP& step, POINT& point, const FLOP& flop);
  static bool find_by_cell(const STEP& step, POINT& point, const FLOP& flop, int instance);
  static void find_again(const STEP& step, POINT& point);
  static bool come_back(const STEP& step, POINT& point, const SOURCE& source, int instance);
  static void lose(const STEP& step, POINT& point);
  static bool settle(const STEP& step, POINT& point, const SOURCE& source, int instance, bool inverted);

  // State machines.
  void find_machines(const STEP& step);
  void add_machine(const STEP& step, int instance, RTLIL::Cell* cell);
  void follow_machine(const STEP& step, int index);
  void map_machine(const STEP& step, int index, int instance);
  void carry_over(MACHINE& earlier, int index);
  void drop_machine(const STEP& step, int index);

  std::string m_top;
  unsigned int m_top_number = 0;
  std::size_t m_fingerprint = 0;
  std::unique_ptr<CHANGES> m_changes;
  TECHNOLOGY m_technology;
  std::unique_ptr<NETLIST_VIEW> m_view;
  std::vector<POINT> m_points;
  std::vector<MACHINE> m_machines;
};

}  // namespace kpt_yosys

#endif
