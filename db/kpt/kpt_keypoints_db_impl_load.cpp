// Fills a database from a parsed file. Most deviations in a well-formed file are
// tolerated: what the reader does not know is skipped or reads as empty, and what
// was added before stays.
#include <algorithm>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_elim_words.h"
#include "db/kpt/kpt_id_counter.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_ticks.h"
#include "db/kpt/kpt_xml_element.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

namespace {

// The text of the failed check. Hosts file internal errors by this text and its
// line, so both are constants and do not follow the source.
constexpr char TRANSFORMATIONS_SET_CHECK[] =
    "strcmp(db_xml_subtree.get_node_name(), KPT_XML_STR_TRANSFORMATIONS_SET) == 0";
constexpr char CHECK_SOURCE[] = "db/kpt/kpt_keypoints_db_impl";
constexpr int CHECK_LINE = 1199;

int number_attribute(const KPT_XML_ELEMENT& element, std::string_view name) {
  return gen_atoi(element.get_attribute_by_name(name));
}

// Calls `visit` for every child element while `ok` is true. The end of the
// children clears `ok`.
template <class VISIT>
void for_each_child(KPT_XML_ELEMENT& parent, bool& ok, VISIT visit) {
  KPT_XML_ELEMENT child = parent.get_first_child(&ok);
  while (!child.is_null() && ok) {
    visit(child);
    child = parent.get_next_sibling(&ok);
  }
}

template <class VISIT>
void for_each_child(KPT_XML_ELEMENT& parent, VISIT visit) {
  bool ok = true;
  for_each_child(parent, ok, visit);
}

}  // namespace

// One flag serves the children of the root and the transformations, and the end
// of the transformations clears it. So nothing after them is read, and an
// element after them makes the load fail. Flows rely on the refusal of such
// files.
bool KPT_KEYPOINTS_DB_IMPL::load_db(KPT_XML_ELEMENT& root) {
  kpt_msg_debug("TIME: Load Start Time: %s", gen_get_current_time().c_str());
  bool ok = true;
  KPT_XML_ELEMENT child = root.get_first_child(&ok);
  while (!child.is_null() && ok) {
    const unsigned long start = gen_get_tick_count();
    if (child.has_name(kpt_words::KEY_POINTS_SET)) {
      parse_one_keypoint_set(child);
      kpt_msg_debug("TIME: Register Set Load: %s", kpt_ticks_since(start).c_str());
    } else {
      if (!child.has_name(kpt_words::TRANSFORMATIONS_SET)) {
        MSG_INTERNAL_ERROR::report(TRANSFORMATIONS_SET_CHECK, KPT_TAG, CHECK_SOURCE, CHECK_LINE);
      }
      KPT_ID_KEYPOINT_HASH r_index = m_reference_set.get_id_keypoint_hash();
      KPT_ID_KEYPOINT_HASH t_index = m_transformed_set.get_id_keypoint_hash();
      for_each_child(child, ok, [&](KPT_XML_ELEMENT& transformation) {
        bool has_table = true;
        KPT_XML_ELEMENT table = transformation.get_single_child_element(kpt_words::STATE_TABLE, &has_table);
        parse_one_transformation(transformation, table, r_index, t_index);
      });
      kpt_msg_debug("TIME: Transformation Set Load: %s", kpt_ticks_since(start).c_str());
    }
    child = root.get_next_sibling(&ok);
  }
  kpt_msg_debug("TIME: Load End Time: %s", gen_get_current_time().c_str());
  return child.is_null();
}

bool KPT_KEYPOINTS_DB_IMPL::parse_one_keypoint_set(KPT_XML_ELEMENT& set_element) {
  const KPT_SET_ENUM set = kpt_words::side_named(set_element.get_attribute_by_name(kpt_words::TYPE));
  bool ok = true;
  KPT_XML_ELEMENT child = set_element.get_first_child(&ok);
  while (!child.is_null() && ok) {
    parse_one_keypoint(set, child);
    child = set_element.get_next_sibling(&ok);
  }
  return child.is_null();
}

// A keypoint of another type, and one that has only one of entity and register
// type, is skipped without a message.
bool KPT_KEYPOINTS_DB_IMPL::parse_one_keypoint(KPT_SET_ENUM set, KPT_XML_ELEMENT& key_point) {
  const long id = number_attribute(key_point, kpt_words::ID);
  bool has_name = true;
  bool has_entity = true;
  bool has_reg_type = true;
  const KPT_XML_ELEMENT name = key_point.get_single_child_element(kpt_words::NAME, &has_name);
  const KPT_XML_ELEMENT entity = key_point.get_single_child_element(kpt_words::ENTITY, &has_entity);
  const KPT_XML_ELEMENT reg_type = key_point.get_single_child_element(kpt_words::REG_TYPE, &has_reg_type);
  if (has_entity != has_reg_type || key_point.get_attribute_by_name(kpt_words::TYPE) != kpt_words::REGISTER) {
    return has_name;
  }
  if (has_entity) {
    add_to_register_set(set, id, name.get_text_content(), entity.get_text_content(), reg_type.get_text_content());
    return has_name;
  }
  add_to_register_set(set, id, name.get_text_content());
  // Only to the id itself, not past it, and only for signals: the ids that a flow
  // gets after a load depend on this.
  kpt_id_counter::raise(id_counter(set), id);
  return has_name;
}

// Every element with a type is a side, even the state table. The k-th state of a
// side is its k-th index, whatever its index attribute is.
void KPT_KEYPOINTS_DB_IMPL::parse_one_transformation(KPT_XML_ELEMENT& transformation, KPT_XML_ELEMENT& state_table,
                                                     KPT_ID_KEYPOINT_HASH& r_index, KPT_ID_KEYPOINT_HASH& t_index) {
  const KPT_ELIM_ENUM status = kpt_elim_status(transformation.get_attribute_by_name(kpt_words::ELIM_TYPE));
  NI_PAIR_VECTOR r_vector;
  NI_PAIR_VECTOR t_vector;
  for_each_child(transformation, [&](KPT_XML_ELEMENT& side_element) {
    const KPT_STRING type = side_element.get_attribute_by_name(kpt_words::TYPE);
    if (type.empty()) {
      return;
    }
    const KPT_SET_ENUM side = kpt_words::side_named(type);
    NI_PAIR_VECTOR& pairs = side == KPT_REFERENCE_SET ? r_vector : t_vector;
    for_each_child(side_element,
                   [&](KPT_XML_ELEMENT& state) { pairs.push_back(parse_one_state(side, state, r_index, t_index)); });
  });
  if (state_table.is_null()) {
    add_to_transformation_set(std::move(r_vector), std::move(t_vector), status);
  } else {
    add_to_transformation_set(std::move(r_vector), std::move(t_vector), parse_state_table(state_table), status);
  }
}

NI_PAIR KPT_KEYPOINTS_DB_IMPL::parse_one_state(KPT_SET_ENUM side, KPT_XML_ELEMENT& kp_state,
                                               KPT_ID_KEYPOINT_HASH& r_index, KPT_ID_KEYPOINT_HASH& t_index) {
  const auto group = [&](std::string_view tag) {
    bool ok = true;
    KPT_XML_ELEMENT element = kp_state.get_single_child_element(tag, &ok);
    return ok ? parse_one_keypoint_list(side, element, r_index, t_index) : KPT_KEYPOINT_LIST();
  };
  KPT_KEYPOINT_LIST noninverts = group(kpt_words::NONINVERTS);
  return {std::move(noninverts), group(kpt_words::INVERTS)};
}

// An id that no keypoint has gives a null entry in the list.
KPT_KEYPOINT_LIST KPT_KEYPOINTS_DB_IMPL::parse_one_keypoint_list(KPT_SET_ENUM side, KPT_XML_ELEMENT& list_element,
                                                                 KPT_ID_KEYPOINT_HASH& r_index,
                                                                 KPT_ID_KEYPOINT_HASH& t_index) {
  KPT_ID_KEYPOINT_HASH& index = side == KPT_REFERENCE_SET ? r_index : t_index;
  KPT_KEYPOINT_LIST keypoints;
  for_each_child(list_element,
                 [&](const KPT_XML_ELEMENT& kp) { keypoints.push_back(index[number_attribute(kp, kpt_words::ID)]); });
  return keypoints;
}

// Counts and positions are numbers of 16 bits: a number of the file is taken modulo 65,536.
KPT_STATE_TABLE_IMPL KPT_KEYPOINTS_DB_IMPL::parse_state_table(KPT_XML_ELEMENT& state_table) {
  const auto count = [&](std::string_view name) {
    return static_cast<unsigned short>(number_attribute(state_table, name));
  };
  const unsigned short num_states = count(kpt_words::NUM_STATES);
  KPT_STATE_TABLE_IMPL table(num_states, count(kpt_words::NUM_REFERENCE_REGISTERS),
                             count(kpt_words::NUM_TRANSFORMED_REGISTERS));
  if (num_states == 0) {
    return table;
  }
  bool ok = true;
  KPT_XML_ELEMENT state = state_table.get_first_child(&ok);
  for (unsigned read = 0; read < num_states && !state.is_null() && ok; ++read) {
    const auto row = static_cast<unsigned short>(number_attribute(state, kpt_words::INDEX));
    bool has_reference = true;
    bool has_transformed = true;
    const KPT_XML_ELEMENT reference = state.get_single_child_element(kpt_words::REFERENCE, &has_reference);
    const KPT_XML_ELEMENT transformed = state.get_single_child_element(kpt_words::TRANSFORMED, &has_transformed);
    table.make_table_entries(KPT_REFERENCE_SET, reference, row);
    table.make_table_entries(KPT_TRANSFORMED_SET, transformed, row);
    state = state_table.get_next_sibling(&ok);
  }
  return table;
}
