// The handle through which passes and consumers use a keypoint database.
//
// Ownership: none; the manager owns the database. A copy points to the same
// database, and all copies are dead once it is destroyed: only the handle on
// which `delete_keypoints_db` was called, and the manager's own, become null.
// Every call but `is_null` and `delete_keypoints_db` needs a handle that is
// not null; debug builds assert it.
#ifndef KPT_KEYPOINTS_DB_H
#define KPT_KEYPOINTS_DB_H

#include <string_view>
#include <vector>

#include "db/kpt/kpt_composition.h"
#include "db/kpt/kpt_groups.h"
#include "db/kpt/kpt_types.h"

class KPT_KEYPOINT_SET;
class KPT_TRANSFORMATION_SET;

using KPT_KEYPOINTS_DB_LIST = std::vector<KPT_KEYPOINTS_DB, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB>>;

class KPT_EXPORT KPT_KEYPOINTS_DB {
 public:
  explicit KPT_KEYPOINTS_DB(KPT_KEYPOINTS_DB_IMPL* db = nullptr) : m_impl(db) {}

  // Recording. Each answers whether the event was recorded; a reason, where
  // there is one, is a debug line under the tag "KPT".

  /// A register kept 1:1; each side is a signal, or a block instance with its
  /// entity and register type. False, changing nothing, when either exists.
  bool associate_registers_signal_to_signal(std::string_view r_name, std::string_view t_name) const;
  bool associate_registers_signal_to_instance(std::string_view r_name, std::string_view t_name,
                                              std::string_view t_entity, std::string_view t_register_type) const;
  bool associate_registers_instance_to_signal(std::string_view r_name, std::string_view r_entity,
                                              std::string_view r_register_type, std::string_view t_name) const;
  bool associate_registers_instance_to_instance(std::string_view r_name, std::string_view r_entity,
                                                std::string_view r_register_type, std::string_view t_name,
                                                std::string_view t_entity, std::string_view t_register_type) const;
  /// A re-encoded state machine: the k-th name of each side is column k
  /// (from 1) of that side of the table. At most 65,535 names a side.
  bool associate_registers_fsm_signals(const KPT_STRING_VECTOR& r_names, const KPT_STRING_VECTOR& t_names,
                                       const KPT_STATE_TABLE& table) const;

  /// A map of any shape, with signals and block instances alike: groups of new
  /// registers on both sides, with a table or, with at most one index a side,
  /// without. A status is the value of the first reference register of the
  /// first index. The map's handle, or a null one: then nothing has changed and
  /// a debug line "Error: Map not recorded: ..." tells why.
  KPT_REGISTER_TRANSFORMATION associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                               KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) const;
  KPT_REGISTER_TRANSFORMATION associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                               const KPT_STATE_TABLE& table,
                                               KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) const;

  // The events below name transformed signal registers; block instances are
  // not found by name alone.

  /// "%s does not exist in T", "%s already exists in T", or on success
  /// "Replicated register: %s is a replicate of %s".
  bool set_replicated_registers(std::string_view t_name, std::string_view replica_name) const;
  /// "Error: Can't find %s in T set", or "Merged registers: %s <- %s" whatever the result.
  bool set_merged_registers(std::string_view kept_name, std::string_view merged_name) const;
  /// "Error: Can't find %s in T set", or "Inverter retimed register %s".
  bool set_inverter_retimed_register(std::string_view t_name) const;
  /// "Eliminated register stuck_at_zero %s", and so on, before anything is looked up.
  bool set_eliminated_register_stuck_at_zero(std::string_view t_name) const;
  bool set_eliminated_register_stuck_at_one(std::string_view t_name) const;
  bool set_eliminated_register_no_fanout(std::string_view t_name) const;
  /// An elimination without a reason is always refused, and the register is
  /// then found through its transformed name no more.
  bool set_eliminated_register(std::string_view t_name) const;

  KPT_TRANSFORMATION_SET get_transformation_set() const;
  const KPT_STRING& get_name() const;
  KPT_KEYPOINT_SET get_reference_set() const;
  KPT_KEYPOINT_SET get_transformed_set() const;

  /// Fills this database, which is empty, with what the stages say together, first to last; they are left as they were.
  /// Exact where `unite` is not: see KPT_COMPOSITION. False, writing nothing, when the database is not empty or one of
  /// the stages, when two stages do not fit, or when they contradict each other; `report`, unless null, and debug lines
  /// tell why. Where memory ends the database may hold a part of the composition, and is good for nothing but to be
  /// destroyed.
  bool compose(const KPT_KEYPOINTS_DB_LIST& stages, const KPT_COMPOSITION_OPTIONS& options = {},
               KPT_COMPOSITION_REPORT* report = nullptr) const;
  /// Appends the database of the next stage, which is left as it was.
  bool unite(const KPT_KEYPOINTS_DB& other) const;
  /// Writes the database file in place; false when it cannot be opened. True
  /// also when the disk is full or writing fails otherwise: `save_atomically` is
  /// the one that tells. A pipe that nobody reads is waited for, which a debug
  /// line says beforehand.
  bool save(std::string_view file_name) const;
  /// Writes the database file beside its target and renames it, with references
  /// for what XML needs escaped, so that every name comes back; refuses texts
  /// that no file can hold (`kpt_file_can_hold`) and a database without a name,
  /// with the message EKPT_TEXTS_CANNOT_BE_SAVED. The owner and the group of an
  /// earlier file are kept where the process may, or the message
  /// EKPT_OWNER_NOT_KEPT says so. On failure an earlier file is untouched and
  /// nothing else stays; a process that is killed may leave a file ".kpt-*",
  /// which a later save that replaces the target removes if it may write it.
  bool save_atomically(std::string_view file_name) const;

  /// The map of a signal register, or a null handle.
  KPT_REGISTER_TRANSFORMATION get_reference_register_transformation(std::string_view name) const;
  KPT_REGISTER_TRANSFORMATION get_transformed_register_transformation(std::string_view name) const;

  // The map of any register, block instances included, or a null handle: also
  // for a null handle and for a register of another database.

  /// The map that has the register on its reference side.
  KPT_REGISTER_TRANSFORMATION get_reference_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;
  /// The map that has the register on its transformed side.
  KPT_REGISTER_TRANSFORMATION get_transformed_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;
  /// The one or the other, by the side that the register was recorded to.
  KPT_REGISTER_TRANSFORMATION get_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;

  /// The registers of a side: the reference side, or for any other value the transformed side.
  KPT_KEYPOINT_SET get_set(KPT_SET_ENUM side) const;

  /// Raises the id counters of the process beyond every id of this database.
  /// Call it after a load and before anything is recorded: loading raises them
  /// to the highest id of a signal, not beyond, and in a saved file two
  /// registers of one id cannot be told apart.
  void move_id_counters_past_own_ids() const;

  /// Destroys the database and makes this handle null. False when it is null
  /// already. Clients leave this to KPT_KEYPOINTS_MANAGER::destroy_keypoints_db,
  /// which takes the registry entry out as well.
  bool delete_keypoints_db();

  bool is_null() const { return m_impl == nullptr; }

 private:
  friend class KPT_KEYPOINTS_MANAGER;
  friend class KPT_UNREGISTERED_DB;
  KPT_KEYPOINTS_DB_IMPL& impl() const;

  KPT_KEYPOINTS_DB_IMPL* m_impl;
};

#endif
