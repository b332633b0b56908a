// One map: which reference registers became which transformed registers.
//
// A map has two sides, each a vector of NI pairs. A map of a re-encoded state
// machine also has the state table that relates the two encodings: NI pair k
// (from 0) of a side is column k + 1 of that side's table. An index beyond a
// side's NI pairs reads as an NI pair with two empty groups.
//
// Ownership: the map owns its vectors, lists, table and attributes, but not the
// keypoints that it lists. A listed keypoint may be null, may be in several
// groups, and need not be a register.
//
// Every operation on the r or t side, or on the n or i group, calls one
// implementation that takes the side and the group. There is one source for
// each concern: kpt_transformation_impl.cpp has the structure, and others have
// the queries, the edits, the composition and the element of the file.
#ifndef KPT_TRANSFORMATION_IMPL_H
#define KPT_TRANSFORMATION_IMPL_H

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_attributes.h"
#include "db/kpt/kpt_types.h"

class KPT_TRANSLATION;

class KPT_EXPORT KPT_TRANSFORMATION_IMPL : public KPT_ZEROED {
  enum GROUP { N_GROUP, I_GROUP };
  using KEYPOINTS = std::span<KPT_KEYPOINT* const>;

 public:
  // ---- Structure ----

  /// A register that was kept one to one: one index on each side, no state machine.
  KPT_TRANSFORMATION_IMPL(KPT_KEYPOINT* reference, KPT_KEYPOINT* transformed);
  /// A re-encoded state machine: one index for each register, which is alone in its n group.
  KPT_TRANSFORMATION_IMPL(const KPT_KEYPOINT_LIST& reference_registers, const KPT_KEYPOINT_LIST& transformed_registers,
                          const KPT_STATE_TABLE_IMPL& table);
  /// Whole sides, without a state machine.
  KPT_TRANSFORMATION_IMPL(const NI_PAIR_VECTOR& r_vector, const NI_PAIR_VECTOR& t_vector, KPT_ELIM_ENUM status);
  KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR&& r_vector, NI_PAIR_VECTOR&& t_vector, KPT_ELIM_ENUM status);
  /// Whole sides, with a state machine.
  KPT_TRANSFORMATION_IMPL(const NI_PAIR_VECTOR& r_vector, const NI_PAIR_VECTOR& t_vector,
                          const KPT_STATE_TABLE_IMPL& table, KPT_ELIM_ENUM status);
  KPT_TRANSFORMATION_IMPL(NI_PAIR_VECTOR&& r_vector, NI_PAIR_VECTOR&& t_vector, KPT_STATE_TABLE_IMPL&& table,
                          KPT_ELIM_ENUM status);
  /// A copy with every keypoint replaced by its namesake. A keypoint without a
  /// namesake is dropped. A table that a plain map stores is not copied.
  KPT_TRANSFORMATION_IMPL(const KPT_TRANSFORMATION_IMPL& other, KPT_TRANSLATION& translation);
  /// Copies everything but the attributes. They are a client's notes on one map,
  /// and a copy made for a union or a translation is another map.
  KPT_TRANSFORMATION_IMPL(const KPT_TRANSFORMATION_IMPL& other);
  KPT_TRANSFORMATION_IMPL& operator=(const KPT_TRANSFORMATION_IMPL&) = delete;
  ~KPT_TRANSFORMATION_IMPL();

  /// Compares kind, state table and groups, but not elimination status and
  /// attributes. To a caller, two maps that relate the same registers in the same
  /// way are the same map, whatever happened to the registers later.
  bool operator==(const KPT_TRANSFORMATION_IMPL& other) const;

  bool map_has_fsm_transformation() const { return m_fsm_flag; }
  KPT_ELIM_ENUM get_elim_status() const { return m_elim_status; }

  NI_PAIR_VECTOR& r_vec() { return m_r_vector; }
  NI_PAIR_VECTOR& t_vec() { return m_t_vector; }
  const NI_PAIR_VECTOR& r_vec() const { return m_r_vector; }
  const NI_PAIR_VECTOR& t_vec() const { return m_t_vector; }

  /// The number of indices of the side, modulo 65,536.
  unsigned short get_num_reference_registers() const { return static_cast<unsigned short>(m_r_vector.size()); }
  unsigned short get_num_transformed_registers() const { return static_cast<unsigned short>(m_t_vector.size()); }
  /// 2 without a state machine.
  unsigned short get_number_of_states() const;

  /// The first keypoint of the group; null when the group is empty.
  KPT_KEYPOINT* get_r_n_first(unsigned long index) const { return first(KPT_REFERENCE_SET, N_GROUP, index); }
  KPT_KEYPOINT* get_r_i_first(unsigned long index) const { return first(KPT_REFERENCE_SET, I_GROUP, index); }
  KPT_KEYPOINT* get_t_n_first(unsigned long index) const { return first(KPT_TRANSFORMED_SET, N_GROUP, index); }
  KPT_KEYPOINT* get_t_i_first(unsigned long index) const { return first(KPT_TRANSFORMED_SET, I_GROUP, index); }

  /// The first of the n group, or of the i group when the n group is empty. So a
  /// null keypoint that is first in the n group is the representative. Null for an
  /// empty index. For another value of `set`, null with a debug line.
  KPT_KEYPOINT* get_representative_kp(KPT_SET_ENUM set, unsigned long index) const;
  KPT_KEYPOINT* get_r_representative(unsigned short index) const { return representative(KPT_REFERENCE_SET, index); }
  KPT_KEYPOINT* get_t_representative(unsigned short index) const { return representative(KPT_TRANSFORMED_SET, index); }

  bool r_representative_is_in_n_group_of_map(unsigned long index) const {
    return representative_is_in_n_group(KPT_REFERENCE_SET, index);
  }
  bool t_representative_is_in_n_group_of_map(unsigned long index) const {
    return representative_is_in_n_group(KPT_TRANSFORMED_SET, index);
  }
  bool r_representative_is_in_i_group_of_map(unsigned long index) const {
    return representative_is_in_i_group(KPT_REFERENCE_SET, index);
  }
  bool t_representative_is_in_i_group_of_map(unsigned long index) const {
    return representative_is_in_i_group(KPT_TRANSFORMED_SET, index);
  }

  bool keypoint_is_in_r_n_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) const {
    return keypoint_is_in(KPT_REFERENCE_SET, N_GROUP, keypoint, index);
  }
  bool keypoint_is_in_r_i_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) const {
    return keypoint_is_in(KPT_REFERENCE_SET, I_GROUP, keypoint, index);
  }
  bool keypoint_is_in_t_n_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) const {
    return keypoint_is_in(KPT_TRANSFORMED_SET, N_GROUP, keypoint, index);
  }
  bool keypoint_is_in_t_i_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) const {
    return keypoint_is_in(KPT_TRANSFORMED_SET, I_GROUP, keypoint, index);
  }

  /// Appends a keypoint, also when the group has it. Beyond the side's indices:
  /// false, and nothing changes.
  bool add_keypoint_to_r_n_group_of_map(KPT_KEYPOINT* keypoint, unsigned long index) {
    return add_keypoint(KPT_REFERENCE_SET, N_GROUP, keypoint, index);
  }
  bool add_keypoint_to_r_i_group_of_map(KPT_KEYPOINT* keypoint, unsigned long index) {
    return add_keypoint(KPT_REFERENCE_SET, I_GROUP, keypoint, index);
  }
  bool add_keypoint_to_t_n_group_of_map(KPT_KEYPOINT* keypoint, unsigned long index) {
    return add_keypoint(KPT_TRANSFORMED_SET, N_GROUP, keypoint, index);
  }
  bool add_keypoint_to_t_i_group_of_map(KPT_KEYPOINT* keypoint, unsigned long index) {
    return add_keypoint(KPT_TRANSFORMED_SET, I_GROUP, keypoint, index);
  }

  /// Removes the first occurrence; false when there is none. A map never loses
  /// a reference register, so the reference side has no such operation.
  bool delete_keypoint_from_t_n_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) {
    return delete_t_keypoint(N_GROUP, keypoint, index);
  }
  bool delete_keypoint_from_t_i_group_of_map(const KPT_KEYPOINT* keypoint, unsigned long index) {
    return delete_t_keypoint(I_GROUP, keypoint, index);
  }

  /// Sets `*found` when the keypoint is at index 0 of the side, and returns 0 in
  /// every case. The caller clears `*found` before. When `*found` is set at the
  /// call, it stays set and nothing is searched.
  unsigned short find_index_in_r_vector(const KPT_KEYPOINT* keypoint, bool* found) const {
    return find_index(KPT_REFERENCE_SET, keypoint, found);
  }
  unsigned short find_index_in_t_vector(const KPT_KEYPOINT* keypoint, bool* found) const {
    return find_index(KPT_TRANSFORMED_SET, keypoint, found);
  }

  /// Sets or replaces the attribute. Always true.
  bool add_attribute(std::string_view name, std::string_view value) { return m_attributes.add(name, value); }
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name) { return m_attributes.remove(name); }
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const { return m_attributes.get(name); }
  const KPT_ATTRIBUTES& attributes() const { return m_attributes; }

  // ---- Queries ----

  /// The other members of the representative's group, in order, without repeats
  /// of the representative. An empty index issues a debug line.
  KPT_KEYPOINT_LIST get_r_representative_equivalents(unsigned short index) const {
    return equivalents(KPT_REFERENCE_SET, index);
  }
  KPT_KEYPOINT_LIST get_t_representative_equivalents(unsigned short index) const {
    return equivalents(KPT_TRANSFORMED_SET, index);
  }
  /// The members of the opposite group, in the same way.
  KPT_KEYPOINT_LIST get_r_representative_inverted_equivalents(unsigned short index) const {
    return inverted_equivalents(KPT_REFERENCE_SET, index);
  }
  KPT_KEYPOINT_LIST get_t_representative_inverted_equivalents(unsigned short index) const {
    return inverted_equivalents(KPT_TRANSFORMED_SET, index);
  }

  /// Whether the two representatives have the same value (positive) or inverse
  /// values (negative). False unless both are at index 0.
  bool register_association_is_unate(unsigned long r_index, unsigned long t_index, KPT_UNATE_ENUM unate) const;
  bool association_is_positive_unate(unsigned short r_index, unsigned short t_index) const {
    return register_association_is_unate(r_index, t_index, KPT_POSITIVE_UNATE);
  }
  bool association_is_negative_unate(unsigned short r_index, unsigned short t_index) const {
    return register_association_is_unate(r_index, t_index, KPT_NEGATIVE_UNATE);
  }

  bool r_representative_is_stuck_at_zero() const { return m_elim_status == KPT_STUCK_AT_ZERO; }
  bool r_representative_is_stuck_at_one() const { return m_elim_status == KPT_STUCK_AT_ONE; }
  bool has_no_fanout() const { return m_elim_status == KPT_NO_FANOUT; }
  /// True only for the status "not eliminated", in spite of the name. Callers
  /// take true to mean that the register exists.
  bool r_representative_is_eliminated() const { return m_elim_status == KPT_NOT_ELIMINATED; }

  /// A copy of the stored table. A map that never had a state machine has the
  /// identity of one register: 2 states, and one column on each side.
  KPT_STATE_TABLE_IMPL get_register_state_table() const;

  // ---- Edits ----

  /// The replica joins the group of `existing` on the transformed side. False
  /// when `existing` is not found.
  bool add_replicated_register(KPT_REGISTER_KEYPOINT_IMPL* existing, KPT_REGISTER_KEYPOINT_IMPL* replica);
  /// Moves the register to the opposite group of its index. When that inverts the
  /// representative, the column of a state table is inverted as well.
  bool set_inverter_retimed_register(KPT_KEYPOINT* retimed);
  /// Removes the register from the map for one of the reasons stuck at zero,
  /// stuck at one and no fanout. A keypoint that is the only one at its index and
  /// is listed twice counts as the last register; one occurrence remains.
  bool set_eliminated(KPT_KEYPOINT* keypoint, KPT_ELIM_ENUM status);
  /// Removes one index of the transformed side, and changes neither the reference
  /// side nor the table. False beyond the side's indices.
  bool erase_entry_in_t_state_vector(unsigned short index);
  /// Exchanges the groups of every index of the side. False, with a debug
  /// line, for another set value.
  bool interchange_registers_in_n_i_groups_of_map(KPT_SET_ENUM set);
  bool interchange_registers_in_r_n_i_groups_of_map() {
    return interchange_registers_in_n_i_groups_of_map(KPT_REFERENCE_SET);
  }
  bool interchange_registers_in_t_n_i_groups_of_map() {
    return interchange_registers_in_n_i_groups_of_map(KPT_TRANSFORMED_SET);
  }
  /// Expresses the whole map in the other polarity: exchanges the groups of
  /// every index on both sides.
  void interchange_groups_of_both_sides();
  /// Two transformed columns (from 1) have become one register. Removes the states
  /// in which they differ, and then column `b`. The sides do not change.
  bool update_state_table(unsigned short a, unsigned short b);

  // ---- Composition ----
  // An operation that throws std::bad_alloc has changed nothing.
  // A map that is combined with itself is read as it was before the call.

  /// Appends the NI pairs of `other` to this map's, on both sides. Always true.
  bool copy_map(const KPT_TRANSFORMATION_IMPL& other);
  /// Adds the keypoints of the first NI pairs of `other` to this map's first
  /// NI pairs and, when all could be added, takes over its elimination status.
  bool make_simple_union(const KPT_TRANSFORMATION_IMPL& other);
  /// Unites `other` into this map. Two state machines are refused, with a debug
  /// line. With one machine, the table is the product of both tables, and the NI
  /// pairs of `other` are appended. Without a machine it is a simple union.
  bool make_union(const KPT_TRANSFORMATION_IMPL& other);

  /// The representative, its equivalents, its inverted equivalents.
  KPT_KEYPOINT_LIST get_r_registers_at_index(unsigned short index) const {
    return registers_at_index(KPT_REFERENCE_SET, index);
  }
  KPT_KEYPOINT_LIST get_t_registers_at_index(unsigned short index) const {
    return registers_at_index(KPT_TRANSFORMED_SET, index);
  }

  /// The groups of index 0 that hold a keypoint. The searches of a map look at no
  /// other index.
  struct GROUP_MEMBERSHIP {
    bool in_n_group;
    bool in_i_group;
    bool anywhere() const { return in_n_group || in_i_group; }
    bool opposes(const GROUP_MEMBERSHIP& other) const {
      return anywhere() && other.anywhere() && in_n_group != other.in_n_group;
    }
  };
  GROUP_MEMBERSHIP membership(KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint) const;

  /// Swaps the groups of this whole map unless `keypoint`, on its reference
  /// side, has the polarity that `other` gives `other_keypoint` on its transformed
  /// side. When either keypoint is not found: false, and nothing changes.
  bool align_r_register(const KPT_KEYPOINT* keypoint, const KPT_TRANSFORMATION_IMPL* other,
                        const KPT_KEYPOINT* other_keypoint);
  /// The mirror: swaps the groups of `other` unless `other_keypoint`, on its
  /// reference side, has the polarity of `keypoint` on this map's transformed
  /// side. Both operations swap the map of the later stage, because the earlier
  /// stage decides what the values of its registers mean.
  bool align_t_register(const KPT_KEYPOINT* keypoint, KPT_TRANSFORMATION_IMPL* other,
                        const KPT_KEYPOINT* other_keypoint) const;

  /// Whether the reference side of `other` has as many indices as this map's
  /// transformed side, and lists a namesake of every register of that side, at any
  /// index and in any group.
  bool t_equals_r(const KPT_TRANSFORMATION_IMPL& other) const;

  /// The first signal register of that name; null when there is none.
  static KPT_KEYPOINT* find_register_in_s_vector(const NI_PAIR_VECTOR& side, std::string_view name);
  /// The first block instance with these three texts; null when there is none.
  static KPT_KEYPOINT* find_register_in_s_vector(const NI_PAIR_VECTOR& side, std::string_view name,
                                                 std::string_view entity_name, std::string_view register_type);

  /// Replaces this map's transformed side by that of `other`, and takes its kind,
  /// its elimination status and, from a state machine, the table. Otherwise a
  /// table of this map stays stored without a meaning. The keypoints of the old
  /// side are appended to `left`, those of the new side to `entered`.
  bool update_transformations(const KPT_TRANSFORMATION_IMPL& other, KPT_KEYPOINT_LIST& entered,
                              KPT_KEYPOINT_LIST& left);

  /// The ids in list order; a null keypoint has none and is skipped.
  static KPT_ID_LIST get_ids_in_list(const KPT_KEYPOINT_LIST& keypoints);

  /// The side with every register replaced by its namesake in `set`. A register
  /// without a namesake is dropped. An index may become empty, but stays.
  static NI_PAIR_VECTOR translate_vector(const NI_PAIR_VECTOR& side, const KPT_KEYPOINT_SET_IMPL& set);
  /// The same, with a translation that keeps the results of its look-ups.
  static NI_PAIR_VECTOR translate_vector(const NI_PAIR_VECTOR& side, KPT_TRANSLATION& translation);
  NI_PAIR_VECTOR translate_reference_vector(const KPT_KEYPOINT_SET_IMPL& set) const {
    return translate_vector(m_r_vector, set);
  }
  NI_PAIR_VECTOR translate_transformed_vector(const KPT_KEYPOINT_SET_IMPL& set) const {
    return translate_vector(m_t_vector, set);
  }

  // ---- File ----

  /// Writes the "transformation" element. When a list cannot be written, it
  /// writes no further list of the map and returns false.
  bool save_transformation(KPT_XML_WRITER& writer) const;

  // ---- The library's own walks ----
  // They make no list, and issue the debug lines of the query that makes one. A
  // visit must not change the groups that are walked. Code that has to change
  // them walks over the list.

  /// Calls `visit(KPT_KEYPOINT*)` for each register of get_{r,t}_registers_at_index.
  template <class VISIT>
  void for_each_register_at_index(KPT_SET_ENUM side, unsigned long index, VISIT&& visit) const;
  /// The same for get_{r,t}_representative_equivalents.
  template <class VISIT>
  void for_each_equivalent(KPT_SET_ENUM side, unsigned long index, VISIT&& visit) const;
  /// The same for get_{r,t}_representative_inverted_equivalents.
  template <class VISIT>
  void for_each_inverted_equivalent(KPT_SET_ENUM side, unsigned long index, VISIT&& visit) const;
  /// Calls `visit(KPT_KEYPOINT*)` for every cell of a side: index by index, n group then i group.
  template <class VISIT>
  static void for_each_keypoint(const NI_PAIR_VECTOR& side, VISIT&& visit);

  /// Allocates memory, so that a simple union with `other` cannot fail, even after the groups of `other` were swapped.
  void make_room_for(const KPT_TRANSFORMATION_IMPL& other);
  /// Takes everything of `other` but its attributes and its position. `other` can then only be destroyed.
  void take_content(KPT_TRANSFORMATION_IMPL& other) noexcept;

  /// The stored table, or the one that all plain maps share.
  const KPT_STATE_TABLE_IMPL& state_table() const;

 private:
  // The list of all maps sets and reads m_position.
  friend class KPT_TRANSFORMATION_LIST;

  const NI_PAIR_VECTOR& vec(KPT_SET_ENUM side) const { return side == KPT_REFERENCE_SET ? m_r_vector : m_t_vector; }
  NI_PAIR_VECTOR& vec(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? m_r_vector : m_t_vector; }
  // The group to change; null beyond the side's indices.
  KPT_KEYPOINT_LIST* group_to_edit(KPT_SET_ENUM side, GROUP group, unsigned long index);
  // The group to read; empty beyond the side's indices.
  KEYPOINTS group(KPT_SET_ENUM side, GROUP group, unsigned long index) const;
  KEYPOINTS representative_group(KPT_SET_ENUM side, unsigned long index) const;
  KEYPOINTS opposite_group(KPT_SET_ENUM side, unsigned long index) const;

  KPT_KEYPOINT* first(KPT_SET_ENUM side, GROUP group, unsigned long index) const;
  KPT_KEYPOINT* representative(KPT_SET_ENUM side, unsigned long index) const;
  bool representative_is_in_n_group(KPT_SET_ENUM side, unsigned long index) const;
  bool representative_is_in_i_group(KPT_SET_ENUM side, unsigned long index) const;
  bool keypoint_is_in(KPT_SET_ENUM side, GROUP group, const KPT_KEYPOINT* keypoint, unsigned long index) const;
  bool add_keypoint(KPT_SET_ENUM side, GROUP group, KPT_KEYPOINT* keypoint, unsigned long index);
  bool delete_t_keypoint(GROUP group, const KPT_KEYPOINT* keypoint, unsigned long index);
  unsigned short find_index(KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint, bool* found) const;

  KPT_KEYPOINT_LIST equivalents(KPT_SET_ENUM side, unsigned long index) const;
  KPT_KEYPOINT_LIST inverted_equivalents(KPT_SET_ENUM side, unsigned long index) const;
  KPT_KEYPOINT_LIST registers_at_index(KPT_SET_ENUM side, unsigned long index) const;
  template <class VISIT>
  static void visit_others(KEYPOINTS group, const KPT_KEYPOINT* representative, VISIT& visit);
  static void report_empty_index(KPT_SET_ENUM side);

  KPT_STATE_TABLE_IMPL& state_table_to_edit();
  bool change_t_group(KPT_KEYPOINT* keypoint, GROUP from, GROUP to, unsigned short index);
  bool is_last_t_register(const KPT_KEYPOINT* keypoint, unsigned long index) const;
  bool is_last_of_representatives(const KPT_KEYPOINT* keypoint, unsigned long index) const;
  bool delete_eliminated(const KPT_KEYPOINT* keypoint, unsigned long index);
  bool set_stuck_at(const KPT_KEYPOINT* keypoint, unsigned short index, KPT_ELIM_ENUM status);
  bool set_no_fanout(const KPT_KEYPOINT* keypoint, unsigned short index);

  bool append_group(KPT_SET_ENUM side, GROUP group, const KPT_TRANSFORMATION_IMPL& other);
  static bool align(const GROUP_MEMBERSHIP& earlier, const GROUP_MEMBERSHIP& later, KPT_TRANSFORMATION_IMPL& later_map);

  NI_PAIR_VECTOR m_r_vector;
  NI_PAIR_VECTOR m_t_vector;
  KPT_ELIM_ENUM m_elim_status;
  // The map's position in the order of creation of its set; 0 outside a set. It
  // shares a word with the flag: a map has 104 bytes, and another word would add
  // eight.
  std::uint32_t m_position : 31 = 0;
  bool m_fsm_flag : 1;  // with a state machine
  // Made when it is first changed. Until then a plain map has the shared identity.
  std::unique_ptr<KPT_STATE_TABLE_IMPL> m_state_table;
  KPT_ATTRIBUTES m_attributes;
};

// Every walk over a group calls these, so they are inline.

inline KPT_TRANSFORMATION_IMPL::KEYPOINTS KPT_TRANSFORMATION_IMPL::group(KPT_SET_ENUM side, GROUP group,
                                                                         unsigned long index) const {
  const NI_PAIR_VECTOR& pairs = vec(side);
  if (index >= pairs.size()) {
    return {};
  }
  return group == N_GROUP ? KEYPOINTS(pairs[index].first) : KEYPOINTS(pairs[index].second);
}

inline KPT_TRANSFORMATION_IMPL::KEYPOINTS KPT_TRANSFORMATION_IMPL::representative_group(KPT_SET_ENUM side,
                                                                                        unsigned long index) const {
  const KEYPOINTS n_group = group(side, N_GROUP, index);
  return n_group.empty() ? group(side, I_GROUP, index) : n_group;
}

inline KPT_TRANSFORMATION_IMPL::KEYPOINTS KPT_TRANSFORMATION_IMPL::opposite_group(KPT_SET_ENUM side,
                                                                                  unsigned long index) const {
  return group(side, N_GROUP, index).empty() ? KEYPOINTS() : group(side, I_GROUP, index);
}

inline KPT_KEYPOINT* KPT_TRANSFORMATION_IMPL::first(KPT_SET_ENUM side, GROUP group, unsigned long index) const {
  const KEYPOINTS keypoints = this->group(side, group, index);
  return keypoints.empty() ? nullptr : keypoints.front();
}

inline KPT_KEYPOINT* KPT_TRANSFORMATION_IMPL::representative(KPT_SET_ENUM side, unsigned long index) const {
  const KEYPOINTS keypoints = representative_group(side, index);
  return keypoints.empty() ? nullptr : keypoints.front();
}

inline bool KPT_TRANSFORMATION_IMPL::keypoint_is_in(KPT_SET_ENUM side, GROUP group, const KPT_KEYPOINT* keypoint,
                                                    unsigned long index) const {
  const KEYPOINTS keypoints = this->group(side, group, index);
  return std::find(keypoints.begin(), keypoints.end(), keypoint) != keypoints.end();
}

// Looks at index 0 only: a register at another index counts as not found. The
// edits and the events on a set rely on this. On a map with several indices they
// refuse such a register. With a wider search they would change state encodings
// that no pass has reported.
inline unsigned short KPT_TRANSFORMATION_IMPL::find_index(KPT_SET_ENUM side, const KPT_KEYPOINT* keypoint,
                                                          bool* found) const {
  if (found != nullptr && !*found) {
    *found = keypoint_is_in(side, N_GROUP, keypoint, 0) || keypoint_is_in(side, I_GROUP, keypoint, 0);
  }
  return 0;
}

template <class VISIT>
void KPT_TRANSFORMATION_IMPL::for_each_register_at_index(KPT_SET_ENUM side, unsigned long index, VISIT&& visit) const {
  const KEYPOINTS own = representative_group(side, index);
  if (!own.empty()) {
    visit(own.front());
  }
  for_each_equivalent(side, index, visit);
  for_each_inverted_equivalent(side, index, visit);
}

template <class VISIT>
void KPT_TRANSFORMATION_IMPL::for_each_equivalent(KPT_SET_ENUM side, unsigned long index, VISIT&& visit) const {
  const KEYPOINTS own = representative_group(side, index);
  if (own.empty()) {
    report_empty_index(side);
    return;
  }
  visit_others(own, own.front(), visit);
}

template <class VISIT>
void KPT_TRANSFORMATION_IMPL::for_each_inverted_equivalent(KPT_SET_ENUM side, unsigned long index,
                                                           VISIT&& visit) const {
  const KEYPOINTS own = representative_group(side, index);
  if (own.empty()) {
    report_empty_index(side);
    return;
  }
  visit_others(opposite_group(side, index), own.front(), visit);
}

template <class VISIT>
void KPT_TRANSFORMATION_IMPL::for_each_keypoint(const NI_PAIR_VECTOR& side, VISIT&& visit) {
  for (const NI_PAIR& pair : side) {
    for (KPT_KEYPOINT* keypoint : pair.first) {
      visit(keypoint);
    }
    for (KPT_KEYPOINT* keypoint : pair.second) {
      visit(keypoint);
    }
  }
}

template <class VISIT>
void KPT_TRANSFORMATION_IMPL::visit_others(KEYPOINTS group, const KPT_KEYPOINT* representative, VISIT& visit) {
  for (KPT_KEYPOINT* keypoint : group) {
    if (keypoint != representative) {
      visit(keypoint);
    }
  }
}

#endif
