#include "db/kpt/kpt_keypoint.h"

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_xml_writer.h"
#include "h/gen_sys.h"

KPT_KEYPOINT::KPT_KEYPOINT(KPT_TYPE_ENUM /*type*/, long id, std::string_view name) : m_element_name(name), m_kpid(id) {}

KPT_KEYPOINT::KPT_KEYPOINT(const KPT_KEYPOINT& other)
    : KPT_ZEROED(other), m_element_name(other.get_element_name()), m_kpid(other.m_kpid) {}

KPT_KEYPOINT::~KPT_KEYPOINT() = default;

const KPT_STRING& KPT_KEYPOINT::get_element_name() const { return m_element_name; }

bool KPT_KEYPOINT::is_register() const { return false; }

bool KPT_KEYPOINT::operator!=(const KPT_KEYPOINT& other) const {
  return m_kpid != other.m_kpid || m_element_name != other.m_element_name;
}

void KPT_KEYPOINT::set_element_name(std::string_view name) { m_element_name = name; }

std::optional<KPT_SET_ENUM> KPT_KEYPOINT::get_side() const {
  switch (m_set & SIDE_BITS) {
    case REFERENCE:
      return KPT_REFERENCE_SET;
    case TRANSFORMED:
      return KPT_TRANSFORMED_SET;
    default:
      return std::nullopt;
  }
}

bool KPT_KEYPOINT::save_keypoint(KPT_XML_WRITER& writer) const {
  return writer.write_keypoint_xml(gen_itoa(static_cast<int>(m_kpid), 10), kpt_words::KEYPOINT, m_element_name);
}
