#include "db/kpt/load/kpt_database_builder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_elim_words.h"
#include "db/kpt/kpt_id_counter.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "h/gen_sys.h"

namespace {

int ticks_since(unsigned long start) { return static_cast<int>(gen_get_tick_count() - start); }

}  // namespace

KPT_DATABASE_BUILDER::KPT_DATABASE_BUILDER(CREATE create, KPT_LOAD_LINES& lines)
    : m_create(std::move(create)), m_lines(lines), m_table(0, 0, 0) {
  m_path[0] = DOCUMENT;
  m_highest_ids.fill(std::numeric_limits<long>::min());
}

// Only to the highest id, not past it, and only for signals: the ids that a flow
// gets after a load depend on this.
std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_DATABASE_BUILDER::take() {
  if (m_db != nullptr) {
    kpt_id_counter::raise(KPT_KEYPOINTS_DB_IMPL::s_r_id, m_highest_ids[KPT_REFERENCE_SET]);
    kpt_id_counter::raise(KPT_KEYPOINTS_DB_IMPL::s_t_id, m_highest_ids[KPT_TRANSFORMED_SET]);
  }
  return m_has_more ? nullptr : std::move(m_db);
}

int KPT_DATABASE_BUILDER::number(const KPT_ELEMENT_ATTRIBUTES& attributes, std::string_view name) {
  m_number = attributes.value(name);
  return gen_atoi(m_number);
}

void KPT_DATABASE_BUILDER::push(ROLE role) { m_path[++m_depth] = role; }

void KPT_DATABASE_BUILDER::start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes) {
  if (!is_leaf(role())) {
    push(child(name, attributes));
    return;
  }
  ++m_below_leaf;
  if (role() == VALUES && name == kpt_words::VALUE) {
    const auto column = static_cast<unsigned>(number(attributes, kpt_words::INDEX));
    m_values[m_values_side].start(static_cast<unsigned short>(column + 1U));
    m_open_values.push_back(m_below_leaf);
  }
}

void KPT_DATABASE_BUILDER::start_reference(std::string_view name) {
  if (is_leaf(role())) {
    ++m_below_leaf;
  } else {
    push(named_child(name));
  }
}

void KPT_DATABASE_BUILDER::instruction(std::string_view target, std::string_view data) {
  if (!is_leaf(role())) {
    push(named_child(target));
    text(data);
    end();
  }
}

void KPT_DATABASE_BUILDER::end() {
  if (m_below_leaf == 0) {
    finish(m_path[m_depth--]);
    return;
  }
  if (!m_open_values.empty() && m_open_values.back() == m_below_leaf) {
    m_values[m_values_side].end();
    m_open_values.pop_back();
  }
  --m_below_leaf;
}

void KPT_DATABASE_BUILDER::text(std::string_view piece) {
  if (role() == TEXT) {
    m_texts[m_text].text += piece;
  } else if (role() == VALUES) {
    m_values[m_values_side].text(piece);
  }
}

// The role of an element, from the role of the element that contains it.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::child(std::string_view name,
                                                       const KPT_ELEMENT_ATTRIBUTES& attributes) {
  switch (role()) {
    case DOCUMENT:
      return start_root(attributes);
    case ROOT:
      return start_child_of_root(name, attributes);
    case KEYPOINT_SET:
      return start_keypoint(attributes);
    case KEYPOINT: {
      const ROLE text = keypoint_text(name);
      return text == TEXT ? TEXT : passed_over(name, attributes);
    }
    case MAPS:
      m_status = kpt_elim_status(attributes.value(kpt_words::ELIM_TYPE));
      m_has_table = false;
      m_attributes.clear();
      return MAP;
    case MAP:
      return start_part(name, attributes);
    case PART:
      return start_state(attributes);
    case STATE:
      return child_of_state(name);
    case GROUP:
      // An id that no keypoint has gives a null entry in the group.
      m_group->push_back(m_ids[m_side].find(number(attributes, kpt_words::ID)));
      return PASSED_OVER;
    default:
      return PASSED_OVER;
  }
}

// The role of a reference or an instruction, from its name. It may be a text. In
// every other role it is a child without content.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::named_child(std::string_view name) {
  if (role() == KEYPOINT) {
    return keypoint_text(name);
  }
  if (role() == STATE) {
    child_of_state(name);
  } else if (role() == MAP && name == kpt_words::STATE_TABLE && !m_has_table) {
    m_has_table = true;
    m_table = KPT_STATE_TABLE_IMPL(0, 0, 0);
  }
  return PASSED_OVER;
}

// An element of a register or a map to which no rule above gives a meaning. Other
// readers skip such an element, so it can hold what they need not know: this
// reader finds attributes of registers and maps there.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::passed_over(std::string_view name,
                                                             const KPT_ELEMENT_ATTRIBUTES& attributes) {
  if (name == kpt_words::ATTRIBUTE && !attributes.value(kpt_words::NAME).empty() &&
      !attributes.value(kpt_words::VALUE).empty()) {
    m_attributes.emplace_back(KPT_STRING(attributes.value(kpt_words::NAME)),
                              KPT_STRING(attributes.value(kpt_words::VALUE)));
  }
  return PASSED_OVER;
}

template <class OWNER>
void KPT_DATABASE_BUILDER::hand_attributes_to(OWNER* owner) {
  for (const auto& [name, value] : m_attributes) {
    owner->add_attribute(name, value);
  }
}

void KPT_DATABASE_BUILDER::finish(ROLE role) {
  switch (role) {
    case ROOT:
    case KEYPOINT_SET:
    case MAPS:
      finish_set(role);
      break;
    case KEYPOINT:
      finish_keypoint();
      break;
    case MAP:
      finish_map();
      break;
    case STATE:
      finish_state();
      break;
    default:
      break;
  }
}

void KPT_DATABASE_BUILDER::finish_set(ROLE role) {
  if (role == ROOT) {
    m_lines.add(KPT_LOAD_LINES::LOAD_ENDS);
  } else if (role == KEYPOINT_SET) {
    m_lines.add(KPT_LOAD_LINES::SET_IS_LOADED, ticks_since(m_start));
  } else {
    m_ids = {};
    m_lines.add(KPT_LOAD_LINES::MAPS_ARE_LOADED, ticks_since(m_start));
  }
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_root(const KPT_ELEMENT_ATTRIBUTES& attributes) {
  m_name = attributes.value(kpt_words::NAME);
  m_db.reset(m_create(m_name));
  if (m_db == nullptr) {
    return PASSED_OVER;
  }
  m_lines.add(KPT_LOAD_LINES::LOAD_STARTS);
  return ROOT;
}

// Nothing after the transformations is read, and an element there makes the load
// fail. Flows rely on the refusal of such files.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_child_of_root(std::string_view name,
                                                                     const KPT_ELEMENT_ATTRIBUTES& attributes) {
  if (m_had_maps) {
    m_has_more = true;
    return PASSED_OVER;
  }
  m_start = gen_get_tick_count();
  if (name != kpt_words::KEY_POINTS_SET) {
    return start_maps(name);
  }
  m_set = kpt_words::side_named(attributes.value(kpt_words::TYPE));
  return KEYPOINT_SET;
}

// A child with any other name is reported and read as the transformations.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_maps(std::string_view name) {
  if (name != kpt_words::TRANSFORMATIONS_SET) {
    m_lines.add(KPT_LOAD_LINES::UNEXPECTED_CHILD);
  }
  m_had_maps = true;
  m_ids[KPT_REFERENCE_SET].fill(*m_db->get_reference_set());
  m_ids[KPT_TRANSFORMED_SET].fill(*m_db->get_transformed_set());
  return MAPS;
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_keypoint(const KPT_ELEMENT_ATTRIBUTES& attributes) {
  m_id = number(attributes, kpt_words::ID);
  m_is_register = attributes.value(kpt_words::TYPE) == kpt_words::REGISTER;
  for (NAMED_TEXT& named : m_texts) {
    named.is_there = false;
    named.text.clear();
  }
  m_attributes.clear();
  return KEYPOINT;
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::keypoint_text(std::string_view name) {
  m_text = name == kpt_words::NAME       ? NAME
           : name == kpt_words::ENTITY   ? ENTITY
           : name == kpt_words::REG_TYPE ? REG_TYPE
                                         : NO_TEXT;
  if (m_text == NO_TEXT || m_texts[m_text].is_there) {
    return PASSED_OVER;
  }
  m_texts[m_text].is_there = true;
  return TEXT;
}

// A keypoint of another type, and one that has only one of entity and register
// type, is skipped without a message.
void KPT_DATABASE_BUILDER::finish_keypoint() {
  const bool is_instance = m_texts[ENTITY].is_there;
  if (!m_is_register || is_instance != m_texts[REG_TYPE].is_there) {
    return;
  }
  if (is_instance) {
    hand_attributes_to(
        m_db->add_to_register_set(m_set, m_id, m_texts[NAME].text, m_texts[ENTITY].text, m_texts[REG_TYPE].text));
    return;
  }
  hand_attributes_to(m_db->add_to_register_set(m_set, m_id, m_texts[NAME].text));
  m_highest_ids[m_set] = std::max(m_highest_ids[m_set], m_id);
}

// Every element with a type is a side, even a state table.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_part(std::string_view name,
                                                            const KPT_ELEMENT_ATTRIBUTES& attributes) {
  const std::string_view type = attributes.value(kpt_words::TYPE);
  m_part_is_side = !type.empty();
  m_side = kpt_words::side_named(type);
  m_part_is_table = name == kpt_words::STATE_TABLE && !m_has_table;
  if (!m_part_is_side && !m_part_is_table) {
    return passed_over(name, attributes);
  }
  if (m_part_is_table) {
    start_table(attributes);
  }
  return PART;
}

// Counts and positions are numbers of 16 bits: a number of the file is taken modulo 65,536.
void KPT_DATABASE_BUILDER::start_table(const KPT_ELEMENT_ATTRIBUTES& attributes) {
  const auto count = [&](std::string_view name) { return static_cast<unsigned short>(number(attributes, name)); };
  const unsigned short states = count(kpt_words::NUM_STATES);
  const unsigned short r_columns = count(kpt_words::NUM_REFERENCE_REGISTERS);
  m_table = KPT_STATE_TABLE_IMPL(states, r_columns, count(kpt_words::NUM_TRANSFORMED_REGISTERS));
  m_has_table = true;
  m_states_left = states;
}

// The k-th state of a side is its k-th index, whatever its index attribute is. A
// table reads as many states as it counts, each at its index.
KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::start_state(const KPT_ELEMENT_ATTRIBUTES& attributes) {
  m_state_is_read = m_part_is_table && m_states_left > 0;
  if (m_part_is_side) {
    m_sides[m_side].emplace_back();
    m_has_noninverts = false;
    m_has_inverts = false;
  }
  if (m_state_is_read) {
    --m_states_left;
    m_row = static_cast<unsigned short>(static_cast<unsigned>(number(attributes, kpt_words::INDEX)) + 1U);
    m_has_values = {};
  }
  return m_part_is_side || m_state_is_read ? STATE : PASSED_OVER;
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::child_of_state(std::string_view name) {
  if (m_part_is_side) {
    NI_PAIR& pair = m_sides[m_side].back();
    if (name == kpt_words::NONINVERTS) {
      return group(pair.first, m_has_noninverts);
    }
    if (name == kpt_words::INVERTS) {
      return group(pair.second, m_has_inverts);
    }
  }
  if (m_state_is_read && (name == kpt_words::REFERENCE || name == kpt_words::TRANSFORMED)) {
    return values(kpt_words::side_named(name));
  }
  return PASSED_OVER;
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::group(KPT_KEYPOINT_LIST& list, bool& is_there) {
  m_group = &list;
  return std::exchange(is_there, true) ? PASSED_OVER : GROUP;
}

KPT_DATABASE_BUILDER::ROLE KPT_DATABASE_BUILDER::values(KPT_SET_ENUM side) {
  m_values_side = side;
  return std::exchange(m_has_values[side], true) ? PASSED_OVER : VALUES;
}

// The reference side comes first, in whatever order the file has the sides.
void KPT_DATABASE_BUILDER::finish_state() {
  if (m_state_is_read) {
    enter_values(KPT_REFERENCE_SET);
    enter_values(KPT_TRANSFORMED_SET);
  }
}

// The values after a value outside the table are dropped with it.
void KPT_DATABASE_BUILDER::enter_values(KPT_SET_ENUM side) {
  const bool is_reference = side == KPT_REFERENCE_SET;
  const unsigned columns =
      is_reference ? m_table.get_num_reference_registers() : m_table.get_num_transformed_registers();
  if (m_values[side].values().empty()) {
    m_lines.add(KPT_LOAD_LINES::NO_VALUES);
  }
  for (const KPT_STATE_VALUES::VALUE& value : m_values[side].values()) {
    if (m_row == 0 || m_row > m_table.get_num_states() || value.column == 0 || value.column > columns) {
      m_lines.add(is_reference ? KPT_LOAD_LINES::OUTSIDE_REFERENCE_TABLE : KPT_LOAD_LINES::OUTSIDE_TRANSFORMED_TABLE);
      break;
    }
    m_table.set_entry(side, m_row, value.column, value.entry);
  }
  m_values[side].clear();
}

void KPT_DATABASE_BUILDER::finish_map() {
  NI_PAIR_VECTOR r = std::exchange(m_sides[KPT_REFERENCE_SET], {});
  NI_PAIR_VECTOR t = std::exchange(m_sides[KPT_TRANSFORMED_SET], {});
  hand_attributes_to(m_has_table
                         ? m_db->add_to_transformation_set(std::move(r), std::move(t), std::move(m_table), m_status)
                         : m_db->add_to_transformation_set(std::move(r), std::move(t), m_status));
}
