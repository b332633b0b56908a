// Compares the claims of a united database with the netlists themselves.
//
// The registers of small random netlists have simulated values. Stages rename
// registers, merge equal ones, retime inverters, replicate, and drop constants.
// Each event is recorded through the handle, and all stages are united. When the
// united database says that two registers are equal or inverse, this has to hold
// in the values of the first and of the last netlist.
//
// Some required behaviours of a union make false claims. Each has a predicate
// below, which is computed only from the events. The claims that it exempts are
// counted, and their number is bounded.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "tests/support/seed.h"
#include "tests/union/stages.h"

namespace {

using namespace kpt_test;

using VALUE = std::uint64_t;                   // a register's value in 64 cycles
using NETLIST = std::map<std::string, VALUE>;  // by name

// What the events did to one register, and to all registers with which it was
// merged, from which it was replicated or as which it was recorded.
struct HISTORY {
  int eliminated_in = 0;      // the first stage that eliminated one of them, 0 for none
  bool name_taken = false;    // a stage gave one of them the name of another
  bool retimed = false;       // an inverter was retimed through one of them
  bool merged_later = false;  // a stage after the first merged some of them
};

// ---- One predicate for each behaviour that makes claims wrong ----

// A map with an elimination status is not composed further: its other registers
// keep their names of an earlier netlist.
bool eliminated_map_was_left_alone(const HISTORY& history, int last_stage) {
  return history.eliminated_in != 0 && history.eliminated_in < last_stage;
}

// A register gets a name that another register had between the stages. Both then
// share a keypoint, and its entry leads to the other register's map.
bool name_was_taken_over(const HISTORY& history, int /*last_stage*/) { return history.name_taken; }

// Where several first maps feed one second map, the second map is swapped for
// each of them in turn. First maps of unlike polarity are fused without being
// swapped.
bool maps_of_unlike_polarity_were_fused(const HISTORY& history, int /*last_stage*/) {
  return history.merged_later && history.retimed;
}

struct EXEMPTION {
  const char* name;
  bool (*applies)(const HISTORY& history, int last_stage);
  double most_wrong;  // of all claims, in per cent; a tenth above what was measured
  long claims = 0;
  long wrong = 0;
  bool applies_here = false;  // to the present map
};

// ---- Events ----

class LINEAGE {
 public:
  using NODE = std::size_t;

  NODE node(int netlist, const std::string& name) {
    const auto [place, is_new] = m_nodes.try_emplace({netlist, name}, m_up.size());
    if (is_new) {
      m_up.push_back(place->second);
      m_histories.emplace_back();
    }
    return place->second;
  }
  void join(NODE a, NODE b) {
    a = root(a);
    b = root(b);
    if (a == b) {
      return;
    }
    m_up[b] = a;
    HISTORY& all = m_histories[a];
    const HISTORY& other = m_histories[b];
    if (all.eliminated_in == 0 || (other.eliminated_in != 0 && other.eliminated_in < all.eliminated_in)) {
      all.eliminated_in = other.eliminated_in;
    }
    all.name_taken |= other.name_taken;
    all.retimed |= other.retimed;
    all.merged_later |= other.merged_later;
  }
  HISTORY& history(NODE of) { return m_histories[root(of)]; }

 private:
  NODE root(NODE of) {
    while (m_up[of] != of) {
      of = m_up[of] = m_up[m_up[of]];
    }
    return of;
  }
  std::map<std::pair<int, std::string>, NODE> m_nodes;
  std::vector<NODE> m_up;
  std::vector<HISTORY> m_histories;
};

class FLOW {
 public:
  explicit FLOW(std::mt19937& random) : m_random(random) {
    const VALUE values[3] = {m_random() * VALUE{0x100000001}, m_random() * VALUE{0x300000007}, m_random()};
    for (unsigned k = 2 + below(10); k > 0; --k) {
      const VALUE value = below(8) == 0 ? VALUE{0} : values[below(3)];
      netlists.back().emplace(fresh_name(), below(3) == 0 ? ~value : value);
    }
  }

  void stage(KPT_KEYPOINTS_DB& db) {
    ++last_stage;
    m_db = &db;
    rename_all();
    for (unsigned k = below(7); k > 0; --k) {
      switch (below(8)) {
        case 0:
        case 1:
          retime();
          break;
        case 2:
        case 3:
          replicate();
          break;
        case 4:
        case 5:
        case 6:
          merge();
          break;
        default:
          eliminate();
      }
    }
  }

  std::vector<NETLIST> netlists{1};
  LINEAGE lineage;
  int last_stage = 0;

 private:
  unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
  std::string fresh_name() { return "n" + std::to_string(++m_names); }
  NETLIST& now() { return netlists.back(); }
  NETLIST::iterator any() { return std::next(now().begin(), below(static_cast<unsigned>(now().size()))); }
  LINEAGE::NODE node(const std::string& name) { return lineage.node(last_stage, name); }

  void rename_all() {
    const NETLIST before = now();
    std::vector<std::string> order;
    for (const auto& [name, value] : before) {
      order.push_back(name);
    }
    std::shuffle(order.begin(), order.end(), m_random);
    netlists.emplace_back();
    for (const std::string& name : order) {
      std::string new_name = below(2) == 0 ? name : fresh_name();
      const std::string& other = order[below(static_cast<unsigned>(order.size()))];
      if (below(40) == 0 && other != name && !now().contains(other)) {
        new_name = other;
      }
      if (now().contains(new_name)) {
        new_name = fresh_name();
      }
      EXPECT_TRUE(m_db->associate_registers_signal_to_signal(name, new_name));
      now().emplace(new_name, before.at(name));
      lineage.join(lineage.node(last_stage - 1, name), node(new_name));
      if (new_name != name && before.contains(new_name) && last_stage > 1) {
        lineage.history(node(new_name)).name_taken = true;
        lineage.history(lineage.node(last_stage - 1, new_name)).name_taken = true;
      }
    }
  }

  void retime() {
    if (now().empty()) {
      return;
    }
    const auto it = any();
    EXPECT_TRUE(m_db->set_inverter_retimed_register(it->first));
    it->second = ~it->second;
    lineage.history(node(it->first)).retimed = true;
  }

  void replicate() {
    if (now().empty()) {
      return;
    }
    const auto it = any();
    const std::string replica = fresh_name();
    EXPECT_TRUE(m_db->set_replicated_registers(it->first, replica));
    lineage.join(node(it->first), node(replica));
    now().emplace(replica, it->second);
  }

  void merge() {
    if (now().empty()) {
      return;
    }
    const auto kept = any();
    const auto merged = std::find_if(now().begin(), now().end(), [&](const auto& other) {
      return other.first != kept->first && other.second == kept->second;
    });
    if (merged == now().end()) {
      return;
    }
    lineage.join(node(kept->first), node(merged->first));
    // Refused when an earlier wrong claim has put the two on opposite sides of one map.
    if (m_db->set_merged_registers(kept->first, merged->first)) {
      lineage.history(node(kept->first)).merged_later |= last_stage > 1;
      now().erase(merged);
    }
  }

  void eliminate() {
    const auto constant = std::find_if(now().begin(), now().end(),
                                       [](const auto& one) { return one.second == 0 || one.second == ~VALUE{0}; });
    const bool unused = constant == now().end();
    if (now().empty() || (unused && below(4) != 0)) {
      return;
    }
    const auto it = unused ? any() : constant;
    EXPECT_TRUE(unused            ? m_db->set_eliminated_register_no_fanout(it->first)
                : it->second == 0 ? m_db->set_eliminated_register_stuck_at_zero(it->first)
                                  : m_db->set_eliminated_register_stuck_at_one(it->first));
    HISTORY& history = lineage.history(node(it->first));
    if (history.eliminated_in == 0) {
      history.eliminated_in = last_stage;
    }
    now().erase(it);
  }

  std::mt19937& m_random;
  KPT_KEYPOINTS_DB* m_db = nullptr;
  int m_names = 0;
};

// ---- Claims ----

// The registers of a plain map, and whether each holds the map's value or its inverse.
struct MEMBER {
  std::string name;
  bool in_first_netlist;
  bool inverted;
};

std::vector<MEMBER> members_of(const KPT_REGISTER_TRANSFORMATION& map) {
  std::vector<MEMBER> members;
  const auto add = [&](const KPT_REGISTER_KEYPOINT& representative, const KPT_REGISTER_KEYPOINT_LIST& equivalents,
                       const KPT_REGISTER_KEYPOINT_LIST& inverses, bool first, bool inverted) {
    if (representative.is_null()) {
      return;
    }
    members.push_back({std::string(representative.get_name()), first, inverted});
    for (const KPT_REGISTER_KEYPOINT& other : equivalents) {
      members.push_back({std::string(other.get_name()), first, inverted});
    }
    for (const KPT_REGISTER_KEYPOINT& other : inverses) {
      members.push_back({std::string(other.get_name()), first, !inverted});
    }
  };
  add(map.get_reference(0), map.get_reference_equivalents(0), map.get_reference_inverted_equivalents(0), true, false);
  add(map.get_transformed(0), map.get_transformed_equivalents(0), map.get_transformed_inverted_equivalents(0), false,
      map.is_negative_unate(0, 0));
  return members;
}

class UnitedDatabases : public testing::Test {
 protected:
  // Records two to four stages and unites them.
  void run_a_flow() {
    FLOW flow(m_random);
    KPT_KEYPOINTS_DB_IMPL united("first");
    KPT_KEYPOINTS_DB handle(&united);
    flow.stage(handle);
    const int stages = 2 + static_cast<int>(m_random() % 3);
    for (int stage = 1; stage < stages; ++stage) {
      KPT_KEYPOINTS_DB_IMPL next("next");
      KPT_KEYPOINTS_DB next_handle(&next);
      flow.stage(next_handle);
      EXPECT_TRUE(handle.unite(next_handle));
    }
    for (const auto& [name, value] : flow.netlists.front()) {
      EXPECT_FALSE(handle.get_reference_register_transformation(name).is_null()) << name;
    }
    for (const KPT_REGISTER_TRANSFORMATION& map :
         handle.get_transformation_set().get_list_of_register_transformations()) {
      check(flow, members_of(map));
    }
  }

  void check(FLOW& flow, const std::vector<MEMBER>& members) {
    const bool exempt = is_exempt(flow, members);
    for (std::size_t a = 0; a < members.size(); ++a) {
      for (std::size_t b = a + 1; b < members.size(); ++b) {
        const bool holds = claim_holds(flow, members[a], members[b]);
        count(exempt, holds);
        EXPECT_TRUE(exempt || holds) << (members[a].inverted != members[b].inverted ? "inverse" : "equal") << ": "
                                     << text(members[a]) << ", " << text(members[b]) << ", after " << flow.last_stage
                                     << " stages";
      }
    }
  }

  bool is_exempt(FLOW& flow, const std::vector<MEMBER>& members) {
    bool exempt = false;
    for (EXEMPTION& exemption : m_exemptions) {
      exemption.applies_here = std::any_of(members.begin(), members.end(), [&](const MEMBER& member) {
        const int netlist = member.in_first_netlist ? 0 : flow.last_stage;
        return exemption.applies(flow.lineage.history(flow.lineage.node(netlist, member.name)), flow.last_stage);
      });
      exempt |= exemption.applies_here;
    }
    return exempt;
  }

  static const VALUE* value(const FLOW& flow, const MEMBER& member) {
    const NETLIST& netlist = member.in_first_netlist ? flow.netlists.front() : flow.netlists.back();
    const auto it = netlist.find(member.name);
    return it == netlist.end() ? nullptr : &it->second;
  }

  static bool claim_holds(const FLOW& flow, const MEMBER& a, const MEMBER& b) {
    const VALUE* const of_a = value(flow, a);
    const VALUE* const of_b = value(flow, b);
    return of_a != nullptr && of_b != nullptr && *of_a == (a.inverted != b.inverted ? ~*of_b : *of_b);
  }

  void count(bool exempt, bool holds) {
    ++m_claims;
    m_exempted += exempt ? 1 : 0;
    for (EXEMPTION& exemption : m_exemptions) {
      exemption.claims += exemption.applies_here ? 1 : 0;
      exemption.wrong += exemption.applies_here && !holds ? 1 : 0;
    }
  }

  static std::string text(const MEMBER& member) {
    return member.name + (member.in_first_netlist ? " of the first netlist" : " of the last netlist");
  }
  double percent(long part) const { return 100.0 * static_cast<double>(part) / static_cast<double>(m_claims); }

  std::mt19937 m_random{seed() + 2};
  EXEMPTION m_exemptions[3] = {{"eliminated_map_was_left_alone", eliminated_map_was_left_alone, 0.61},
                               {"name_was_taken_over", name_was_taken_over, 1.62},
                               {"maps_of_unlike_polarity_were_fused", maps_of_unlike_polarity_were_fused, 6.65}};
  long m_claims = 0;
  long m_exempted = 0;
};

TEST_F(UnitedDatabases, ClaimWhatHoldsInSimulationButForThreeKnownBehavioursWhoseShareIsBounded) {
  const int rounds = steps(3000);
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    run_a_flow();
  }
  std::cout << m_claims << " claims in " << rounds << " flows, of which exempted " << percent(m_exempted) << "%\n";
  EXPECT_GT(m_claims, rounds);
  EXPECT_LT(percent(m_exempted), 36.0);
  for (const EXEMPTION& exemption : m_exemptions) {
    std::cout << "  " << exemption.name << ": " << percent(exemption.claims) << "% exempted, "
              << percent(exemption.wrong) << "% wrong\n";
    EXPECT_GT(exemption.wrong, 0) << exemption.name << " exempts nothing that is wrong";
    EXPECT_LT(percent(exemption.wrong), exemption.most_wrong) << exemption.name;
  }
}

}  // namespace
