// Writes a map to a database file.
#include <algorithm>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_elim_words.h"
#include "db/kpt/kpt_keypoint.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_writer.h"

namespace {

// A null keypoint has no id. A group that holds only null keypoints is left out,
// like an empty one.
bool save_group(KPT_XML_WRITER& writer, std::string_view tag, const KPT_KEYPOINT_LIST& group) {
  const auto has_id = [](const KPT_KEYPOINT* keypoint) { return keypoint != nullptr; };
  if (std::none_of(group.begin(), group.end(), has_id)) {
    return true;
  }
  bool saved = writer.begin_transformation_xml(tag);
  for (const KPT_KEYPOINT* keypoint : group) {
    if (has_id(keypoint)) {
      saved = writer.write_kp_xml(keypoint->get_kpid()) && saved;
    }
  }
  return writer.end_transformation_xml(tag) && saved;
}

// Index attributes are numbers of 16 bits, however many indices the side has.
bool save_side(KPT_XML_WRITER& writer, std::string_view type, const NI_PAIR_VECTOR& side, bool saved) {
  saved = writer.write_tr_set_start_xml(type) && saved;
  unsigned short index = 0;
  for (const NI_PAIR& pair : side) {
    saved = writer.write_tr_state_start_xml(index) && saved;
    saved = saved && save_group(writer, kpt_words::NONINVERTS, pair.first);
    saved = saved && save_group(writer, kpt_words::INVERTS, pair.second);
    writer.write_tr_state_end_xml();
    ++index;
  }
  writer.write_tr_set_end_xml();
  return saved;
}

}  // namespace

bool KPT_TRANSFORMATION_IMPL::save_transformation(KPT_XML_WRITER& writer) const {
  bool saved = writer.write_transformation_start_xml(kpt_elim_word(m_elim_status));
  saved = save_side(writer, kpt_words::REFERENCE, m_r_vector, saved);
  saved = save_side(writer, kpt_words::TRANSFORMED, m_t_vector, saved);
  if (map_has_fsm_transformation()) {
    state_table().save_state_table(writer);
  }
  if (writer.keeps_attributes() && !m_attributes.empty()) {
    writer.write_attributes(m_attributes.sorted());
  }
  writer.write_transformation_end_xml();
  return saved;
}
