// The words of a database file: its elements, attributes and types.
//
// Ownership: none.
#ifndef KPT_FORMAT_WORDS_H
#define KPT_FORMAT_WORDS_H

#include <string_view>

#include "db/kpt/kpt_types.h"

namespace kpt_words {

// ---- Elements ----
inline constexpr char KPT_DB[] = "kpt_db";
inline constexpr char KEY_POINTS_SET[] = "key_points_set";
inline constexpr char KEY_POINT[] = "key_point";
inline constexpr char NAME[] = "name";  // also an attribute
inline constexpr char ENTITY[] = "entity";
inline constexpr char REG_TYPE[] = "reg_type";
inline constexpr char TRANSFORMATIONS_SET[] = "transformations_set";
inline constexpr char TRANSFORMATION[] = "transformation";
inline constexpr char KP_SET[] = "kp_set";
inline constexpr char KP_STATE[] = "kp_state";
inline constexpr char NONINVERTS[] = "noninverts";
inline constexpr char INVERTS[] = "inverts";
inline constexpr char KP[] = "kp";
inline constexpr char STATE_TABLE[] = "state_table";
inline constexpr char STATE[] = "state";
inline constexpr char VALUE[] = "value";  // also an attribute
inline constexpr char ATTRIBUTE[] = "attribute";

// ---- Attributes ----
inline constexpr char ID[] = "id";
inline constexpr char TYPE[] = "type";
inline constexpr char INDEX[] = "index";
inline constexpr char ELIM_TYPE[] = "elim_type";
inline constexpr char NUM_STATES[] = "num_states";
inline constexpr char NUM_REFERENCE_REGISTERS[] = "num_reference_registers";
inline constexpr char NUM_TRANSFORMED_REGISTERS[] = "num_transformed_registers";

// ---- Types ----
inline constexpr char REGISTER[] = "register";
inline constexpr char KEYPOINT[] = "keypoint";
inline constexpr char REFERENCE[] = "reference";      // of a side; also an element
inline constexpr char TRANSFORMED[] = "transformed";  // of a side; also an element

/// Every type but "reference" means the transformed side.
inline KPT_SET_ENUM side_named(std::string_view type) {
  return type == REFERENCE ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
}
/// Every value but the reference side means the transformed side.
inline const char* name_of(KPT_SET_ENUM side) { return side == KPT_REFERENCE_SET ? REFERENCE : TRANSFORMED; }

}  // namespace kpt_words

#endif
