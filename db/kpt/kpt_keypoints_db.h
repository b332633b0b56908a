// The handle through which passes and consumers use a keypoint database.
//
// Ownership: none; the manager owns the database. A copy points to the same
// database. No copy is valid after the database is destroyed. Only the handle
// of the `delete_keypoints_db` call and the manager's own handle become null.
// Every call but `is_null` and `delete_keypoints_db` needs a handle that is
// not null; debug builds assert this.
#ifndef KPT_KEYPOINTS_DB_H
#define KPT_KEYPOINTS_DB_H

#include <string_view>
#include <vector>

#include "db/kpt/kpt_composition.h"
#include "db/kpt/kpt_groups.h"
#include "db/kpt/kpt_types.h"

class KPT_KEYPOINT_SET;
class KPT_PROGRESS;
class KPT_TRANSFORMATION_SET;

using KPT_KEYPOINTS_DB_LIST = std::vector<KPT_KEYPOINTS_DB, MEM_STL_ALLOCATOR<KPT_KEYPOINTS_DB>>;

class KPT_EXPORT KPT_KEYPOINTS_DB {
 public:
  explicit KPT_KEYPOINTS_DB(KPT_KEYPOINTS_DB_IMPL* db = nullptr) : m_impl(db) {}

  // Recording. Each operation returns whether the event was recorded. For some
  // refusals, a debug line under the tag "KPT" gives the reason.

  /// A register that was kept 1:1. Each side is a signal, or a block instance with
  /// its entity and type. When either register already exists: false, and nothing changes.
  bool associate_registers_signal_to_signal(std::string_view r_name, std::string_view t_name) const;
  bool associate_registers_signal_to_instance(std::string_view r_name, std::string_view t_name,
                                              std::string_view t_entity, std::string_view t_register_type) const;
  bool associate_registers_instance_to_signal(std::string_view r_name, std::string_view r_entity,
                                              std::string_view r_register_type, std::string_view t_name) const;
  bool associate_registers_instance_to_instance(std::string_view r_name, std::string_view r_entity,
                                                std::string_view r_register_type, std::string_view t_name,
                                                std::string_view t_entity, std::string_view t_register_type) const;
  /// A re-encoded state machine: the k-th name of each side is column k
  /// (from 1) of that side of the table. At most 65,535 names on each side.
  bool associate_registers_fsm_signals(const KPT_STRING_VECTOR& r_names, const KPT_STRING_VECTOR& t_names,
                                       const KPT_STATE_TABLE& table) const;

  /// A map of any shape: groups of new registers on both sides, signals as well
  /// as block instances. A map with several indices on a side needs a table. A
  /// status is about the first reference register of the first index. Returns the
  /// map's handle. When the handle is null, nothing has changed, and the debug
  /// line "Error: Map not recorded: ..." says why.
  KPT_REGISTER_TRANSFORMATION associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                               KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) const;
  KPT_REGISTER_TRANSFORMATION associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                               const KPT_STATE_TABLE& table,
                                               KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) const;

  /// A copy of a map of another database, without any check: for copying databases.
  /// It may list registers that exist, also several times, and its table may have
  /// any size, or be null. Returns the map's handle, which is never null.
  KPT_REGISTER_TRANSFORMATION add_groups_as_they_are(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                     const KPT_STATE_TABLE* table,
                                                     KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED) const;
  /// A register of which nothing else is known. Returns the register's handle,
  /// which is null when the register already existed.
  KPT_REGISTER_KEYPOINT add_register_without_map(KPT_SET_ENUM side, const KPT_REGISTER_NAME& name) const;

  // The events below name transformed signal registers. They do not find block
  // instances.

  /// Issues "%s does not exist in T", "%s already exists in T", or on success
  /// "Replicated register: %s is a replicate of %s".
  bool set_replicated_registers(std::string_view t_name, std::string_view replica_name) const;
  /// Issues "Error: Can't find %s in T set", or else "Merged registers: %s <- %s", also when the merge is refused.
  bool set_merged_registers(std::string_view kept_name, std::string_view merged_name) const;
  /// Issues "Error: Can't find %s in T set", or "Inverter retimed register %s".
  bool set_inverter_retimed_register(std::string_view t_name) const;
  /// Issues "Eliminated register stuck_at_zero %s", and so on, before it looks anything up.
  bool set_eliminated_register_stuck_at_zero(std::string_view t_name) const;
  bool set_eliminated_register_stuck_at_one(std::string_view t_name) const;
  bool set_eliminated_register_no_fanout(std::string_view t_name) const;
  /// Returns false, because an elimination needs a reason. The map of the register
  /// is no longer found by the transformed name all the same.
  bool set_eliminated_register(std::string_view t_name) const;

  KPT_TRANSFORMATION_SET get_transformation_set() const;
  const KPT_STRING& get_name() const;
  KPT_KEYPOINT_SET get_reference_set() const;
  KPT_KEYPOINT_SET get_transformed_set() const;

  /// Fills this empty database with what the stages, from first to last, say
  /// together. The stages do not change. It is exact; `unite` is not: see
  /// KPT_COMPOSITION. False, and nothing is written, when the database is not
  /// empty or is one of the stages, or when stages do not fit or contradict each
  /// other. `report`, unless it is null, and debug lines say why.
  /// When memory runs out, the database may have a part of the composition, and
  /// can only be destroyed.
  bool compose(const KPT_KEYPOINTS_DB_LIST& stages, const KPT_COMPOSITION_OPTIONS& options = {},
               KPT_COMPOSITION_REPORT* report = nullptr) const;
  /// Appends the next stage, which does not change. What this database then says can be false: `compose` is exact.
  /// `progress`, unless it is null, gets how far the union has come. When memory runs out, some maps may be united.
  bool unite(const KPT_KEYPOINTS_DB& other, KPT_PROGRESS* progress = nullptr) const;
  /// Writes the database file in place; false when it cannot be opened. True
  /// also when the disk is full or writing fails otherwise; `save_atomically`
  /// returns false in such a case. It waits until a pipe is read, and a debug line
  /// says so beforehand.
  bool save(std::string_view file_name) const;
  /// Writes a new file and puts it in the place of the target. Escapes what XML
  /// needs escaped, so that every name can be read back. Refuses texts that no
  /// file can hold (`kpt_file_can_hold`) and a database without a name, with the
  /// message EKPT_TEXTS_CANNOT_BE_SAVED. Keeps the owner and the group of an earlier
  /// file, or says with the message EKPT_OWNER_NOT_KEPT that it cannot. On failure an earlier file is unchanged,
  /// and no other file is left. A killed process may leave a file ".kpt-*", which
  /// a later save that replaces the target removes if it may write it. `progress`,
  /// unless it is null, gets how far the save has come.
  bool save_atomically(std::string_view file_name, KPT_PROGRESS* progress = nullptr) const;

  /// The map of a signal register, or a null handle.
  KPT_REGISTER_TRANSFORMATION get_reference_register_transformation(std::string_view name) const;
  KPT_REGISTER_TRANSFORMATION get_transformed_register_transformation(std::string_view name) const;

  // The map of any register, block instances included. A null handle when there
  // is none, when `keypoint` is null, and for a register of another database.

  /// The map that has the register on its reference side.
  KPT_REGISTER_TRANSFORMATION get_reference_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;
  /// The map that has the register on its transformed side.
  KPT_REGISTER_TRANSFORMATION get_transformed_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;
  /// One of the two, for the side on which the register was recorded.
  KPT_REGISTER_TRANSFORMATION get_register_transformation(const KPT_REGISTER_KEYPOINT& keypoint) const;

  /// The registers of the reference side, or for any other value those of the transformed side.
  KPT_KEYPOINT_SET get_set(KPT_SET_ENUM side) const;

  /// Raises the id counters of the process past every id of this database. Call
  /// it after a load and before anything is recorded: loading raises them only to
  /// the highest id of a signal. Two registers of one id cannot be told apart in a
  /// saved file.
  void move_id_counters_past_own_ids() const;

  /// Destroys the database and makes this handle null. False when the handle is
  /// null. Clients should call KPT_KEYPOINTS_MANAGER::destroy_keypoints_db, which
  /// also removes the database from the registry.
  bool delete_keypoints_db();

  bool is_null() const { return m_impl == nullptr; }

 private:
  friend class KPT_KEYPOINTS_MANAGER;
  friend class KPT_UNREGISTERED_DB;
  KPT_KEYPOINTS_DB_IMPL& impl() const;

  KPT_KEYPOINTS_DB_IMPL* m_impl;
};

#endif
