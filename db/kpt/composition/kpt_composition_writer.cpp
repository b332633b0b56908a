#include "db/kpt/composition/kpt_composition_writer.h"

#include <algorithm>
#include <utility>

#include "db/kpt/composition/kpt_machine_table.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_texts.h"
#include "db/kpt/kpt_state_table_impl.h"

// The members of a class in the two end netlists. The first register of each side
// is in its n group, so it represents the index.
struct KPT_COMPOSITION_WRITER::MEMBERS {
  NI_PAIR r;
  NI_PAIR t;
  NUMBER first = NONE;
  bool r_inverted = false;  // the first register of the side is the inverse of the leader
  bool t_inverted = false;
  bool has_r() const { return !r.first.empty(); }
  bool has_t() const { return !t.first.empty(); }
  std::size_t size(KPT_SET_ENUM set) const {
    const NI_PAIR& pair = set == KPT_REFERENCE_SET ? r : t;
    return pair.first.size() + pair.second.size();
  }
};

KPT_COMPOSITION_WRITER::KPT_COMPOSITION_WRITER(const KPT_NETLISTS& netlists, KPT_CLASSES& classes,
                                               const KPT_MACHINES& machines, const KPT_COMPOSITION_FACTS& facts,
                                               KPT_KEYPOINTS_DB_IMPL& db)
    : m_netlists(netlists), m_classes(classes), m_machines(machines.solved()), m_facts(facts), m_db(db) {
  const std::size_t first = netlists.first().size();
  const std::size_t ends = first + netlists.last().size();
  m_heads.assign(classes.size(), NONE);
  m_tails.assign(classes.size(), NONE);
  m_next.assign(ends, NONE);
  chain(netlists.first(), 0);
  chain(netlists.last(), static_cast<NUMBER>(first));
  place_machines();
}

void KPT_COMPOSITION_WRITER::chain(const KPT_NETLISTS::ENDS& ends, NUMBER from) {
  for (NUMBER k = 0; k < ends.size(); ++k) {
    const NODE leader = m_classes.find(ends[k].node).leader;
    const NUMBER number = from + k;
    (m_heads[leader] == NONE ? m_heads[leader] : m_next[m_tails[leader]]) = number;
    m_tails[leader] = number;
  }
}

// A class is a column of one machine. Where a join was too large it may be a
// column of two machines; the first machine then has it.
void KPT_COMPOSITION_WRITER::place_machines() {
  for (std::size_t k = 0; k < m_machines.size(); ++k) {
    KPT_RELATION& relation = m_machines[k].relation;
    KPT_MACHINES::resolve(relation, m_classes);
    KPT_VECTOR<std::size_t> kept;
    for (std::size_t place = 0; place < relation.columns().size(); ++place) {
      if (!m_machine_of.contains(relation.columns()[place])) {
        kept.push_back(place);
      }
    }
    if (kept.size() < relation.columns().size()) {
      relation = relation.project(kept);
      relation.settle();
    }
    if (relation.columns().size() > 1) {
      for (const NODE leader : relation.columns()) {
        m_machine_of.emplace(leader, k);
      }
    }
  }
}

void KPT_COMPOSITION_WRITER::write(KPT_STEPS& steps) {
  enter_first(steps);
  for (NUMBER number = 0; number < m_next.size(); ++number) {
    steps.next();
    fetch_behind(number);
    const NODE leader = m_classes.find(end(number).node).leader;
    if (m_heads[leader] == number) {
      write_class(leader);
    }
  }
}

namespace {

void copy_attributes(const KPT_REGISTER_KEYPOINT_IMPL& from, KPT_REGISTER_KEYPOINT_IMPL& to) {
  if (!from.attributes().empty()) {
    for (const auto& [name, value] : from.attributes().sorted()) {
      to.add_attribute(name, value);
    }
  }
}

}  // namespace

void KPT_COMPOSITION_WRITER::enter_first(KPT_STEPS& steps) {
  m_written.reserve(m_netlists.first().size());
  for (const auto& [node, keypoint, set] : m_netlists.first()) {
    steps.next();
    KPT_REGISTER_KEYPOINT_IMPL* made =
        m_db.get_reference_set()->add_register(KPT_KEYPOINTS_DB_IMPL::get_next_r_id(), set->get_texts(*keypoint));
    copy_attributes(*keypoint, *made);
    m_written.push_back(made);
  }
}

// The register in the new database. A register of the last netlist is created by this call.
KPT_KEYPOINT* KPT_COMPOSITION_WRITER::keypoint(NUMBER number) {
  if (is_first(number)) {
    return m_written[number];
  }
  const auto& [node, keypoint, set] = end(number);
  KPT_REGISTER_KEYPOINT_IMPL* made =
      m_db.get_transformed_set()->add_register(KPT_KEYPOINTS_DB_IMPL::get_next_t_id(), set->get_texts(*keypoint));
  copy_attributes(*keypoint, *made);
  return made;
}

// The registers of the last netlist are scattered in memory. Prefetches a later
// one, its hash and its name.
void KPT_COMPOSITION_WRITER::fetch_behind(NUMBER number) const {
  constexpr NUMBER STEP = 8;
  const auto next_of = [&](NUMBER ahead) { return ahead < m_netlists.first().size() ? m_next[ahead] : NONE; };
  const NUMBER far = next_of(number + 3 * STEP);
  if (far != NONE && !is_first(far)) {
    __builtin_prefetch(&end(far));
  }
  const NUMBER middle = next_of(number + 2 * STEP);
  if (middle != NONE && !is_first(middle)) {
    __builtin_prefetch(end(middle).keypoint);
  }
  const NUMBER near = next_of(number + STEP);
  if (near != NONE && !is_first(near)) {
    __builtin_prefetch(end(near).keypoint->get_element_name().data());
  }
}

KPT_COMPOSITION_WRITER::MEMBERS KPT_COMPOSITION_WRITER::members_of(NODE leader) {
  MEMBERS members;
  members.first = m_heads[leader];
  for (NUMBER number = m_heads[leader]; number != NONE; number = m_next[number]) {
    const bool inverted = m_classes.find(end(number).node).inverted;
    NI_PAIR& pair = is_first(number) ? members.r : members.t;
    bool& first_inverted = is_first(number) ? members.r_inverted : members.t_inverted;
    if (pair.first.empty()) {
      first_inverted = inverted;
    }
    (inverted == first_inverted ? pair.first : pair.second).push_back(keypoint(number));
  }
  return members;
}

// What is known of one class without a machine: a constant, copies in the last
// netlist, no fanout, or equal registers of one end netlist.
void KPT_COMPOSITION_WRITER::write_class(NODE leader) {
  const auto in_machine = m_machine_of.find(leader);
  if (in_machine != m_machine_of.end()) {
    write_machine(m_machines[in_machine->second]);
    return;
  }
  MEMBERS members = members_of(leader);
  const bool is_partial = m_classes.is_marked(leader, KPT_CLASSES::PARTIAL);
  if (m_classes.has_value(leader)) {
    const bool value = m_classes.value(leader) != (members.has_r() ? members.r_inverted : members.t_inverted);
    write_plain(leader, std::move(members), value ? KPT_STUCK_AT_ONE : KPT_STUCK_AT_ZERO, false);
  } else if (members.has_t() && (members.has_r() || is_partial || members.size(KPT_TRANSFORMED_SET) > 1)) {
    write_plain(leader, std::move(members), KPT_NOT_ELIMINATED, is_partial);
  } else if (members.has_r() && !is_partial && m_classes.is_marked(leader, KPT_CLASSES::WITHOUT_FANOUT)) {
    write_plain(leader, std::move(members), KPT_NO_FANOUT, false);
  } else if (members.size(KPT_REFERENCE_SET) > 1) {
    write_plain(leader, std::move(members), KPT_NOT_ELIMINATED, false);
  }
}

// The i group of the transformed side holds the inverse of the n group of the
// reference side.
void KPT_COMPOSITION_WRITER::write_plain(NODE leader, MEMBERS members, KPT_ELIM_ENUM status, bool is_partial) {
  if (members.has_r() && members.has_t() && members.r_inverted != members.t_inverted) {
    members.t.first.swap(members.t.second);
  }
  NI_PAIR_VECTOR r(1);
  NI_PAIR_VECTOR t(1);
  r[0] = std::move(members.r);
  t[0] = std::move(members.t);
  KPT_TRANSFORMATION_IMPL* map = m_db.add_to_transformation_set(std::move(r), std::move(t), status);
  if (is_partial) {
    map->add_attribute(KPT_PARTIAL, "yes");
  }
  if (!m_facts.empty()) {
    m_facts.hand_on(m_facts.of(leader), *map);
  }
}

// ---- Machines ----

void KPT_COMPOSITION_WRITER::write_machine(const KPT_MACHINES::MACHINE& machine) {
  const KPT_RELATION& relation = machine.relation;
  KPT_VECTOR<std::size_t> places(relation.columns().size());
  for (std::size_t k = 0; k < places.size(); ++k) {
    places[k] = k;
  }
  std::sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
    return m_heads[relation.columns()[a]] < m_heads[relation.columns()[b]];
  });
  KPT_COMPOSITION_FACTS::NUMBERS facts = machine.facts;
  KPT_VECTOR<MEMBERS> members;
  for (const std::size_t place : places) {
    const NODE leader = relation.columns()[place];
    members.push_back(members_of(leader));
    const KPT_COMPOSITION_FACTS::NUMBERS& more = m_facts.of(leader);
    facts.insert(facts.end(), more.begin(), more.end());
  }
  KPT_STATE_TABLE_IMPL table = table_of(relation, places, members);
  NI_PAIR_VECTOR r;
  NI_PAIR_VECTOR t;
  for (std::size_t k = 0; k < places.size(); ++k) {
    m_heads[relation.columns()[places[k]]] = NONE;
    if (members[k].has_r()) {
      r.push_back(std::move(members[k].r));
    }
    if (members[k].has_t()) {
      t.push_back(std::move(members[k].t));
    }
  }
  KPT_TRANSFORMATION_IMPL* map =
      m_db.add_to_transformation_set(std::move(r), std::move(t), std::move(table), KPT_NOT_ELIMINATED);
  if (!m_facts.empty()) {
    m_facts.hand_on(std::move(facts), *map);
  }
}

KPT_STATE_TABLE_IMPL KPT_COMPOSITION_WRITER::table_of(const KPT_RELATION& relation,
                                                      const KPT_VECTOR<std::size_t>& places,
                                                      const KPT_VECTOR<MEMBERS>& members) const {
  struct BIT {
    std::size_t place;
    bool inverted;
  };
  KPT_VECTOR<BIT> sides[2];
  for (std::size_t k = 0; k < places.size(); ++k) {
    if (members[k].has_r()) {
      sides[KPT_REFERENCE_SET].push_back({places[k], members[k].r_inverted});
    }
    if (members[k].has_t()) {
      sides[KPT_TRANSFORMED_SET].push_back({places[k], members[k].t_inverted});
    }
  }
  KPT_STATE_TABLE_IMPL table(static_cast<unsigned short>(relation.rows()),
                             static_cast<unsigned short>(sides[KPT_REFERENCE_SET].size()),
                             static_cast<unsigned short>(sides[KPT_TRANSFORMED_SET].size()));
  for (const KPT_SET_ENUM set : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for (std::size_t column = 0; column < sides[set].size(); ++column) {
      const auto [place, inverted] = sides[set][column];
      for (std::size_t row = 0; row < relation.rows(); ++row) {
        if (relation.bit(row, place) != inverted) {
          table.set_entry(set, static_cast<unsigned short>(row + 1), static_cast<unsigned short>(column + 1), true);
        }
      }
    }
  }
  return table;
}
