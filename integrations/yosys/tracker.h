// Follows the registers of a design from pass to pass.
//
// Ownership: a tracker keeps no pointer into the design between two calls, so the
// design may change in any way between them.
#ifndef TRACKER_H
#define TRACKER_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "recognition.h"
#include "tracking.h"

namespace kpt_yosys {

class TRACKER {
 public:
  /// Starts with the registers of `top`. When the design has processes, starts
  /// after the pass that turns the last one into a netlist.
  TRACKER(RTLIL::Design* design, std::string top);
  ~TRACKER();
  TRACKER(const TRACKER&) = delete;
  TRACKER& operator=(const TRACKER&) = delete;

  /// Call it before a pass and after boundary(): notes what has to be known of the
  /// present netlist. `args` is empty when a pass continues after a pass that it called.
  void prepare(const std::string& pass, const std::vector<std::string>& args);

  /// Call it after every pass, and before a pass that another one calls: finds what
  /// became of the registers since the last call. `pass` is the pass that changed
  /// the netlist, or empty when it is not known. Throws when the top module is gone.
  void boundary(RTLIL::Design* design, const std::string& pass);

  /// Ends the stage: the remaining registers become the reference of the next
  /// stage, with the names of current_names().
  void restart();

  /// What is known now. It is used again when a copy of the present design becomes the design.
  TRACKING put_aside(RTLIL::Design* design);
  void take_up(RTLIL::Design* design, TRACKING kept);

  /// Takes back what is known of a register or a state machine, because it is
  /// false. Returns the pass after which it was taken for true.
  std::string refuse(int point);
  std::string refuse_machine(int machine);

  using NAMES = std::map<LOCATION, std::string>;
  /// A name for each present register: the name of the reference register if one
  /// of its nets has it, and otherwise the best name.
  NAMES current_names() const;

  bool started() const { return m_now.m_view != nullptr; }
  std::string why_not_started(RTLIL::Design* design) const;
  const std::vector<POINT>& points() const { return m_now.m_points; }
  const std::vector<MACHINE>& machines() const { return m_now.m_machines; }
  std::size_t made_by_front_end() const { return m_now.m_made_by_front_end; }
  const NETLIST_VIEW& view() const { return *m_now.m_view; }
  /// The number of registers of the netlist without a reference register.
  std::size_t count_new_registers() const;

 private:
  // One pass: the registers before and after it.
  struct STEP {
    const NETLIST_VIEW& m_before;
    const NETLIST_VIEW& m_after;
    const std::string& m_pass;
  };
  struct CHANGES;

  RTLIL::Module* find_top(RTLIL::Design* design, const std::string& pass) const;
  bool changed(RTLIL::Design* design, const std::string& pass);
  void begin(RTLIL::Module* top);
  void begin_points(const NAMES& names);
  void begin_words();
  void add_words(const std::string& path, const MEMORY& memory, std::set<std::string>& names);
  void follow(RTLIL::Module* top, const std::string& pass);

  bool find_technology(const STEP& step);

  // One register.
  static void follow_point(const STEP& step, POINT& point);
  static bool find_by_moved_inverter(const STEP& step, POINT& point, const FLOP& flop, int instance);
  static bool find_by_net(const STEP& step, POINT& point, const FLOP& flop, int instance);
  static bool find_by_name(const STEP& step, POINT& point, const FLOP& flop);
  static bool find_by_cell(const STEP& step, POINT& point, const FLOP& flop, int instance);
  static void find_again(const STEP& step, POINT& point);
  static void take_new_net(const STEP& step, POINT& point);
  static bool come_back(const STEP& step, POINT& point, const SOURCE& source, int instance);
  static void move(const STEP& step, POINT& point, const LOCATION& location, bool inverted);
  static void lose(const STEP& step, POINT& point);
  static void note_absorbed(const STEP& step, POINT& point, int readers);
  static bool settle(const STEP& step, POINT& point, const SOURCE& source, int instance, bool inverted);

  // Registers that a pass makes anew.
  void recognise(const STEP& step, const std::vector<POINT>& before);
  void search(const STEP& step, const std::vector<POINT>& before);
  void settle_found(const STEP& step, POINT& point, const RECOGNITION::FOUND& found,
                    const std::vector<LOCATION>& after);

  // Memories.
  void follow_memories(const STEP& step);
  void leave_memory(const STEP& step, int index);

  // State machines.
  void find_machines(const STEP& step);
  void add_machine(const STEP& step, int instance, RTLIL::Cell* cell);
  void follow_machine(const STEP& step, int index);
  void map_machine(const STEP& step, int index, int instance);
  void carry_over(MACHINE& earlier, int index);
  void drop_machine(const STEP& step, int index);

  unsigned int m_top_number = 0;
  std::size_t m_fingerprint = 0;
  std::unique_ptr<CHANGES> m_changes;
  std::unique_ptr<RECOGNITION> m_recognition;  // for the pass that is about to make registers anew
  TRACKING m_now;
};

}  // namespace kpt_yosys

#endif
