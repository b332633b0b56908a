// Builds a database from the elements of a file, in the order in which a source
// meets them. It stores only what one register or one state of a table needs, and
// the present map; never the file.
//
// Ownership: owns the database until `take`, and the texts of the present
// element. Arguments are read only during a call.
//
// A source calls `start` and `end` for each element, `text` for the text between,
// `start_reference` and `end_reference` around the content of an entity, and
// `instruction`. The builder accepts any order, but the source has to pair starts
// and ends.
//
// The content of a reference is not read, except for its text and for values of
// tables in it. But a reference or an instruction counts as a child of its name:
// in a document tree they are nodes like elements, and the XML classes of this
// library show them in this way.
#ifndef KPT_DATABASE_BUILDER_H
#define KPT_DATABASE_BUILDER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "db/kpt/files/kpt_state_values.h"
#include "db/kpt/kpt_element_attributes.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/load/kpt_by_side.h"
#include "db/kpt/load/kpt_id_index.h"
#include "db/kpt/load/kpt_load_lines.h"

class KPT_DATABASE_BUILDER {
 public:
  /// Called once the database's name is known, and returns the database. Null: nothing is built.
  using CREATE = std::function<KPT_KEYPOINTS_DB_IMPL*(std::string_view name)>;

  KPT_DATABASE_BUILDER(CREATE create, KPT_LOAD_LINES& lines);

  void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes);
  void end();
  void text(std::string_view piece);
  /// Whether a text at the present position has a meaning.
  bool wants_text() const { return m_path[m_depth] == TEXT || m_path[m_depth] == VALUES; }
  void start_reference(std::string_view name);
  void end_reference() { end(); }
  void instruction(std::string_view target, std::string_view data);

  /// The name that the file gives its database.
  const KPT_STRING& name() const { return m_name; }
  bool has_database() const { return m_db != nullptr; }
  /// Called once, after the last element. Returns the database with its content,
  /// or null when an element followed the transformations. In both cases it
  /// raises the id counters of the process to the ids of the file.
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> take();

 private:
  // The meaning of an open element. Below a leaf, all elements have the same meaning.
  enum ROLE : std::uint8_t {
    DOCUMENT,
    ROOT,
    KEYPOINT_SET,
    KEYPOINT,
    MAPS,
    MAP,
    PART,         // part of a map: a side, the state table, or both
    STATE,        // state of a side, of the table, or of both
    GROUP,        // group in the state of a side
    PASSED_OVER,  // the roles from here on are leaves
    TEXT,         // text of a keypoint
    VALUES        // values of one side of a state of a table
  };
  static bool is_leaf(ROLE role) { return role >= PASSED_OVER; }

  // A child that is found by its name: the first one counts.
  struct NAMED_TEXT {
    bool is_there = false;
    KPT_STRING text;
  };
  enum KEYPOINT_TEXT : std::uint8_t { NAME, ENTITY, REG_TYPE, NO_TEXT };

  ROLE& role() { return m_path[m_depth]; }
  void push(ROLE role);
  ROLE child(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE named_child(std::string_view name);
  ROLE passed_over(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes);
  template <class OWNER>
  void hand_attributes_to(OWNER* owner);
  ROLE start_root(const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE start_child_of_root(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE start_keypoint(const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE start_maps(std::string_view name);
  ROLE start_part(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE start_state(const KPT_ELEMENT_ATTRIBUTES& attributes);
  ROLE keypoint_text(std::string_view name);
  ROLE child_of_state(std::string_view name);
  ROLE group(KPT_KEYPOINT_LIST& list, bool& is_there);
  ROLE values(KPT_SET_ENUM side);
  void start_table(const KPT_ELEMENT_ATTRIBUTES& attributes);

  void finish(ROLE role);
  void finish_set(ROLE role);
  void finish_keypoint();
  void finish_map();
  void finish_state();
  void enter_values(KPT_SET_ENUM side);

  int number(const KPT_ELEMENT_ATTRIBUTES& attributes, std::string_view name);

  CREATE m_create;
  KPT_LOAD_LINES& m_lines;
  KPT_STRING m_name;
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> m_db;
  KPT_BY_SIDE<long> m_highest_ids;  // of the signals that were read, by side
  bool m_had_maps = false;
  bool m_has_more = false;
  unsigned long m_start = 0;  // ticks

  static constexpr std::size_t DEEPEST = 8;
  std::array<ROLE, DEEPEST> m_path;
  std::size_t m_depth = 0;
  std::size_t m_below_leaf = 0;  // open elements and references
  KPT_STRING m_number;

  KPT_ATTRIBUTE_LIST m_attributes;  // of the present register or map

  // The present set and register.
  KPT_SET_ENUM m_set = KPT_REFERENCE_SET;
  long m_id = 0;
  bool m_is_register = false;
  KEYPOINT_TEXT m_text = NO_TEXT;
  std::array<NAMED_TEXT, 3> m_texts;

  // The present map.
  KPT_BY_SIDE<KPT_ID_INDEX> m_ids;
  KPT_BY_SIDE<NI_PAIR_VECTOR> m_sides;
  KPT_ELIM_ENUM m_status = KPT_NOT_ELIMINATED;
  bool m_has_table = false;
  KPT_STATE_TABLE_IMPL m_table;

  // The present part of the map, and its present state.
  bool m_part_is_side = false;
  bool m_part_is_table = false;
  KPT_SET_ENUM m_side = KPT_REFERENCE_SET;
  std::size_t m_states_left = 0;  // of the present table
  bool m_state_is_read = false;   // as a state of the table
  unsigned short m_row = 0;
  bool m_has_noninverts = false;
  bool m_has_inverts = false;
  KPT_KEYPOINT_LIST* m_group = nullptr;
  KPT_BY_SIDE<bool> m_has_values;
  KPT_BY_SIDE<KPT_STATE_VALUES> m_values;
  KPT_SET_ENUM m_values_side = KPT_REFERENCE_SET;
  std::vector<std::size_t, MEM_STL_ALLOCATOR<std::size_t>> m_open_values;  // by m_below_leaf
};

#endif
