// All registers of one netlist: the reference side or the transformed side of
// a database, or a set that belongs to no database.
//
// Ownership: the set owns its keypoints. A pointer to a keypoint is valid until
// the set is destroyed, also when the keypoint was deleted or replaced. Maps may
// list such a keypoint, so its texts and id stay readable, and no other keypoint
// gets its address. Only its attributes are deleted at once.
//
// Order: keypoints are visited, listed and saved in order of creation: first
// the signal registers, then the block instances.
#ifndef KPT_KEYPOINT_SET_IMPL_H
#define KPT_KEYPOINT_SET_IMPL_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "db/kpt/containers/kpt_by_slot.h"
#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_id_keypoint_hash.h"
#include "db/kpt/kpt_keypoint_index.h"
#include "db/kpt/kpt_types.h"

/// Results of look-ups that a walk keeps: for keypoints of any set, the registers of one set.
using KPT_NAMESAKES = KPT_BY_SLOT<KPT_REGISTER_KEYPOINT_IMPL*>;

class KPT_EXPORT KPT_KEYPOINT_SET_IMPL : public KPT_ZEROED {
 public:
  /// A set without a database, or one side of a database, which `get_side` of its registers returns.
  KPT_KEYPOINT_SET_IMPL();
  explicit KPT_KEYPOINT_SET_IMPL(KPT_SET_ENUM side);
  ~KPT_KEYPOINT_SET_IMPL();
  KPT_KEYPOINT_SET_IMPL(const KPT_KEYPOINT_SET_IMPL&) = delete;
  KPT_KEYPOINT_SET_IMPL& operator=(const KPT_KEYPOINT_SET_IMPL&) = delete;

  /// Adds a signal register. It silently replaces a signal of that name, so
  /// callers ask `get_register` first. Ids are not checked.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, std::string_view name);
  /// Adds a block instance, which is found by name and register type. The key
  /// does not contain the entity: an instance that differs only in its entity
  /// replaces the earlier one.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, std::string_view name, std::string_view entity,
                                           std::string_view register_type);

  /// Finds signals only. Null when absent.
  KPT_REGISTER_KEYPOINT_IMPL* get_register(std::string_view name) const;
  /// Finds block instances only; the entity is ignored.
  KPT_REGISTER_KEYPOINT_IMPL* get_register(std::string_view name, std::string_view entity,
                                           std::string_view register_type) const;

  /// The same, with texts whose hash is known.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, const KPT_REGISTER_TEXTS& texts);
  KPT_REGISTER_KEYPOINT_IMPL* get_register(const KPT_REGISTER_TEXTS& texts) const;
  /// The slot of that register, or an empty slot when it is absent. The caller
  /// can fetch what the slot leads to while the name is still being compared.
  KPT_KEYPOINT::POOL_SLOT get_slot(const KPT_REGISTER_TEXTS& texts) const;

  /// The register of this set with the same name as a register of any set, or
  /// for a block instance with the same name and type. Null when absent.
  KPT_REGISTER_KEYPOINT_IMPL* get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const;

  /// The same for a register of `other`; that set knows its hash.
  KPT_REGISTER_KEYPOINT_IMPL* get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                           const KPT_KEYPOINT_SET_IMPL& other) const;
  /// Prefetches the memory that the look-ups for the registers after this one will
  /// read. For walks over `other` that call `get_namesake`.
  void fetch_namesakes_behind(const KPT_REGISTER_KEYPOINT_IMPL& keypoint, const KPT_KEYPOINT_SET_IMPL& other) const;

  /// The texts of a register of this set, with its hash where it is known.
  KPT_REGISTER_TEXTS get_texts(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const;

  /// False when there is no such signal.
  bool delete_register(std::string_view name);
  /// False when there is no such block instance; the entity is ignored.
  bool delete_register(std::string_view name, std::string_view entity, std::string_view register_type);
  /// The same, with texts whose hash is known.
  bool delete_register(const KPT_REGISTER_TEXTS& texts) { return remove(get_register(texts)); }
  /// Deletes the register of this set that has the present texts of `keypoint`.
  /// That is usually `keypoint` itself. It is another register when `keypoint`
  /// was renamed, was deleted or is of another set. False when there is none.
  bool delete_namesake(KPT_REGISTER_KEYPOINT_IMPL& keypoint);
  /// Deletes a register of this set. It has to be the last one that was added under its key.
  void take_back(KPT_REGISTER_KEYPOINT_IMPL& keypoint);

  KPT_KEYPOINT_LIST get_list_of_keypoints() const;
  /// Keypoints by id. Of two keypoints with one id, it has the later in walking order.
  KPT_ID_KEYPOINT_HASH get_id_keypoint_hash() const;
  bool is_empty() const;

  /// Adds every register of `other` that this set lacks, with the ids
  /// next_id + 1, next_id + 2, ...; `next_id` is then the last id that was used.
  /// Ids and attributes of `other` are not copied. A register of `other` is
  /// looked up under its present name.
  bool make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id);
  /// The same. It also stores what it found in `namesakes`, unless that is null.
  bool make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id, KPT_NAMESAKES* namesakes);

  /// Writes the "key_points_set" element. When a keypoint cannot be written, it
  /// writes no further one and returns false.
  bool save_keypoint_set(KPT_SET_ENUM set, KPT_XML_WRITER& writer) const;

  /// Calls `visit(KPT_REGISTER_KEYPOINT_IMPL*)` for every keypoint that is in
  /// the set now, in the set's order, and stops when it returns false. A visit
  /// may add keypoints, which are not visited, and may delete any keypoint.
  /// For the library's own walks: no list is made.
  template <class VISIT>
  void for_each_keypoint(VISIT visit) const;

  /// The same walk, step by step. Returns the keypoint at `step` or the next
  /// one, and sets `step` to the step after it; null at the end. A walk begins
  /// with step 0. Every call takes the `count` from the beginning of the walk, so
  /// keypoints that are added meanwhile are not visited.
  KPT_REGISTER_KEYPOINT_IMPL* walk(std::size_t& step, std::size_t count) const;
  std::size_t count() const { return m_standings.size(); }

  /// The number of registers, signals and block instances.
  std::size_t size() const { return m_signal_registers.size() + m_instance_registers.size(); }

 private:
  // Which index has an entry for a keypoint.
  enum STANDING : std::uint8_t { AMONG_SIGNALS, AMONG_INSTANCES, RETIRED };
  KPT_KEYPOINT_INDEX& index(bool of_signals) { return of_signals ? m_signal_registers : m_instance_registers; }
  const KPT_KEYPOINT_INDEX& index(bool of_signals) const {
    return of_signals ? m_signal_registers : m_instance_registers;
  }
  KPT_REGISTER_KEYPOINT_IMPL* construct(long id, const KPT_REGISTER_TEXTS& texts);
  bool remove(KPT_REGISTER_KEYPOINT_IMPL* keypoint);
  void retire(KPT_REGISTER_KEYPOINT_IMPL& keypoint);
  KPT_REGISTER_TEXTS texts_of(const KPT_REGISTER_KEYPOINT_IMPL& keypoint, bool as_signal) const;
  template <class VISIT>
  bool for_each_of(STANDING standing, std::size_t end, VISIT& visit) const;

  std::uint32_t m_number;  // the set's number in the process
  KPT_KEYPOINT_INDEX::POOL m_keypoints;
  std::vector<STANDING, MEM_STL_ALLOCATOR<STANDING>> m_standings;         // of each keypoint of the pool
  std::vector<std::uint32_t, MEM_STL_ALLOCATOR<std::uint32_t>> m_hashes;  // of each key, as its index has it
  KPT_KEYPOINT_INDEX m_signal_registers;
  KPT_KEYPOINT_INDEX m_instance_registers;
};

template <class VISIT>
bool KPT_KEYPOINT_SET_IMPL::for_each_of(STANDING standing, std::size_t end, VISIT& visit) const {
  for (std::uint32_t k = 0; k < end; ++k) {
    if (m_standings[k] == standing && !visit(m_keypoints.at(k))) {
      return false;
    }
  }
  return true;
}

template <class VISIT>
void KPT_KEYPOINT_SET_IMPL::for_each_keypoint(VISIT visit) const {
  const std::size_t end = m_standings.size();
  if (for_each_of(AMONG_SIGNALS, end, visit) && m_instance_registers.size() > 0) {
    for_each_of(AMONG_INSTANCES, end, visit);
  }
}

#endif
