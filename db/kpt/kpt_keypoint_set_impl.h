// All registers of one netlist: the reference side or the transformed side of
// a database, or a set of its own.
//
// Ownership: the set owns its keypoints. A pointer to one is good until the
// set is destroyed, also after the keypoint was deleted or another took over
// its name: maps may still list it, so its texts and id stay readable and its
// address is given to no other. Only its attributes go at once.
//
// Order: keypoints are walked, listed and saved in order of creation, signal
// registers first, then block instances.
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

/// What walks remember of look-ups: from the keypoints of any set to registers of one set.
using KPT_NAMESAKES = KPT_BY_SLOT<KPT_REGISTER_KEYPOINT_IMPL*>;

class KPT_EXPORT KPT_KEYPOINT_SET_IMPL : public KPT_ZEROED {
 public:
  /// A set of its own, or one side of a database, which its registers then tell.
  KPT_KEYPOINT_SET_IMPL();
  explicit KPT_KEYPOINT_SET_IMPL(KPT_SET_ENUM side);
  ~KPT_KEYPOINT_SET_IMPL();
  KPT_KEYPOINT_SET_IMPL(const KPT_KEYPOINT_SET_IMPL&) = delete;
  KPT_KEYPOINT_SET_IMPL& operator=(const KPT_KEYPOINT_SET_IMPL&) = delete;

  /// Adds a signal register. A signal of that name leaves the set without a
  /// word: callers ask `get_register` first. Ids are not checked.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, std::string_view name);
  /// Adds a block instance, found by name and register type. The entity is no
  /// part of the key: an instance that differs in its entity alone takes the
  /// place of the earlier one.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, std::string_view name, std::string_view entity,
                                           std::string_view register_type);

  /// Looks among the signals alone. Null when absent.
  KPT_REGISTER_KEYPOINT_IMPL* get_register(std::string_view name) const;
  /// Looks among the block instances alone; the entity is ignored.
  KPT_REGISTER_KEYPOINT_IMPL* get_register(std::string_view name, std::string_view entity,
                                           std::string_view register_type) const;

  /// The same by texts whose hash is known.
  KPT_REGISTER_KEYPOINT_IMPL* add_register(long id, const KPT_REGISTER_TEXTS& texts);
  KPT_REGISTER_KEYPOINT_IMPL* get_register(const KPT_REGISTER_TEXTS& texts) const;
  /// The slot of that register, or the slot of nothing when it is absent: what
  /// it leads to is on its way from memory while its name is still being compared.
  KPT_KEYPOINT::POOL_SLOT get_slot(const KPT_REGISTER_TEXTS& texts) const;

  /// The register of this set that a register of any set is called after: by
  /// its name, or for a block instance by its name and type. Null when absent.
  KPT_REGISTER_KEYPOINT_IMPL* get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const;

  /// The same for a register of `other`, whose hash that set knows.
  KPT_REGISTER_KEYPOINT_IMPL* get_namesake(const KPT_REGISTER_KEYPOINT_IMPL& keypoint,
                                           const KPT_KEYPOINT_SET_IMPL& other) const;
  /// Asks for the memory in which the namesakes of the registers behind that
  /// one are looked up. For walks over `other` that call `get_namesake`.
  void fetch_namesakes_behind(const KPT_REGISTER_KEYPOINT_IMPL& keypoint, const KPT_KEYPOINT_SET_IMPL& other) const;

  /// What a register of this set is called, with its hash where it is known.
  KPT_REGISTER_TEXTS get_texts(const KPT_REGISTER_KEYPOINT_IMPL& keypoint) const;

  /// False when there is no such signal.
  bool delete_register(std::string_view name);
  /// False when there is no such block instance; the entity is ignored.
  bool delete_register(std::string_view name, std::string_view entity, std::string_view register_type);
  /// The same by texts whose hash is known.
  bool delete_register(const KPT_REGISTER_TEXTS& texts) { return remove(get_register(texts)); }
  /// Deletes the register that is called as this one is now: mostly this very
  /// one, another when it was renamed, has left the set or is of another set.
  /// False when there is none.
  bool delete_namesake(KPT_REGISTER_KEYPOINT_IMPL& keypoint);
  /// Deletes a register of this set that is the last to have been added under its key.
  void take_back(KPT_REGISTER_KEYPOINT_IMPL& keypoint);

  KPT_KEYPOINT_LIST get_list_of_keypoints() const;
  /// From id to keypoint; of two with one id the later in walking order wins.
  KPT_ID_KEYPOINT_HASH get_id_keypoint_hash() const;
  bool is_empty() const;

  /// Adds every register of `other` that this set lacks, with the ids
  /// next_id + 1, next_id + 2, ...; `next_id` is left at the last id used. Ids
  /// and attributes of `other` are not carried over. A register of `other` is
  /// looked up under the name that it has now.
  bool make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id);
  /// The same, and enters in `namesakes`, unless null, what it found.
  bool make_union(KPT_KEYPOINT_SET_IMPL& other, long& next_id, KPT_NAMESAKES* namesakes);

  /// Writes the "key_points_set" element. False once a keypoint could not be
  /// written; the rest is then left out.
  bool save_keypoint_set(KPT_SET_ENUM set, KPT_XML_WRITER& writer) const;

  /// Calls `visit(KPT_REGISTER_KEYPOINT_IMPL*)` for every keypoint that is in
  /// the set now, in the set's order, and stops when it returns false.
  /// Keypoints that the visits add are not walked; those that they delete may be
  /// any. For the library's own walks: no list is made.
  template <class VISIT>
  void for_each_keypoint(VISIT visit) const;

  /// The same walk, step by step: the keypoint at `step` or the next one
  /// behind it, with `step` behind that; null at the end. Begins with step 0 and
  /// takes the `count` of the begin every time: keypoints that are added
  /// meanwhile are not walked.
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

  std::uint32_t m_number;  // of this set, in the process
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
