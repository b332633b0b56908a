// All maps of one database, and the two indexes from a keypoint to its map.
//
// Ownership: the set owns its maps, but not the keypoints. A map lives from its
// `add_map` until `delete_map` or the end of the set. Pointers and handles to it
// are valid until then.
//
// An entry links a keypoint to its map, and the last writer wins: entering a
// keypoint does not look for an earlier entry. So the entry leads to the newest
// map, while older maps may list the keypoint as well. Files and unions rely on
// this: of several maps that list a register, the one that was added last
// counts. A null keypoint has no entry. When its map was deleted, an entry reads
// as absent.
//
// When memory runs out, every operation throws std::bad_alloc and has changed
// nothing, with three exceptions. After `unite` and `translate_map_set` the maps
// that were made so far stay, and the indexes agree with them. A merge with a
// state machine may be recorded without the change of its table.
//
// Cost: finding a map from a keypoint, adding a map and deleting one are
// constant time on average, whatever the number of maps.
#ifndef KPT_TRANSFORMATION_SET_IMPL_H
#define KPT_TRANSFORMATION_SET_IMPL_H

#include "db/kpt/containers/kpt_map_index.h"
#include "db/kpt/containers/kpt_pool.h"
#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_transformation_list.h"
#include "db/kpt/kpt_types.h"

class KPT_STEPS;
class KPT_TRANSLATION;

class KPT_EXPORT KPT_TRANSFORMATION_SET_IMPL : public KPT_ZEROED {
 public:
  KPT_TRANSFORMATION_SET_IMPL();
  ~KPT_TRANSFORMATION_SET_IMPL();
  KPT_TRANSFORMATION_SET_IMPL(const KPT_TRANSFORMATION_SET_IMPL&) = delete;
  KPT_TRANSFORMATION_SET_IMPL& operator=(const KPT_TRANSFORMATION_SET_IMPL&) = delete;

  /// The set's own list, in order of creation.
  const KPT_TRANSFORMATION_LIST& get_list_of_register_transformations() const { return m_maps; }

  /// A 1:1 map.
  KPT_TRANSFORMATION_IMPL* add_map(KPT_KEYPOINT* r, KPT_KEYPOINT* t);
  /// A state-machine map: one index per keypoint, copies of lists and table.
  KPT_TRANSFORMATION_IMPL* add_map(const KPT_KEYPOINT_LIST& r, const KPT_KEYPOINT_LIST& t,
                                   const KPT_STATE_TABLE_IMPL& st);
  /// The general forms, with and without a state machine. The second of each
  /// pair moves its arguments instead of copying them.
  KPT_TRANSFORMATION_IMPL* add_map(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t, const KPT_STATE_TABLE_IMPL& st,
                                   KPT_ELIM_ENUM elim);
  KPT_TRANSFORMATION_IMPL* add_map(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t, KPT_STATE_TABLE_IMPL&& st,
                                   KPT_ELIM_ENUM elim);
  KPT_TRANSFORMATION_IMPL* add_map(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t, KPT_ELIM_ENUM elim);
  KPT_TRANSFORMATION_IMPL* add_map(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t, KPT_ELIM_ENUM elim);
  /// A copy of any map. All keypoints of the copy are entered. For an empty NI pair
  /// of the copy, the "Info" line of its side is issued twice.
  KPT_TRANSFORMATION_IMPL* add_map(const KPT_TRANSFORMATION_IMPL& m);

  /// Points the entry of every keypoint in `v` to `m`: in the transformed index
  /// for the transformed side, in the reference index for any other value.
  /// Always true. When `m` is not a map of this set, nothing is entered.
  bool make_keypoint_mapping_hash_entries(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v, KPT_TRANSFORMATION_IMPL* m);

  /// Deletes the map and the entries of all keypoints that it lists. When it is
  /// not a map of this set: false, and nothing changes.
  bool delete_map(KPT_TRANSFORMATION_IMPL* m);

  /// Null when the keypoint is null or has no entry, or when its map was deleted.
  KPT_TRANSFORMATION_IMPL* get_map_of_r_keypoint(const KPT_KEYPOINT* k) const { return map_of(KPT_REFERENCE_SET, k); }
  KPT_TRANSFORMATION_IMPL* get_map_of_t_keypoint(const KPT_KEYPOINT* k) const { return map_of(KPT_TRANSFORMED_SET, k); }

  /// The same for the slot that a look-up by name returns, without reading the
  /// keypoint. Any value but the transformed side means the reference index.
  KPT_TRANSFORMATION_IMPL* get_map_of_slot(KPT_SET_ENUM side, const KPT_POOL_SLOT& slot) const {
    return m_maps.at(index(side).find(slot));
  }

  /// The position of that map, without reading the map; 0 for null.
  std::uint32_t get_position_of_map(KPT_SET_ENUM side, const KPT_KEYPOINT* k) const {
    const std::uint32_t position = index(side).find(KPT_KEYPOINT::slot_of(k));
    return m_maps.at(position) == nullptr ? 0 : position;
  }

  /// Points the transformed entry of `replica` to `m`. The map is not touched. Always true.
  bool record_replicated_keypoint_map(KPT_KEYPOINT* replica, KPT_TRANSFORMATION_IMPL* m);
  /// Allocates memory for that entry, so that setting it cannot fail.
  void make_replica_room(const KPT_KEYPOINT* replica) { m_t_index.make_room(KPT_KEYPOINT::slot_of(replica)); }

  /// The last map whose transformed side names the registers of `m`'s reference side, or null.
  KPT_TRANSFORMATION_IMPL* find_eq_transformation_in_set(const KPT_TRANSFORMATION_IMPL& m) const;

  /// Records that `merged` was merged into `orig`. The source file lists the refusals
  /// and their debug lines. False when either register has no map.
  bool merge_keypoints(KPT_REGISTER_KEYPOINT_IMPL* orig, KPT_REGISTER_KEYPOINT_IMPL* merged);
  /// Removes `k` from one group of the map's transformed side and from the
  /// transformed index. False when it was not in the group, or had no entry.
  bool delete_merged_keypoint(KPT_TRANSFORMATION_IMPL* map, KPT_KEYPOINT* k, unsigned long index, bool in_n_group);
  /// False when `k` has no map.
  bool set_inverter_retimed_register(KPT_REGISTER_KEYPOINT_IMPL* k);
  /// Records the elimination in the map, and removes the transformed entry of `k`
  /// also when the map refuses. False when `k` has no map or the map refuses.
  bool set_eliminated_map(KPT_REGISTER_KEYPOINT_IMPL* k, KPT_ELIM_ENUM status);

  /// Changes this set so that its maps lead to the transformed registers of
  /// `db2`, whose maps list the same keypoint objects. `db2` is consumed.
  bool unite(KPT_TRANSFORMATION_SET_IMPL& db2);
  /// The same. Every map that a loop passes is a step.
  bool unite(KPT_TRANSFORMATION_SET_IMPL& db2, KPT_STEPS& steps);
  /// The number of steps of a union with a copy of `db2`, as far as it is known before.
  std::size_t steps_of_union(const KPT_TRANSFORMATION_SET_IMPL& db2) const;
  /// Appends a copy of every map of `source`, with each keypoint replaced by its
  /// namesake in `keypoints`. A keypoint without a namesake is dropped.
  bool translate_map_set(const KPT_TRANSFORMATION_SET_IMPL& source, const KPT_KEYPOINT_SET_IMPL& keypoints);
  /// The same, with the results that the translation has kept.
  bool translate_map_set(const KPT_TRANSFORMATION_SET_IMPL& source, KPT_TRANSLATION& translation);

  /// Writes the "transformations_set" element. The result is that of the last map.
  bool save_transformation_set(KPT_XML_WRITER& writer) const;

  /// The number of entries of an index, also those whose map was deleted.
  std::size_t index_size(KPT_SET_ENUM side) const { return index(side).size(); }

 private:
  KPT_MAP_INDEX& index(KPT_SET_ENUM side) { return side == KPT_TRANSFORMED_SET ? m_t_index : m_r_index; }
  const KPT_MAP_INDEX& index(KPT_SET_ENUM side) const { return side == KPT_TRANSFORMED_SET ? m_t_index : m_r_index; }
  KPT_TRANSFORMATION_IMPL* map_of(KPT_SET_ENUM side, const KPT_KEYPOINT* k) const {
    return get_map_of_slot(side, KPT_KEYPOINT::slot_of(k));
  }

  // Calls `f` for every register of one side, index by index, in the order and
  // with the lines of the map's own register lists; no list is made.
  template <class F>
  static void for_each_register(const KPT_TRANSFORMATION_IMPL& map, KPT_SET_ENUM side, F f) {
    const unsigned short end =
        side == KPT_TRANSFORMED_SET ? map.get_num_transformed_registers() : map.get_num_reference_registers();
    for (unsigned short i = 0; i < end; ++i) {
      map.for_each_register_at_index(side, i, f);
    }
  }

  template <class... A>
  KPT_TRANSFORMATION_IMPL* create_map(A&&... arguments);
  KPT_TRANSFORMATION_IMPL* entered(KPT_TRANSFORMATION_IMPL* map);
  void discard(KPT_TRANSFORMATION_IMPL* map);
  void make_entry_room(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v);
  void make_entry_room(const KPT_TRANSFORMATION_IMPL& map);
  void enter(KPT_SET_ENUM side, const NI_PAIR_VECTOR& v, const KPT_TRANSFORMATION_IMPL& map);
  void enter_whole(const KPT_TRANSFORMATION_IMPL& map) {
    enter(KPT_REFERENCE_SET, map.r_vec(), map);
    enter(KPT_TRANSFORMED_SET, map.t_vec(), map);
  }
  void erase_entries(KPT_SET_ENUM side, const KPT_TRANSFORMATION_IMPL& map);

  void fetch_translated(const KPT_TRANSFORMATION_LIST& maps, std::uint32_t position,
                        const KPT_TRANSLATION& translation) const;

  bool merge_between_maps(KPT_TRANSFORMATION_IMPL& a, KPT_TRANSFORMATION_IMPL& b, KPT_KEYPOINT* orig,
                          KPT_KEYPOINT* merged);
  bool merge_within_map(KPT_TRANSFORMATION_IMPL& map, KPT_KEYPOINT* orig, KPT_KEYPOINT* merged);

  friend class KPT_UNITE;

  KPT_MAP_INDEX m_r_index;
  KPT_MAP_INDEX m_t_index;
  KPT_TRANSFORMATION_LIST m_maps;
  KPT_POOL<KPT_TRANSFORMATION_IMPL> m_pool;
};

#endif
