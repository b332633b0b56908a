#include "db/kpt/kpt_transformation_set_impl.h"

#include <utility>

#include "db/kpt/containers/kpt_undo.h"
#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_translation.h"
#include "db/kpt/kpt_xml_writer.h"

KPT_TRANSFORMATION_SET_IMPL::KPT_TRANSFORMATION_SET_IMPL() = default;

KPT_TRANSFORMATION_SET_IMPL::~KPT_TRANSFORMATION_SET_IMPL() {
  for (KPT_TRANSFORMATION_IMPL* map : m_maps) {
    std::destroy_at(map);
  }
}

// Reserves memory in the list before the map is made, so that appending it cannot fail.
template <class... A>
KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::create_map(A&&... arguments) {
  m_maps.make_room();
  KPT_TRANSFORMATION_IMPL* map = m_pool.construct(std::forward<A>(arguments)...);
  m_maps.append(map);
  return map;
}

// For the copy of a set, which a union makes.
template KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::create_map(const KPT_TRANSFORMATION_IMPL&);

// Requires that memory for the entries was reserved.
void KPT_TRANSFORMATION_SET_IMPL::enter(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v,
                                        const KPT_TRANSFORMATION_IMPL& map) {
  KPT_MAP_INDEX& entries = index(side);
  const std::uint32_t position = KPT_TRANSFORMATION_LIST::position_of(map);
  KPT_TRANSFORMATION_IMPL::for_each_keypoint(
      v, [&](const KPT_KEYPOINT* k) { entries.set(KPT_KEYPOINT::slot_of(k), position); });
}

void KPT_TRANSFORMATION_SET_IMPL::make_entry_room(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v) {
  KPT_MAP_INDEX& entries = index(side);
  KPT_TRANSFORMATION_IMPL::for_each_keypoint(
      v, [&](const KPT_KEYPOINT* k) { entries.make_room(KPT_KEYPOINT::slot_of(k)); });
}

// Reserves memory for the entries of everything that the map lists.
void KPT_TRANSFORMATION_SET_IMPL::make_entry_room(const KPT_TRANSFORMATION_IMPL& map) {
  make_entry_room(KPT_REFERENCE_SET, map.r_vec());
  make_entry_room(KPT_TRANSFORMED_SET, map.t_vec());
}

// A map that cannot be entered completely is deleted.
KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::entered(KPT_TRANSFORMATION_IMPL* map) {
  KPT_UNDO undo([&] { discard(map); });
  make_entry_room(*map);
  undo.keep();
  enter_whole(*map);
  return map;
}

void KPT_TRANSFORMATION_SET_IMPL::discard(KPT_TRANSFORMATION_IMPL* map) {
  m_maps.remove(map);
  m_pool.destroy(map);
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(KPT_KEYPOINT* r, KPT_KEYPOINT* t) {
  return entered(create_map(r, t));
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(const KPT_KEYPOINT_LIST& r, const KPT_KEYPOINT_LIST& t,
                                                              const KPT_STATE_TABLE_IMPL& st) {
  return entered(create_map(r, t, st));
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t,
                                                              const KPT_STATE_TABLE_IMPL& st, KPT_ELIM_ENUM elim) {
  return entered(create_map(r, t, st, elim));
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t,
                                                              KPT_STATE_TABLE_IMPL&& st, KPT_ELIM_ENUM elim) {
  return entered(create_map(std::move(r), std::move(t), std::move(st), elim));
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t,
                                                              KPT_ELIM_ENUM elim) {
  return entered(create_map(r, t, elim));
}

KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t,
                                                              KPT_ELIM_ENUM elim) {
  return entered(create_map(std::move(r), std::move(t), elim));
}

// The walk is that of the map's own register lists, so an empty pair of the
// source issues the same debug lines as for a client.
KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::add_map(const KPT_TRANSFORMATION_IMPL& m) {
  KPT_TRANSFORMATION_IMPL* map = create_map(m);
  KPT_UNDO undo([&] { discard(map); });
  make_entry_room(m);
  undo.keep();
  const std::uint32_t position = KPT_TRANSFORMATION_LIST::position_of(*map);
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    KPT_MAP_INDEX& entries = index(side);
    for_each_register(m, side, [&](KPT_KEYPOINT* k) { entries.set(KPT_KEYPOINT::slot_of(k), position); });
  }
  return map;
}

bool KPT_TRANSFORMATION_SET_IMPL::make_keypoint_mapping_hash_entries(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v,
                                                                     KPT_TRANSFORMATION_IMPL* m) {
  if (m_maps.contains(m)) {
    make_entry_room(side, v);
    enter(side, v, *m);
  }
  return true;
}

// Erases by key only: an entry goes even when it leads to a newer map, whose
// keypoint is then not found. Merging and uniting rely on this: they enter the
// surviving map anew afterwards.
void KPT_TRANSFORMATION_SET_IMPL::erase_entries(KPT_SET_ENUM side, const KPT_TRANSFORMATION_IMPL& map) {
  KPT_MAP_INDEX& entries = index(side);
  for_each_register(map, side, [&](KPT_KEYPOINT* k) { entries.erase(KPT_KEYPOINT::slot_of(k)); });
}

bool KPT_TRANSFORMATION_SET_IMPL::delete_map(KPT_TRANSFORMATION_IMPL* m) {
  if (!m_maps.contains(m)) {
    return false;
  }
  erase_entries(KPT_REFERENCE_SET, *m);
  erase_entries(KPT_TRANSFORMED_SET, *m);
  discard(m);
  return true;
}

bool KPT_TRANSFORMATION_SET_IMPL::record_replicated_keypoint_map(KPT_KEYPOINT* replica, KPT_TRANSFORMATION_IMPL* m) {
  if (m_maps.contains(m)) {
    m_t_index.set(KPT_KEYPOINT::slot_of(replica), KPT_TRANSFORMATION_LIST::position_of(*m));
  }
  return true;
}

// Does not stop at a match, because the newest of several matching maps counts.
KPT_TRANSFORMATION_IMPL* KPT_TRANSFORMATION_SET_IMPL::find_eq_transformation_in_set(
    const KPT_TRANSFORMATION_IMPL& m) const {
  KPT_TRANSFORMATION_IMPL* found = nullptr;
  for (KPT_TRANSFORMATION_IMPL* map : m_maps) {
    if (map->t_equals_r(m)) {
      found = map;
    }
  }
  return found;
}

bool KPT_TRANSFORMATION_SET_IMPL::translate_map_set(const KPT_TRANSFORMATION_SET_IMPL& source,
                                                    const KPT_KEYPOINT_SET_IMPL& keypoints) {
  KPT_TRANSLATION translation(keypoints);
  return translate_map_set(source, translation);
}

// The source may be this set: the walk does not visit maps that are added.
bool KPT_TRANSFORMATION_SET_IMPL::translate_map_set(const KPT_TRANSFORMATION_SET_IMPL& source,
                                                    KPT_TRANSLATION& translation) {
  const KPT_TRANSFORMATION_LIST& maps = source.m_maps;
  const std::uint32_t end = maps.last_position();
  m_maps.make_room(maps.size());
  for (std::uint32_t position = 1; position <= end; ++position) {
    fetch_translated(maps, position, translation);
    const KPT_TRANSFORMATION_IMPL* map = maps.at(position);
    if (map != nullptr) {
      entered(create_map(*map, translation));
    }
  }
  return true;
}

// The namesakes of a map's registers and their index entries are scattered in
// memory, so both are prefetched.
void KPT_TRANSFORMATION_SET_IMPL::fetch_translated(const KPT_TRANSFORMATION_LIST& maps, std::uint32_t position,
                                                   const KPT_TRANSLATION& translation) const {
  constexpr std::uint32_t STEP = 8;
  const KPT_TRANSFORMATION_IMPL* far = maps.at(position + 2 * STEP);
  if (far != nullptr) {
    __builtin_prefetch(translation.known(far->get_r_n_first(0)));
    __builtin_prefetch(translation.known(far->get_t_n_first(0)));
  }
  const KPT_TRANSFORMATION_IMPL* near = maps.at(position + STEP);
  if (near != nullptr) {
    m_r_index.fetch(KPT_KEYPOINT::slot_of(translation.known(near->get_r_n_first(0))));
    m_t_index.fetch(KPT_KEYPOINT::slot_of(translation.known(near->get_t_n_first(0))));
  }
}

bool KPT_TRANSFORMATION_SET_IMPL::save_transformation_set(KPT_XML_WRITER& writer) const {
  bool ok = true;
  writer.space();
  writer.start_tag(kpt_words::TRANSFORMATIONS_SET);
  writer.new_line();
  for (const KPT_TRANSFORMATION_IMPL* map : m_maps) {
    writer.step();
    ok = map->save_transformation(writer);
  }
  writer.space();
  writer.end_tag(kpt_words::TRANSFORMATIONS_SET);
  return ok;
}
