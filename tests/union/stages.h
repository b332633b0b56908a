// Stages of a flow in short texts: a map is one line, times in debug lines are
// masked, and a database is the text that it saves.
//
// Ownership: a SET owns only its maps; the caller's REGISTERS own its registers.
// Everything else is a value.
#ifndef TESTS_UNION_STAGES_H
#define TESTS_UNION_STAGES_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_transformation_set_impl.h"
#include "host/kpt_host.h"
#include "tests/support/host_lines.h"
#include "tests/support/maps.h"
#include "tests/support/state_table_text.h"

namespace kpt_test {

inline constexpr char EMPTY_R[] = "Info: R side of map seems to be empty";
inline constexpr char EMPTY_T[] = "Info: T side of map seems to be empty";
inline constexpr char LOOP_1[] = "TIME: Unite loop 1 time: #";
inline constexpr char LOOP_2[] = "TIME: Unite loop 2 time: #";
inline constexpr char LOOP_3[] = "TIME: Unite loop 3 time: #";
inline constexpr char NO_SUCCESSOR[] = "Couldn't find any register in db1's transformation in db2's R set";
inline constexpr char UNMATCHED[] = "UNMATCHED: The following T side of db1 was expected to match R side of db2";
inline constexpr char COPY_LEFTOVERS[] = "kpt_add_unmatched_transformations";

/// The lines, with "#" for every time in a line that begins with "TIME: ".
LINES masked(LINES lines);

/// "Representative of db1 transformation <name> is not in db2".
std::string not_in_db2(const std::string& name);

/// A map in a line: "a~ -> b~c", with " fsm" and " status <n>" where they apply.
std::string line_of(const KPT_TRANSFORMATION_IMPL& map);
LINES maps_of(const KPT_TRANSFORMATION_SET_IMPL& set);
LINES maps_of(KPT_KEYPOINTS_DB_IMPL& db);

/// Names of a keypoint set, in its order.
std::string names_of(const KPT_KEYPOINT_SET_IMPL* set);

/// The database's file.
std::string saved(KPT_KEYPOINTS_DB_IMPL& db);

/// The faults of a database after a union: registers without a map, and index
/// entries that lead to a map of another set. Empty when there is none.
LINES faults_after_union(KPT_KEYPOINTS_DB_IMPL& db);

/// Sets the counters from which new registers take their ids.
void set_next_ids(long r_id, long t_id);

/// A client's table from its text.
KPT_STATE_TABLE client_table(const STATES& states);

class SET : public KPT_TRANSFORMATION_SET_IMPL {
 public:
  explicit SET(REGISTERS& registers) : m_registers(registers) {}

  /// Adds the plain map that the text "a b -> c~d" describes.
  KPT_TRANSFORMATION_IMPL* plain(const std::string& text, KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED);
  /// Adds such a map with a state machine.
  KPT_TRANSFORMATION_IMPL* fsm(const std::string& text, const STATES& states,
                               KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED);

  /// The lines of the maps to which a register's entries lead, "" when there is no entry.
  std::string r_map(const std::string& name);
  std::string t_map(const std::string& name);

 private:
  REGISTERS& m_registers;
};

/// Two stages over the same registers, and the lines that their union issues.
class TWO_SETS : public testing::Test {
 protected:
  ~TWO_SETS() override { kpt_host::clear_switches(); }

  LINES debug() { return masked(lines.take_debug()); }

  HOST_LINES lines;
  REGISTERS registers;
  SET db1{registers};
  SET db2{registers};
};

}  // namespace kpt_test

#endif
