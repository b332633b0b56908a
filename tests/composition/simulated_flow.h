// Simulated netlists with random next-state functions, which go through random
// stages. Each stage is recorded as passes and hosts record it.
//
// Ownership: refers to the caller's generator; owns the stages.
#ifndef TESTS_COMPOSITION_SIMULATED_FLOW_H
#define TESTS_COMPOSITION_SIMULATED_FLOW_H

#include <cstdint>
#include <list>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_test {

/// The values of a register in 64 cycles.
using TRACE = std::uint64_t;

struct SIMULATED {
  TRACE trace;
  /// The registers of the first netlist from which this one was kept, copied or
  /// merged, without a machine between.
  std::set<std::string> origins;
  /// The registers of the first netlist on which it depends in any way, also through machines.
  std::set<std::string> ancestors;
};
using SIMULATED_NETLIST = std::map<std::string, SIMULATED>;

class SIMULATED_FLOW {
 public:
  SIMULATED_FLOW(std::mt19937& random, unsigned registers, unsigned stages);

  SIMULATED_NETLIST first;
  SIMULATED_NETLIST last;
  std::list<KPT_UNREGISTERED_DB> stages;
  /// Registers of the first netlist of which a copy was lost, or a bit of a
  /// machine that encodes them.
  std::set<std::string> with_lost_copies;
  /// Registers of the first netlist that a machine encodes.
  std::set<std::string> encoded;
  /// The registers of the first netlist that may be known to have the same value
  /// as this one: what is unknown of one of them is unknown of all.
  std::set<std::string> related_to(const std::string& name) const;

 private:
  using MEMBER = std::pair<std::string, SIMULATED>;
  using MEMBERS = std::vector<MEMBER>;
  using BITS = std::vector<std::vector<std::string>>;  // the registers of each bit of a machine

  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
  std::string fresh_name() { return "n" + std::to_string(++m_names); }
  std::string new_name(const std::string& old);
  void simulate(unsigned registers);
  void stage();
  MEMBERS take(unsigned most);
  MEMBERS take_twins();
  void put(const std::string& name, const SIMULATED& simulated);
  void relate(const std::set<std::string>& names);
  void lose(const MEMBERS& members);
  KPT_GROUPS groups_of(const MEMBERS& members, TRACE trace);
  void copy(const MEMBERS& members);
  void encode(const MEMBERS& members);
  void remove_constant(const MEMBERS& members);
  static std::set<std::string> ancestors_of(const MEMBERS& members, unsigned some);
  void machine_events(BITS& bits);
  void events();

  std::mt19937& m_random;
  unsigned m_names = 0;
  std::vector<MEMBER> m_left;      // of the netlist from which the stage starts
  std::set<std::string> m_plain;   // registers of the new netlist that events may change
  std::list<std::string> m_texts;  // to which groups refer
  std::map<std::string, std::set<std::string>> m_related;
};

}  // namespace kpt_test

#endif
