// Attributes of maps, which the composition combines from all stages: the passes,
// the stages, the status, and notes.
//
// Ownership: refers to the maps of the stages.
#ifndef KPT_COMPOSITION_FACTS_H
#define KPT_COMPOSITION_FACTS_H

#include <boost/unordered/unordered_flat_map.hpp>

#include "db/kpt/composition/kpt_statements.h"

class KPT_COMPOSITION_FACTS {
 public:
  using NODE = KPT_CLASSES::NODE;
  using NUMBERS = KPT_VECTOR<std::uint32_t>;

  /// Collects nothing when no map has an attribute.
  KPT_COMPOSITION_FACTS(const KPT_NETLISTS::STAGES& stages, const KPT_NETLISTS& netlists,
                        const KPT_STATEMENTS& statements, KPT_CLASSES& classes);

  bool empty() const { return m_facts.empty(); }
  /// The numbers of the maps that make a statement about the class.
  const NUMBERS& of(NODE leader) const;
  /// Gives the attributes of these maps to a map that was made from all of them.
  void hand_on(NUMBERS numbers, KPT_TRANSFORMATION_IMPL& map) const;

 private:
  KPT_VECTOR<KPT_STATEMENTS::FACT> m_facts;
  boost::unordered_flat_map<NODE, NUMBERS, boost::hash<NODE>, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const NODE, NUMBERS>>>
      m_of_class;
};

#endif
