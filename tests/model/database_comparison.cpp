#include "tests/model/database_comparison.h"

#include <gtest/gtest.h>

#include <map>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kpt_test {

using plain::GROUP;
using plain::KEY;
using plain::MAP;
using plain::R;
using plain::SIDE;
using plain::T;

namespace {

bool has_failed() { return testing::Test::HasFatalFailure(); }

std::string text(const KEY& key) { return key.name + "/" + key.entity + "/" + key.type + (key.signal ? "" : "!"); }

std::string text(const KPT_REGISTER_KEYPOINT& handle) {
  return text(KEY{handle.is_signal(), std::string(handle.get_name()), std::string(handle.get_entity_name()),
                  std::string(handle.get_type())});
}

LINES texts(const KPT_REGISTER_KEYPOINT_LIST& handles) {
  LINES all;
  for (const KPT_REGISTER_KEYPOINT& handle : handles) {
    all.push_back(text(handle));
  }
  return all;
}

KPT_KEYPOINT_SET_IMPL& set_of(const DATABASE& real, SIDE side) {
  return side == R ? *real.impl().get_reference_set() : *real.impl().get_transformed_set();
}

}  // namespace

std::vector<KPT_TRANSFORMATION_IMPL*> DATABASE_COMPARISON::maps() const {
  std::vector<KPT_TRANSFORMATION_IMPL*> all;
  for (KPT_TRANSFORMATION_IMPL* map : m_real.set().get_list_of_register_transformations()) {
    all.push_back(map);
  }
  return all;
}

LINES DATABASE_COMPARISON::texts(const GROUP& group) const {
  LINES all;
  for (const std::size_t k : group) {
    all.push_back(text(m_plain.registers[k].key));
  }
  return all;
}

// --- the whole database ---

void DATABASE_COMPARISON::check() {
  m_keypoints.resize(m_plain.registers.size());
  for (const SIDE side : {R, T}) {
    learn_keypoints(side);
    if (has_failed()) {
      return;
    }
    check_registers(side);
    if (has_failed()) {
      return;
    }
  }
  check_maps();
  if (has_failed()) {
    return;
  }
  for (const SIDE side : {R, T}) {
    check_index(side);
    check_names(side);
    if (has_failed()) {
      return;
    }
  }
  note_facts(R, m_facts.r);
  note_facts(T, m_facts.t);
  m_plain.entered_anew.clear();
  ASSERT_EQ(index_differences(m_real.impl(), m_facts), LINES());
  ASSERT_EQ(m_lines.take_debug(), LINES());
}

void DATABASE_COMPARISON::learn_keypoints(SIDE side) {
  const GROUP& all = m_plain.sets[side];
  for (auto k = all.rbegin(); k != all.rend() && m_keypoints[*k] == nullptr; ++k) {
    m_keypoints[*k] = find_keypoint(side, *k);
    ASSERT_NE(m_keypoints[*k], nullptr) << text(m_plain.registers[*k].key);
  }
}

// The keypoint of a new register: the one that its set finds or, when the same
// event made another one of its name, the one that the newest map lists.
KPT_KEYPOINT* DATABASE_COMPARISON::find_keypoint(SIDE side, std::size_t k) const {
  const auto& [key, id, entered_as, in_set] = m_plain.registers[k];
  KPT_KEYPOINT_SET_IMPL& set = set_of(m_real, side);
  KPT_KEYPOINT* found = key.signal ? set.get_register(key.name) : set.get_register(key.name, key.entity, key.type);
  if (found != nullptr && found->get_kpid() == id) {
    return found;
  }
  found = nullptr;
  const KPT_TRANSFORMATION_IMPL& newest = *maps().back();
  for (const NI_PAIR& pair : side == R ? newest.r_vec() : newest.t_vec()) {
    for (KPT_KEYPOINT* listed : pair.first) {
      found = listed->get_kpid() == id ? listed : found;
    }
  }
  return found;
}

void DATABASE_COMPARISON::check_registers(SIDE side) {
  std::vector<long> ids;
  for (const std::size_t k : m_plain.walk(side)) {
    ids.push_back(m_plain.registers[k].id);
  }
  const KPT_KEYPOINT_SET handle = side == R ? m_real->get_reference_set() : m_real->get_transformed_set();
  ASSERT_EQ(kpt_test::texts(handle.get_list_of_registers()), texts(m_plain.walk(side)));
  std::vector<long> real_ids;
  for (const KPT_KEYPOINT* keypoint : set_of(m_real, side).get_list_of_keypoints()) {
    real_ids.push_back(keypoint->get_kpid());
  }
  ASSERT_EQ(real_ids, ids);
  ASSERT_EQ(side == R ? KPT_KEYPOINTS_DB_IMPL::s_r_id : KPT_KEYPOINTS_DB_IMPL::s_t_id, m_plain.next_id[side]);
}

void DATABASE_COMPARISON::check_maps() {
  const std::vector<KPT_TRANSFORMATION_IMPL*> real = maps();
  ASSERT_EQ(real.size(), m_plain.maps.size());
  auto next = real.begin();
  for (const auto& [number, expected] : m_plain.maps) {
    check_map(**next++, expected);
    if (has_failed()) {
      return;
    }
  }
}

void DATABASE_COMPARISON::check_map(const KPT_TRANSFORMATION_IMPL& real, const MAP& expected) {
  ASSERT_EQ(real.map_has_fsm_transformation(), expected.fsm);
  ASSERT_EQ(real.get_elim_status(), expected.status);
  for (const SIDE side : {R, T}) {
    const NI_PAIR_VECTOR& pairs = side == R ? real.r_vec() : real.t_vec();
    ASSERT_EQ(pairs.size(), expected.sides[side].size());
    for (std::size_t at = 0; at < pairs.size(); ++at) {
      check_group(pairs[at].first, expected.sides[side][at].n);
      check_group(pairs[at].second, expected.sides[side][at].i);
    }
  }
  if (expected.fsm) {
    ASSERT_EQ(plain::plain_table(real.state_table()), expected.table);
  }
}

void DATABASE_COMPARISON::check_group(const KPT_KEYPOINT_LIST& real, const GROUP& expected) {
  ASSERT_EQ(real.size(), expected.size());
  for (std::size_t at = 0; at < expected.size(); ++at) {
    ASSERT_EQ(real[at], keypoint(expected[at]));
  }
}

void DATABASE_COMPARISON::check_index(SIDE side) {
  const std::vector<KPT_TRANSFORMATION_IMPL*> real = maps();
  std::map<std::size_t, const KPT_TRANSFORMATION_IMPL*> real_of = {{plain::NONE, nullptr}};
  auto next = real.begin();
  for (const auto& [number, map] : m_plain.maps) {
    real_of[number] = *next++;
  }
  const KPT_TRANSFORMATION_SET_IMPL& set = m_real.set();
  for (const std::size_t k : m_plain.sets[side]) {
    const KPT_TRANSFORMATION_IMPL* map =
        side == R ? set.get_map_of_r_keypoint(keypoint(k)) : set.get_map_of_t_keypoint(keypoint(k));
    ASSERT_EQ(map, real_of.at(m_plain.map_number(side, k))) << text(m_plain.registers[k].key);
  }
  ASSERT_EQ(set.index_size(side == R ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET), m_plain.index[side].size());
}

void DATABASE_COMPARISON::check_names(SIDE side) {
  for (const std::string& name : *m_names[side]) {
    const KPT_TRANSFORMATION_IMPL* map = side == R ? m_real.r_map(name) : m_real.t_map(name);
    ASSERT_EQ(map == nullptr, m_plain.map_of(side, m_plain.signal(side, name)) == nullptr) << name;
  }
}

void DATABASE_COMPARISON::note_facts(SIDE side, INDEX_FACTS& facts) {
  for (const std::size_t k : m_plain.erased[side]) {
    facts.erased.insert(keypoint(k));
  }
  m_plain.erased[side].clear();
  for (const std::size_t survivor : m_plain.entered_anew) {
    for (const std::size_t k : plain::all_of(m_plain.maps.at(survivor).sides[side])) {
      facts.repointed.insert(keypoint(k));
    }
  }
}

// --- what a client is told ---

void DATABASE_COMPARISON::check_answers(SIDE side, const std::string& name) {
  const MAP* map = m_plain.map_of(side, m_plain.signal(side, name));
  const KPT_REGISTER_TRANSFORMATION handle = side == R ? m_real->get_reference_register_transformation(name)
                                                       : m_real->get_transformed_register_transformation(name);
  ASSERT_EQ(handle.is_null(), map == nullptr) << name;
  ASSERT_EQ(m_lines.take_debug(), LINES());
  if (map != nullptr) {
    check_map_answers(handle, *map);
  }
}

void DATABASE_COMPARISON::check_map_answers(const KPT_REGISTER_TRANSFORMATION& handle, const MAP& map) {
  ASSERT_EQ(handle.has_fsm(), map.fsm);
  ASSERT_EQ(handle.is_stuck_at_zero(), map.status == KPT_STUCK_AT_ZERO);
  ASSERT_EQ(handle.is_stuck_at_one(), map.status == KPT_STUCK_AT_ONE);
  ASSERT_EQ(handle.has_no_fanout(), map.status == KPT_NO_FANOUT);
  ASSERT_EQ(handle.get_number_of_states(), map.fsm ? map.table.rows : 2);
  ASSERT_EQ(handle.get_state_reference_size(), map.sides[R].size());
  ASSERT_EQ(handle.get_state_transformed_size(), map.sides[T].size());
  ASSERT_EQ(m_lines.take_debug(), LINES());
  const auto r_size = static_cast<unsigned short>(map.sides[R].size());
  const auto t_size = static_cast<unsigned short>(map.sides[T].size());
  for (unsigned short at = 0; at <= r_size; ++at) {
    check_index_answers(R, map, at, handle.get_reference(at), handle.get_reference_equivalents(at),
                        handle.get_reference_inverted_equivalents(at));
  }
  for (unsigned short at = 0; at <= t_size; ++at) {
    check_index_answers(T, map, at, handle.get_transformed(at), handle.get_transformed_equivalents(at),
                        handle.get_transformed_inverted_equivalents(at));
  }
  for (unsigned short r = 0; r <= r_size; ++r) {
    for (unsigned short t = 0; t <= t_size; ++t) {
      ASSERT_EQ(handle.is_positive_unate(r, t), map.is_unate(r, t, true));
      ASSERT_EQ(handle.is_negative_unate(r, t), map.is_unate(r, t, false));
    }
  }
}

void DATABASE_COMPARISON::check_index_answers(SIDE side, const MAP& map, unsigned short at,
                                              const KPT_REGISTER_KEYPOINT& representative,
                                              const KPT_REGISTER_KEYPOINT_LIST& equivalents,
                                              const KPT_REGISTER_KEYPOINT_LIST& inverted) {
  LINES expected;
  const LINES expected_equivalents = texts(map.equivalents(side, at, false, expected));
  const LINES expected_inverted = texts(map.equivalents(side, at, true, expected));
  ASSERT_EQ(m_lines.take_debug(), expected);
  const std::optional<std::size_t> first = map.representative(side, at);
  ASSERT_EQ(representative.is_null(), !first.has_value());
  if (first.has_value()) {
    ASSERT_EQ(text(representative), text(m_plain.registers[*first].key));
  }
  ASSERT_EQ(kpt_test::texts(equivalents), expected_equivalents);
  ASSERT_EQ(kpt_test::texts(inverted), expected_inverted);
}

}  // namespace kpt_test
