#include "db/kpt/kpt_xml_reader.h"

#include <new>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_xml_parser.h"
#include "db/kpt/msg_kpt.h"

namespace {

// The root of the parsed file, or a null wrapper.
KPT_XML_ELEMENT root_of(const KPT_XML_PARSER& parser, KPT_LOAD_PROBLEM& problem) {
  if (!parser.ok()) {
    problem.note(parser.problem());
    return {};
  }
  kpt_msg_debug("Start XML parsing");
  bool ok = true;
  const KPT_XML_ELEMENT root = parser.root_element(kpt_words::KPT_DB, &ok);
  if (!ok) {
    kpt_msg_debug("Parse Error while extracting the root element");
  }
  return root;
}

// Called while an exception is handled. It can only mean that memory ran out,
// ours or the parser's, which ends the load.
void tell_caught(std::string_view file_name, KPT_LOAD_PROBLEM& problem) {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
  } catch (const XERCES_CPP_NAMESPACE::OutOfMemoryException&) {
    kpt_tell_out_of_memory(file_name);
  }
  problem.note_end_of_memory();
}

}  // namespace

KPT_XML_READER::KPT_XML_READER() = default;

KPT_XML_READER::~KPT_XML_READER() = default;

KPT_STRING KPT_XML_READER::get_db_name(std::string_view file_name) {
  const KPT_XML_PARSER parser(file_name);
  try {
    KPT_STRING name = root_of(parser, m_problem).get_attribute_by_name(kpt_words::NAME);
    if (name.empty()) {
      m_problem.note({KPT_LOAD_PROBLEM::NO_NAME, "the database has no name"});
    }
    return name;
  } catch (...) {
    tell_caught(file_name, m_problem);
    return {};
  }
}

bool KPT_XML_READER::load_kpt_xml(std::string_view file_name, KPT_KEYPOINTS_DB_IMPL* db) {
  const KPT_XML_PARSER parser(file_name);
  try {
    KPT_XML_ELEMENT root = root_of(parser, m_problem);
    if (root.is_null()) {
      return false;
    }
    const bool loaded = db->load_db(root);
    if (!loaded) {
      m_problem.note({KPT_LOAD_PROBLEM::NOT_COMPLETE, "something follows the transformations"});
    }
    return loaded;
  } catch (...) {
    tell_caught(file_name, m_problem);
    return false;
  }
}
