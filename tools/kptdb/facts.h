// The facts of a database about every register, as waves, audits and exports need them.
//
// A fact is what one map says. A plain fact has one value, and each of its registers holds
// this value or the inverse. A fact about a state machine has one value for each column of
// both sides, and a list of the codes that the columns take together. What a map does not
// say for certain is not a fact: a machine whose table does not fit its sides says nothing.
//
// Ownership: everything here points into a database and is valid as long as the database exists.
#ifndef KPTDB_FACTS_H
#define KPTDB_FACTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/kpt/kpt.h"

namespace kptdb {

/// A register in a fact: the value of its column, or the inverse.
struct FACT_MEMBER {
  KPT_REGISTER_KEYPOINT reg;
  bool transformed = false;
  bool inverse = false;
  std::uint32_t column = 0;  // from 0, on its side
};

enum FACT_KIND { PLAIN_FACT, CONSTANT_FACT, MACHINE_FACT, UNUSED_FACT, NO_FACT };

struct FACT {
  KPT_REGISTER_TRANSFORMATION map;
  FACT_KIND kind = NO_FACT;
  bool constant = false;  // the value, of a constant fact
  /// A state machine that says nothing, because its table does not fit its sides.
  bool is_misfit = false;
  std::uint32_t first_member = 0;  // reference registers first, each side in order of columns
  std::uint32_t end_member = 0;
  std::uint32_t r_columns = 0;
  std::uint32_t t_columns = 0;
};

/// A register and the fact about it, if there is one.
struct SUBJECT {
  static constexpr std::uint32_t NONE = ~std::uint32_t{0};
  KPT_REGISTER_KEYPOINT reg;
  std::uint32_t fact = NONE;
  std::uint32_t member = NONE;
};

/// The codes of one state of a machine: character k is the bit of column k.
using CODE_PAIR = std::pair<std::string, std::string>;

class FACTS {
 public:
  explicit FACTS(const KPT_KEYPOINTS_DB& db);

  const std::vector<FACT>& all() const { return m_facts; }
  /// The reference registers, in the order of a saved file.
  const std::vector<SUBJECT>& subjects() const { return m_subjects; }
  /// The transformed registers, in the same order.
  const std::vector<SUBJECT>& successors() const { return m_successors; }
  const FACT_MEMBER& member(std::size_t k) const { return m_members[k]; }
  /// The fact about a register. For a register without a map it says nothing.
  const FACT& fact_of(const SUBJECT& subject) const;
  /// Visits the transformed registers that hold the register's value or the inverse; none for the bit of a machine.
  template <class VISITOR>
  void for_each_copy(const SUBJECT& subject, VISITOR visit) const {
    const FACT& fact = fact_of(subject);
    if (fact.kind == MACHINE_FACT || fact.kind == NO_FACT) {
      return;
    }
    for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
      if (m_members[k].transformed) {
        visit(m_members[k], m_members[k].inverse != m_members[subject.member].inverse);
      }
    }
  }
  /// The value of a constant register.
  std::optional<bool> constant_of(const SUBJECT& subject) const;
  std::vector<CODE_PAIR> codes_of(const FACT& fact) const;

 private:
  class MEMBERS;

  void add_fact(const KPT_REGISTER_TRANSFORMATION& map);
  void add_members(const FACT& fact, KPT_SET_ENUM side);

  std::vector<FACT> m_facts;
  std::vector<FACT_MEMBER> m_members;
  std::vector<SUBJECT> m_subjects;
  std::vector<SUBJECT> m_successors;
  FACT m_none;
};

/// The name of a register in a dump or in another tool. For a block instance it
/// is the pin, "name<divider>pin".
std::string name_in_netlist(const KPT_REGISTER_KEYPOINT& reg, char divider);

inline std::string_view name_of(const KPT_REGISTER_KEYPOINT& reg) { return reg.get_name(); }

}  // namespace kptdb

#endif
