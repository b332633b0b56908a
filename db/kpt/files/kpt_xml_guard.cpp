#include "db/kpt/files/kpt_xml_guard.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "db/kpt/files/kpt_xml_text.h"
#include "db/kpt/msg_kpt.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

// A database file needs no entities. A hand-written file has a few short ones.
// Together these bounds limit what a document can expand to, however it nests
// entities, to a few megabytes.
constexpr XMLSize_t MOST_EXPANSIONS = 1000;
constexpr XMLSize_t LONGEST_ENTITY = 4096;
// Parameter entities are expanded without being counted, so they must be short
// and must not refer to others.
constexpr XMLSize_t LONGEST_PARAMETER_ENTITY = 16;
// Entities in default values of attributes are not counted either.
constexpr XMLSize_t LONGEST_ENTITY_BEFORE_ATTRIBUTES = 16;
// The parser recurses over the elements that an entity contains.
constexpr std::size_t MOST_EXPANDED_ELEMENTS = 1000;
// Attributes that a document type adds to every element of a kind.
constexpr std::size_t MOST_DEFAULT_CHARACTERS = std::size_t{1} << 20;
constexpr std::size_t DEFAULT_ATTRIBUTE_COST = 64;

int as_int(XMLFileLoc place) {
  constexpr XMLFileLoc most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(place, most));
}

// Called while an exception is handled.
void tell_of_memory(const KPT_STRING& file_name) {
  try {
    throw;
  } catch (const OutOfMemoryException&) {
    kpt_tell_out_of_memory(file_name);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);
  } catch (...) {
    // Nothing else is known of the exception.
  }
}

bool is_given(const XMLCh* text) { return text != nullptr && *text != 0; }

}  // namespace

bool kpt_parse_and_tell(const KPT_XML_PLATFORM& platform, const KPT_STRING& file_name,
                        const std::function<void()>& parse, const std::function<std::size_t()>& error_count) {
  bool ok = platform.is_started();
  if (platform.ran_out_of_memory()) {
    kpt_tell_out_of_memory(file_name);
  }
  try {
    if (ok) {
      parse();
    }
  } catch (const XMLException& problem) {
    KPT_STRING message;
    kpt_narrow(problem.getMessage(), message);
    kpt_msg_debug("Caught XMLException(error_msg: %s) while parsing file %s", message.c_str(), file_name.c_str());
    ok = false;
  } catch (const DOMException& problem) {
    kpt_msg_debug("Caught DOM_DOMException(code %d) while parsing file %s", static_cast<int>(problem.code),
                  file_name.c_str());
    ok = false;
  } catch (const KPT_XML_GUARD::STOPPED&) {
    ok = false;  // reported where it was thrown
  } catch (...) {
    kpt_msg_debug("Caught Unknown XML exception while parsing file %s", file_name.c_str());
    tell_of_memory(file_name);
    ok = false;
  }
  const std::size_t errors = error_count();
  kpt_msg_debug("XML parse: file: %s, nerrors: %d", file_name.c_str(), static_cast<int>(errors));
  return ok && errors == 0;
}

KPT_XML_GUARD::KPT_XML_GUARD() { m_security.setEntityExpansionLimit(MOST_EXPANSIONS); }

void KPT_XML_GUARD::post(XMLFileLoc line, XMLFileLoc column, const char* message) {
  m_problem.note({KPT_LOAD_PROBLEM::NOT_WELL_FORMED, message, as_int(line), as_int(column)});
  const std::unique_ptr<MSG_E> error(
      MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE(m_file_name.c_str(), as_int(line), as_int(column), message));
  error->post();
}

void KPT_XML_GUARD::issue(const WARNING& warning) const {
  kpt_msg_debug("Warning in XML Keypoint Database %s at line number %d, column number %d : %s", m_file_name.c_str(),
                warning.line, warning.column, warning.text.c_str());
}

// The parser does not count a warning, and a warning does not make a load fail.
void KPT_XML_GUARD::error(XMLErrorReporter::ErrTypes type, const XMLCh* message, XMLFileLoc line, XMLFileLoc column) {
  KPT_STRING text;
  kpt_narrow(message, text);
  if (type == XMLErrorReporter::ErrType_Warning) {
    m_warnings.push_back({as_int(line), as_int(column), std::move(text)});
    issue(m_warnings.back());
  } else {
    post(line, column, text.c_str());
  }
}

void KPT_XML_GUARD::repeat_warnings() const {
  for (const WARNING& warning : m_warnings) {
    issue(warning);
  }
}

void KPT_XML_GUARD::stop(const LOCATOR* place, const char* message) {
  ++m_stops;
  post(place->getLineNumber(), place->getColumnNumber(), message);
  throw STOPPED();
}

void KPT_XML_GUARD::external_entity(const LOCATOR* place) { stop(place, "external entities are not read"); }

void KPT_XML_GUARD::document_type(const XMLCh* public_id, const XMLCh* system_id, bool has_external_subset,
                                  const LOCATOR* place) {
  if (has_external_subset || is_given(public_id) || is_given(system_id)) {
    stop(place, "external document types are not read");
  }
  m_has_document_type = true;
}

void KPT_XML_GUARD::entity(const DTDEntityDecl& entity, bool is_parameter_entity, const LOCATOR* place) {
  const XMLCh* const value = entity.getValue();
  if (value == nullptr) {
    return;
  }
  const std::basic_string_view<XMLCh> text(value, entity.getValueLen());
  if (text.size() > LONGEST_ENTITY) {
    stop(place, "the entity is too long");
  }
  if (is_parameter_entity && (text.size() > LONGEST_PARAMETER_ENTITY || text.find(u'%') != text.npos)) {
    stop(place, "the parameter entity is too long or refers to another");
  }
  m_has_growing_entity =
      m_has_growing_entity || text.size() > LONGEST_ENTITY_BEFORE_ATTRIBUTES || text.find(u'&') != text.npos;
}

void KPT_XML_GUARD::attribute_list(const LOCATOR* place) {
  if (m_has_growing_entity) {
    stop(place, "attributes are declared behind an entity that is long or refers to another");
  }
}

void KPT_XML_GUARD::element_of_document_type(const ATTRIBUTES& attributes, XMLSize_t attribute_count,
                                             const LOCATOR* place) {
  if (m_open_references > 0 && ++m_expanded_elements > MOST_EXPANDED_ELEMENTS) {
    stop(place, "entities stand for too many elements");
  }
  for (XMLSize_t k = 0; k < attribute_count; ++k) {
    const XMLAttr* const attribute = attributes.elementAt(k);
    if (!attribute->getSpecified()) {
      m_default_characters += DEFAULT_ATTRIBUTE_COST + XMLString::stringLen(attribute->getValue());
    }
  }
  if (m_default_characters > MOST_DEFAULT_CHARACTERS) {
    stop(place, "the document type adds too many attributes");
  }
}
