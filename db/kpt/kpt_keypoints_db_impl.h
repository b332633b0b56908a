// The layers of the library, from the top. A layer uses only the layers below
// it; scripts/includes checks this.
//   manager, handles     find databases by name; forward to what is below
//   load, composition    make a database from a file, or from several databases
//   database             finds registers by name, creates them, reports events
//   transformation set   finds the map of a register by indexes; unite/
//   map                  groups of registers, and their state table
//   keypoint set, table  registers by name; the codes of a state machine
//   keypoint             one register
//   files, then types    reading, writing, replacing files; then containers/
//   h/                   what the host provides
//
// The keypoint database of one synthesis step: the registers before it, the
// registers after it, and the maps between them.
//
// Ownership: the database owns its two keypoint sets and its transformation
// set. The manager that recorded it owns it, or else the code that created it.
//
// Ids come from two counters, one for each side, which all databases of the
// process share. Ids are saved through the host's `int` conversions, so an id
// beyond 2,147,483,647 does not survive a save.
#ifndef KPT_KEYPOINTS_DB_IMPL_H
#define KPT_KEYPOINTS_DB_IMPL_H

#include <string_view>

#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_groups.h"
#include "db/kpt/kpt_keypoint_set_impl.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "db/kpt/kpt_types.h"

class KPT_PROGRESS;
class KPT_STEPS;

class KPT_EXPORT KPT_KEYPOINTS_DB_IMPL : public KPT_ZEROED {
 public:
  explicit KPT_KEYPOINTS_DB_IMPL(std::string_view name);
  ~KPT_KEYPOINTS_DB_IMPL();
  KPT_KEYPOINTS_DB_IMPL(const KPT_KEYPOINTS_DB_IMPL&) = delete;
  KPT_KEYPOINTS_DB_IMPL& operator=(const KPT_KEYPOINTS_DB_IMPL&) = delete;

  /// The id for a new register of that side: the counter's value, which is
  /// then raised by one. The first id of a process is 0.
  /// Safe in any thread.
  static long get_next_r_id();
  static long get_next_t_id();
  /// Raises both counters beyond every id of this database: the next register
  /// of the process repeats none of them.
  void move_id_counters_past_own_ids();

  const KPT_STRING& get_db_name() const { return m_db_name; }
  KPT_KEYPOINT_SET_IMPL* get_reference_set() { return &m_reference_set; }
  KPT_KEYPOINT_SET_IMPL* get_transformed_set() { return &m_transformed_set; }
  KPT_TRANSFORMATION_SET_IMPL* get_transformation_set() { return &m_transformation_set; }

  /// Adds a register with the given id to the reference set, or for any other
  /// value of `set` to the transformed set. It replaces a register of that key.
  KPT_REGISTER_KEYPOINT_IMPL* add_to_register_set(KPT_SET_ENUM set, long id, std::string_view name);
  KPT_REGISTER_KEYPOINT_IMPL* add_to_register_set(KPT_SET_ENUM set, long id, std::string_view name,
                                                  std::string_view entity, std::string_view register_type);

  /// Adds a map with copies of the arguments, or with the arguments themselves.
  KPT_TRANSFORMATION_IMPL* add_to_transformation_set(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t,
                                                     const KPT_STATE_TABLE_IMPL& table, KPT_ELIM_ENUM status);
  KPT_TRANSFORMATION_IMPL* add_to_transformation_set(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t,
                                                     KPT_STATE_TABLE_IMPL&& table, KPT_ELIM_ENUM status);
  KPT_TRANSFORMATION_IMPL* add_to_transformation_set(const NI_PAIR_VECTOR& r, const NI_PAIR_VECTOR& t,
                                                     KPT_ELIM_ENUM status);
  KPT_TRANSFORMATION_IMPL* add_to_transformation_set(NI_PAIR_VECTOR&& r, NI_PAIR_VECTOR&& t, KPT_ELIM_ENUM status);

  /// The internal form of a client's table. An entry counts as true when it reads as anything but 0.
  KPT_STATE_TABLE_IMPL create_state_table_impl(const KPT_STATE_TABLE& table) const;

  /// The map of a signal register, or null. Block instances are not found,
  /// because that takes more than a name.
  KPT_TRANSFORMATION_IMPL* get_reference_register_transformation(std::string_view name) const;
  KPT_TRANSFORMATION_IMPL* get_transformed_register_transformation(std::string_view name) const;

  // The events that passes report. False when the event was refused. The refusal
  // of an association, an elimination or an event on a register without a map
  // issues no line. An operation that throws std::bad_alloc has changed nothing
  // and can be repeated. One exception: a merge with a state machine may be
  // recorded without the change of the table.

  /// A register that was kept 1:1. When either register exists: false, and nothing changes.
  bool associate_registers_signal_to_signal(std::string_view r_name, std::string_view t_name);
  bool associate_registers_signal_to_instance(std::string_view r_name, std::string_view t_name,
                                              std::string_view t_entity, std::string_view t_register_type);
  bool associate_registers_instance_to_signal(std::string_view r_name, std::string_view r_entity,
                                              std::string_view r_register_type, std::string_view t_name);
  bool associate_registers_instance_to_instance(std::string_view r_name, std::string_view r_entity,
                                                std::string_view r_register_type, std::string_view t_name,
                                                std::string_view t_entity, std::string_view t_register_type);
  /// A re-encoded state machine: the k-th name of each side is bit k of its
  /// encoding. When a name exists in its set: false, and nothing changes.
  bool associate_registers_fsm_signals(const KPT_STRING_VECTOR& r_names, const KPT_STRING_VECTOR& t_names,
                                       const KPT_STATE_TABLE& table);
  /// A map of any shape: groups of new registers on both sides. A map with
  /// several indices on a side needs a table. A status is about the first
  /// reference register. Null, and nothing changes, when a register exists or is
  /// named twice, or when the table has the wrong size, has no row or contradicts
  /// the status. The debug line "Error: Map not recorded: ..." then says why.
  KPT_TRANSFORMATION_IMPL* associate_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                            const KPT_STATE_TABLE* table, KPT_ELIM_ENUM status);
  /// A copy of a map of another database, without any check: it may list
  /// registers that exist, also several times, and its table may have any size.
  KPT_TRANSFORMATION_IMPL* add_groups_as_they_are(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t,
                                                  const KPT_STATE_TABLE* table, KPT_ELIM_ENUM status);
  /// A register that no map lists. When it exists: null, and nothing changes.
  KPT_REGISTER_KEYPOINT_IMPL* add_register_without_map(KPT_SET_ENUM set, const KPT_REGISTER_NAME& name);
  /// `t_name` was duplicated into the new register `replica_name`. When the
  /// map refuses, the replica stays in the transformed set, without a map.
  bool set_replicated_registers(std::string_view t_name, std::string_view replica_name);
  /// `merged_name` was folded into `kept_name`.
  bool set_merged_registers(std::string_view kept_name, std::string_view merged_name);
  /// An inverter was moved across the register.
  bool set_inverter_retimed_register(std::string_view t_name);
  bool set_eliminated_register_stuck_at_zero(std::string_view t_name);
  bool set_eliminated_register_stuck_at_one(std::string_view t_name);
  bool set_eliminated_register_no_fanout(std::string_view t_name);
  /// Without a reason the map refuses: false. The register stays in the
  /// transformed set, and the transformed index no longer finds its map.
  bool set_eliminated_register(std::string_view t_name);
  bool set_eliminated_register(std::string_view t_name, KPT_ELIM_ENUM kind);

  /// Appends the next stage, which does not change. The maps then lead from
  /// this database's reference registers to the transformed registers of `db2`.
  /// What they say can be false: docs/behaviours.md. There is no rollback. After
  /// std::bad_alloc the database spans the two stages in part; it can be used,
  /// saved and destroyed.
  /// `progress`, unless it is null, gets how far the union has come.
  bool unite_db(KPT_KEYPOINTS_DB_IMPL& db2, KPT_PROGRESS* progress = nullptr);
  /// Gives this database a pass-through map for every register that `db2` starts
  /// from and that it lacks. After std::bad_alloc the maps made so far stay.
  bool make_complete_db(KPT_KEYPOINTS_DB_IMPL& db2);
  /// Deletes the registers of a set that no map lists. The result is that of the last deletion.
  bool cleanup_reference_keypoint_set();
  bool cleanup_transformed_keypoint_set();

  /// Writes the database file. False when it cannot be opened or a part
  /// cannot be written. What the file held before is then lost.
  bool save(std::string_view file_name);
  /// Writes a new file and puts it in the place of the target. Escapes
  /// what XML needs escaped, so that every name can be read back. False,
  /// with a debug line, when a write fails, or when no file can hold a
  /// text; the message EKPT_TEXTS_CANNOT_BE_SAVED then says which. An
  /// earlier file of that name is then unchanged, and no other file is
  /// left. A process that is killed meanwhile may leave a file ".kpt-*" in
  /// the folder, which a later save that replaces the target removes if it
  /// may write it. `progress`, unless it is null, gets how far the save has come.
  bool save_atomically(std::string_view file_name, KPT_PROGRESS* progress = nullptr);

  /// Fills this database from a parsed file. False when an element follows the transformations.
  bool load_db(KPT_XML_ELEMENT& root);
  bool parse_one_keypoint_set(KPT_XML_ELEMENT& set_element);
  bool parse_one_keypoint(KPT_SET_ENUM set, KPT_XML_ELEMENT& key_point);
  void parse_one_transformation(KPT_XML_ELEMENT& transformation, KPT_XML_ELEMENT& state_table,
                                KPT_ID_KEYPOINT_HASH& r_index, KPT_ID_KEYPOINT_HASH& t_index);
  NI_PAIR parse_one_state(KPT_SET_ENUM side, KPT_XML_ELEMENT& kp_state, KPT_ID_KEYPOINT_HASH& r_index,
                          KPT_ID_KEYPOINT_HASH& t_index);
  KPT_KEYPOINT_LIST parse_one_keypoint_list(KPT_SET_ENUM side, KPT_XML_ELEMENT& list_element,
                                            KPT_ID_KEYPOINT_HASH& r_index, KPT_ID_KEYPOINT_HASH& t_index);
  KPT_STATE_TABLE_IMPL parse_state_table(KPT_XML_ELEMENT& state_table);

  /// The next id of each side. Loading raises a counter to the highest signal
  /// id that it reads, but not past it, so the next register repeats that id.
  /// The library reads and changes them as atomics. Other code may change them
  /// only while no other thread uses the library.
  static long s_r_id;
  static long s_t_id;

 private:
  friend class KPT_KEYPOINTS_MANAGER;

  KPT_KEYPOINT_SET_IMPL& set_of(KPT_SET_ENUM set) {
    return set == KPT_REFERENCE_SET ? m_reference_set : m_transformed_set;
  }
  static long& id_counter(KPT_SET_ENUM set) { return set == KPT_REFERENCE_SET ? s_r_id : s_t_id; }
  KPT_REGISTER_KEYPOINT_IMPL* create(KPT_SET_ENUM set, const KPT_REGISTER_TEXTS& texts);
  bool associate(const KPT_REGISTER_TEXTS& r, const KPT_REGISTER_TEXTS& t);
  bool any_signal_exists(KPT_SET_ENUM set, const KPT_STRING_VECTOR& names);
  void create_signals(KPT_SET_ENUM set, const KPT_STRING_VECTOR& names, KPT_KEYPOINT_LIST& created);
  KPT_KEYPOINT* create_noted(KPT_SET_ENUM set, const KPT_REGISTER_NAME& name, KPT_KEYPOINT_LIST* created);
  template <class MAKE>
  static NI_PAIR_VECTOR groups_of(const KPT_GROUPS_SIDE& side, MAKE make);
  KPT_TRANSFORMATION_IMPL* add_groups(const KPT_GROUPS_SIDE& r, const KPT_GROUPS_SIDE& t, KPT_STATE_TABLE_IMPL* states,
                                      KPT_ELIM_ENUM status, bool as_they_are);
  void take_back(KPT_SET_ENUM set, const KPT_KEYPOINT_LIST& created);
  bool make_complete_db(KPT_KEYPOINTS_DB_IMPL& db2, KPT_TRANSLATION& translation, KPT_STEPS& steps);
  bool add_pass_through(const KPT_REGISTER_KEYPOINT_IMPL& k);
  void align_pass_through(KPT_KEYPOINT* t, KPT_KEYPOINTS_DB_IMPL& db2, KPT_KEYPOINT* k);
  bool cleanup_keypoint_set(KPT_SET_ENUM set);

  KPT_KEYPOINT_SET_IMPL m_reference_set;
  KPT_KEYPOINT_SET_IMPL m_transformed_set;
  KPT_TRANSFORMATION_SET_IMPL m_transformation_set;
  KPT_STRING m_db_name;
  // The destructor of a recorded database calls this, so that the manager no longer uses the registry entry.
  void (*m_forget)(const KPT_KEYPOINTS_DB_IMPL*) = nullptr;
};

#endif
