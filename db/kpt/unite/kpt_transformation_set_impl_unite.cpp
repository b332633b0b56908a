// The union of two stages. The maps of the first stage lead from netlist 1 to
// netlist 2, and those of the second from netlist 2 to netlist 3. After the
// union, the maps of the first lead from netlist 1 to netlist 3.
//
// Maps are matched by keypoints: a register of netlist 2 is one object in the
// first stage's transformed index and in the second's reference index. The union
// consumes the second stage, so the caller passes a translated copy.
//
// Read from top to bottom: loop 1, loop 2, loop 3, leftovers.
#include <algorithm>

#include "db/kpt/containers/kpt_undo.h"
#include "db/kpt/kpt_steps.h"
#include "db/kpt/kpt_ticks.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "db/kpt/msg_kpt.h"
#include "db/kpt/unite/kpt_look_ahead.h"
#include "db/kpt/unite/kpt_polarities.h"
#include "h/cfg_sys.h"
#include "h/msg_sys.h"

namespace {

using MAP = KPT_TRANSFORMATION_IMPL;
using CANDIDATES = KPT_SMALL_VECTOR<MAP*>;

const char* name_of(const KPT_KEYPOINT* keypoint) {
  return keypoint == nullptr ? "" : keypoint->get_element_name().c_str();
}

}  // namespace

class KPT_UNITE {
 public:
  KPT_UNITE(KPT_TRANSFORMATION_SET_IMPL& first, KPT_TRANSFORMATION_SET_IMPL& second, KPT_STEPS& counted)
      : db1(first), db2(second), steps(counted) {}
  bool run();

 private:
  void loop_1_fuse_maps_of_db2();
  void loop_2_fuse_maps_of_db1();
  void loop_3_compose();
  void copy_leftovers();

  void fuse_db2_maps_fed_by(MAP& m1, unsigned short t_index);
  void fuse_db1_maps_feeding(MAP& m2, unsigned short r_index);
  void align(MAP& m1, MAP& m2, const KPT_KEYPOINT* k);
  void fuse(KPT_TRANSFORMATION_SET_IMPL& set);
  void forget(const MAP& map);
  void compose(MAP& m1);
  MAP* successor_of(MAP& m1);
  MAP* report_first_in_db2(const KPT_KEYPOINT_LIST& registers);
  void step_from(MAP& m1, MAP& m2);
  static KPT_LOOK_AHEAD look_ahead_from(const KPT_TRANSFORMATION_SET_IMPL& walked, KPT_SET_ENUM side,
                                        const KPT_TRANSFORMATION_SET_IMPL& other) {
    const KPT_SET_ENUM other_side = side == KPT_TRANSFORMED_SET ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
    return {walked.m_maps, side, other.m_maps, other.index(other_side)};
  }
  void fetch_entries_behind(const KPT_LOOK_AHEAD& look_ahead, const MAP& m1) const;
  static void report_mismatch(const MAP& m1, const MAP& m2);
  static void report_side(const MAP& map, KPT_SET_ENUM side);

  KPT_TRANSFORMATION_SET_IMPL& db1;
  KPT_TRANSFORMATION_SET_IMPL& db2;
  KPT_STEPS& steps;
  bool ok = true;  // false ends the present loop and skips the later ones
  // Members, so that a plain map needs no allocation.
  CANDIDATES candidates;
  KPT_KEYPOINT_LIST registers;
  KPT_KEYPOINT_LIST entered;
  KPT_KEYPOINT_LIST left;
  // For the registers between the stages, which loops 1 and 2 look up.
  KPT_POLARITIES t_polarities{KPT_TRANSFORMED_SET};
  KPT_POLARITIES r_polarities{KPT_REFERENCE_SET};
};

// When a set is united with itself, a copy of it is consumed.
bool KPT_TRANSFORMATION_SET_IMPL::unite(KPT_TRANSFORMATION_SET_IMPL& db2) {
  KPT_STEPS untold(nullptr, 0);
  return unite(db2, untold);
}

bool KPT_TRANSFORMATION_SET_IMPL::unite(KPT_TRANSFORMATION_SET_IMPL& db2, KPT_STEPS& steps) {
  if (&db2 != this) {
    return KPT_UNITE(*this, db2, steps).run();
  }
  KPT_TRANSFORMATION_SET_IMPL copy;
  for (const KPT_TRANSFORMATION_IMPL* map : m_maps) {
    copy.entered(copy.create_map(*map));
  }
  return KPT_UNITE(*this, copy, steps).run();
}

// A loop passes the maps that are there when it begins: some are added before the
// first loop, and loops fuse some.
std::size_t KPT_TRANSFORMATION_SET_IMPL::steps_of_union(const KPT_TRANSFORMATION_SET_IMPL& db2) const {
  return 2 * m_maps.size() + db2.m_maps.size();
}

// Each timing line counts from the start of the union, not of its loop.
bool KPT_UNITE::run() {
  const unsigned long start = gen_get_tick_count();
  loop_1_fuse_maps_of_db2();
  kpt_msg_debug("TIME: Unite loop 1 time: %s", kpt_ticks_since(start).c_str());
  loop_2_fuse_maps_of_db1();
  kpt_msg_debug("TIME: Unite loop 2 time: %s", kpt_ticks_since(start).c_str());
  loop_3_compose();
  kpt_msg_debug("TIME: Unite loop 3 time: %s", kpt_ticks_since(start).c_str());
  copy_leftovers();
  return ok;
}

// Loop 1: when one index of a first-stage map feeds several second-stage maps,
// these are fused into one.
void KPT_UNITE::loop_1_fuse_maps_of_db2() {
  const KPT_LOOK_AHEAD look_ahead = look_ahead_from(db1, KPT_TRANSFORMED_SET, db2);
  steps.begin(db1.m_maps.size());
  for (MAP* m1 : db1.m_maps) {
    if (!ok) {
      return;
    }
    steps.next();
    look_ahead.from(*m1);
    if (m1->map_has_fsm_transformation()) {
      continue;
    }
    for (unsigned short i = 0; ok && i < m1->get_num_transformed_registers(); ++i) {
      fuse_db2_maps_fed_by(*m1, i);
    }
  }
}

void KPT_UNITE::fuse_db2_maps_fed_by(MAP& m1, unsigned short t_index) {
  candidates.clear();
  m1.for_each_register_at_index(KPT_TRANSFORMED_SET, t_index, [&](KPT_KEYPOINT* k) {
    MAP* m2 = db2.get_map_of_r_keypoint(k);
    if (m2 != nullptr && !m2->map_has_fsm_transformation()) {
      align(m1, *m2, k);
      candidates.push_back(m2);
    }
  });
  fuse(db2);
}

// Loop 2: when several first-stage maps feed one index of a second-stage map,
// these are fused into one. A state machine of the second stage replaces the
// first-stage maps that feed it. Its table is about its own reference registers,
// and its composition with a plain map is not defined.
void KPT_UNITE::loop_2_fuse_maps_of_db1() {
  const KPT_LOOK_AHEAD look_ahead = look_ahead_from(db2, KPT_REFERENCE_SET, db1);
  steps.begin(db2.m_maps.size());
  for (MAP* m2 : db2.m_maps) {
    if (!ok) {
      return;
    }
    steps.next();
    look_ahead.from(*m2);
    for (unsigned short i = 0; ok && i < m2->get_num_reference_registers(); ++i) {
      fuse_db1_maps_feeding(*m2, i);
    }
    if (m2->map_has_fsm_transformation()) {
      db1.add_map(*m2);
    }
  }
}

// Lists the registers before, because aligning swaps the groups of `m2` that hold
// them.
void KPT_UNITE::fuse_db1_maps_feeding(MAP& m2, unsigned short r_index) {
  candidates.clear();
  registers.clear();
  m2.for_each_register_at_index(KPT_REFERENCE_SET, r_index, [&](KPT_KEYPOINT* k) { registers.push_back(k); });
  for (KPT_KEYPOINT* k : registers) {
    MAP* m1 = db1.get_map_of_t_keypoint(k);
    if (m1 == nullptr) {
      continue;
    }
    if (m2.map_has_fsm_transformation()) {
      forget(*m1);
      db1.delete_map(m1);
    } else {
      align(*m1, m2, k);
      candidates.push_back(m1);
    }
  }
  fuse(db1);
}

// Swaps the groups of the later stage's map unless the register has the same
// polarity in both maps.
void KPT_UNITE::align(MAP& m1, MAP& m2, const KPT_KEYPOINT* k) {
  if (t_polarities.of(m1, k).opposes(r_polarities.of(m2, k))) {
    m2.interchange_groups_of_both_sides();
    r_polarities.exchanged(m2);
  }
}

void KPT_UNITE::forget(const MAP& map) {
  t_polarities.forget(map);
  r_polarities.forget(map);
}

// Fuses the candidates into the oldest of them, and enters that map anew. Every
// other candidate is deleted, even when it could not be united.
void KPT_UNITE::fuse(KPT_TRANSFORMATION_SET_IMPL& set) {
  if (candidates.size() < 2) {
    return;
  }
  const auto older = [](const MAP* a, const MAP* b) {
    return KPT_TRANSFORMATION_LIST::position_of(*a) < KPT_TRANSFORMATION_LIST::position_of(*b);
  };
  std::sort(candidates.begin(), candidates.end(), older);
  candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
  if (candidates.size() < 2) {
    return;
  }
  for (const MAP* map : candidates) {
    set.make_entry_room(*map);
  }
  MAP* target = candidates.front();
  forget(*target);
  // Runs at every exit, also after an exception, so that everything in the target leads to it.
  const KPT_UNDO entered_anew([&] { set.enter_whole(*target); });
  for (auto other = candidates.begin() + 1; other != candidates.end(); ++other) {
    ok = ok && target->make_union(**other);
    forget(**other);
    set.delete_map(*other);
  }
}

// Loop 3: composes every plain first-stage map that is not eliminated with the
// second-stage map of its registers.
void KPT_UNITE::loop_3_compose() {
  const KPT_LOOK_AHEAD look_ahead = look_ahead_from(db1, KPT_TRANSFORMED_SET, db2);
  steps.begin(db1.m_maps.size());
  for (MAP* m1 : db1.m_maps) {
    if (!ok) {
      return;
    }
    steps.next();
    look_ahead.from(*m1);
    fetch_entries_behind(look_ahead, *m1);
    if (!m1->map_has_fsm_transformation() && m1->get_elim_status() == KPT_NOT_ELIMINATED) {
      compose(*m1);
    }
  }
}

// A step enters the registers of the second stage in the first and removes them
// from the second. This prefetches these registers, then their entries.
void KPT_UNITE::fetch_entries_behind(const KPT_LOOK_AHEAD& look_ahead, const MAP& m1) const {
  constexpr std::uint32_t NEAR = 2;
  const MAP* far = look_ahead.counterpart(m1, 2 * NEAR);
  __builtin_prefetch(far == nullptr ? nullptr : far->get_t_n_first(0));
  const MAP* near = look_ahead.counterpart(m1, NEAR);
  if (near != nullptr) {
    db1.m_t_index.fetch(KPT_KEYPOINT::slot_of(near->get_t_n_first(0)));
    db2.m_t_index.fetch(KPT_KEYPOINT::slot_of(near->get_t_n_first(0)));
  }
}

// After a mismatch is reported, the maps are composed anyway: the second stage
// may have removed a replica that the first stage recorded.
void KPT_UNITE::compose(MAP& m1) {
  MAP* m2 = successor_of(m1);
  if (m2 == nullptr || m2->map_has_fsm_transformation()) {
    return;
  }
  if (!m1.t_equals_r(*m2)) {
    report_mismatch(m1, *m2);
  }
  step_from(m1, *m2);
}

MAP* KPT_UNITE::successor_of(MAP& m1) {
  KPT_KEYPOINT* representative = m1.get_t_representative(0);
  MAP* m2 = db2.get_map_of_r_keypoint(representative);
  if (m2 != nullptr) {
    return m2;
  }
  kpt_msg_debug("Representative of db1 transformation %s is not in db2", name_of(representative));
  m2 = report_first_in_db2(m1.get_t_representative_equivalents(0));
  if (m2 == nullptr) {
    m2 = report_first_in_db2(m1.get_t_representative_inverted_equivalents(0));
  }
  if (m2 == nullptr) {
    kpt_msg_debug("Couldn't find any register in db1's transformation in db2's R set");
  }
  return m2;
}

MAP* KPT_UNITE::report_first_in_db2(const KPT_KEYPOINT_LIST& candidates_for_it) {
  for (const KPT_KEYPOINT* k : candidates_for_it) {
    MAP* m2 = db2.get_map_of_r_keypoint(k);
    if (m2 != nullptr) {
      kpt_msg_debug("Found keypoint %s in db2's R set", name_of(k));
      return m2;
    }
  }
  return nullptr;
}

// A register that already has an entry keeps it, because another map of the first
// stage got it earlier. (An entry of a deleted map does not count.) The reference
// index of the first stage gets the reference side of `m2`, the registers between
// the stages: a client that asks for a register of netlist 2 gets the map that it
// was part of.
void KPT_UNITE::step_from(MAP& m1, MAP& m2) {
  entered.clear();
  left.clear();
  db1.make_entry_room(m2);
  ok = m1.update_transformations(m2, entered, left);
  for (const KPT_KEYPOINT* k : left) {
    db1.m_t_index.erase(KPT_KEYPOINT::slot_of(k));
  }
  for (const KPT_KEYPOINT* k : entered) {
    if (db1.get_map_of_t_keypoint(k) == nullptr) {
      db1.m_t_index.set(KPT_KEYPOINT::slot_of(k), KPT_TRANSFORMATION_LIST::position_of(m1));
    }
  }
  db1.make_keypoint_mapping_hash_entries(KPT_REFERENCE_SET, m2.r_vec(), &m1);
  db2.delete_map(&m2);
}

void KPT_UNITE::report_mismatch(const MAP& m1, const MAP& m2) {
  kpt_msg_debug("UNMATCHED: The following T side of db1 was expected to match R side of db2");
  kpt_msg_debug("T set of db1:");
  report_side(m1, KPT_TRANSFORMED_SET);
  kpt_msg_debug("R set of db2:");
  report_side(m2, KPT_REFERENCE_SET);
}

void KPT_UNITE::report_side(const MAP& map, KPT_SET_ENUM side) {
  const unsigned short end =
      side == KPT_TRANSFORMED_SET ? map.get_num_transformed_registers() : map.get_num_reference_registers();
  for (unsigned short j = 0; j < end; ++j) {
    map.for_each_register_at_index(side, j,
                                   [&](const KPT_KEYPOINT* k) { kpt_msg_debug("  %d: %s", int{j}, name_of(k)); });
  }
}

// Leftovers: maps of the second stage that no first-stage map reached are copied
// only when the host asks for it. A state machine that loop 2 copied is still
// among them, so it is reported and copied a second time.
void KPT_UNITE::copy_leftovers() {
  if (!cfg_is_on("kpt_add_unmatched_transformations", false)) {
    return;
  }
  for (const MAP* map : db2.m_maps) {
    MSG_INTERNAL_ERROR::report("Unite has unmatched db2 entries", KPT_TAG, "db/kpt/kpt_transformation_set_impl", 1036);
    ok = db1.add_map(*map) != nullptr && ok;
  }
}
