// The debug lines of tables, maps and events, as hosts compare them.
//
// Ownership: constants.
#ifndef TESTS_SUPPORT_MESSAGES_H
#define TESTS_SUPPORT_MESSAGES_H

namespace kpt_test {

// State tables.
inline constexpr char REFUSED_R_WRITE[] =
    "Error: Trying to insert into a location outside \t\t\t\t\t\t\t\t of the declared size of r "
    "\t\t\t\t\t\t\t\t (m_num_r_columns x m_num_rows";
inline constexpr char REFUSED_T_WRITE[] =
    "Error: Trying to insert into a location outside \t\t\t\t\t\t\t\t of the declared size of t "
    "\t\t\t\t\t\t\t\t (m_num_t_columns x m_num_rows";
inline constexpr char REFUSED_READ[] = "Error: Trying to access outside of R table bounds";
inline constexpr char UNKNOWN_SIDE[] = "Error: Unknown Set Type";

// Maps.
inline constexpr char EMPTY_R_SIDE[] = "Info: R side of map seems to be empty";
inline constexpr char EMPTY_T_SIDE[] = "Info: T side of map seems to be empty";
inline constexpr char NOT_FOUND_TO_RETIME[] = "Error: Could not find retimed_kp in t_vector";
inline constexpr char NOT_FOUND_TO_ELIMINATE[] = "Error: Couldn't find index in t_vector";
inline constexpr char INTERCHANGE_OF_UNKNOWN_SIDE[] = "Error: Unknown set Type";
inline constexpr char UNION_OF_TWO_MACHINES[] = "Cannot unite 2 FSM transformations";

// Events.
inline constexpr char MERGE_OF_TWO_MACHINES[] =
    "Error: Merge not recorded - this is a merge \t\t\t\t\t\tbetween 2 FSM maps - this is not currently "
    "\t\t\t\t\t\tsupported by Keypoint db";
inline constexpr char MERGE_OF_TWO_PAIRS[] =
    "Error: Trying to merge registers within the same map \t\t\t\t\t\t\tfrom different NI_PAIRs.  State Table "
    "probably not \t\t\t\t\t\t\tin canonical form";
inline constexpr char MERGE_OF_INVERSES[] =
    "Error: Merged register is an inverted version \t\t\t\t\t\t\t\t\tof orig register and both registers are in the "
    "\t\t\t\t\t\t\t\t\tsame map";

}  // namespace kpt_test

#endif
