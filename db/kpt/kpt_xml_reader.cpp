#include "db/kpt/kpt_xml_reader.h"

#include <new>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_xml_parser.h"
#include "db/kpt/msg_kpt.h"

namespace {

// The parsed file's root, or a null wrapper.
KPT_XML_ELEMENT root_of(const KPT_XML_PARSER& parser) {
  if (!parser.ok()) {
    return {};
  }
  kpt_msg_debug("Start XML parsing");
  bool ok = true;
  const KPT_XML_ELEMENT root = parser.root_element("kpt_db", &ok);
  if (!ok) {
    kpt_msg_debug("Parse Error while extracting the root element");
  }
  return root;
}

// Called while an exception is handled: memory that ended, ours or the
// parser's, ends a load. Nothing else is thrown here.
void tell_caught(std::string_view file_name) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
  } catch (const XERCES_CPP_NAMESPACE::OutOfMemoryException&) {
    kpt_tell_out_of_memory(file_name);
  }
}

}  // namespace

KPT_XML_READER::KPT_XML_READER() = default;

KPT_XML_READER::~KPT_XML_READER() = default;

KPT_STRING KPT_XML_READER::get_db_name(std::string_view file_name) {
  const KPT_XML_PARSER parser(file_name);
  try {
    return root_of(parser).get_attribute_by_name("name");
  } catch (...) {
    tell_caught(file_name);
    return {};
  }
}

bool KPT_XML_READER::load_kpt_xml(std::string_view file_name, KPT_KEYPOINTS_DB_IMPL* db) {
  const KPT_XML_PARSER parser(file_name);
  try {
    KPT_XML_ELEMENT root = root_of(parser);
    return !root.is_null() && db->load_db(root);
  } catch (...) {
    tell_caught(file_name);
    return false;
  }
}
