#include "db/kpt/kpt_xml_parser.h"

#include <memory>
#include <string>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLException.hpp>

#include "db/kpt/files/kpt_xml_guard.h"
#include "db/kpt/files/kpt_xml_input.h"
#include "db/kpt/msg_kpt.h"

using namespace XERCES_CPP_NAMESPACE;

KESTOV_DOM_PARSER::~KESTOV_DOM_PARSER() = default;

KPT_XML_PARSER_WRAPPER::KPT_XML_PARSER_WRAPPER(MemoryManager* memory)
    : KESTOV_DOM_PARSER(memory), m_guard(std::make_unique<KPT_XML_GUARD>()) {
  setSecurityManager(m_guard->security());
  // Without this, the parser calls no one and opens the file that an entity names.
  getScanner()->setEntityHandler(this);
}

KPT_XML_PARSER_WRAPPER::~KPT_XML_PARSER_WRAPPER() = default;

void KPT_XML_PARSER_WRAPPER::set_file_name(std::string_view file_name) { m_guard->set_file_name(file_name); }

const KPT_LOAD_PROBLEM& KPT_XML_PARSER_WRAPPER::problem() const { return m_guard->problem(); }

std::size_t KPT_XML_PARSER_WRAPPER::error_count() const { return getErrorCount() + m_guard->stops(); }

void KPT_XML_PARSER_WRAPPER::error(unsigned int /*code*/, const XMLCh* /*domain*/, XMLErrorReporter::ErrTypes type,
                                   const XMLCh* message, const XMLCh* /*public_id*/, const XMLCh* /*system_id*/,
                                   XMLFileLoc line, XMLFileLoc column) {
  m_guard->error(type, message, line, column);
}

InputSource* KPT_XML_PARSER_WRAPPER::resolveEntity(XMLResourceIdentifier* /*identifier*/) {
  m_guard->external_entity(getScanner()->getLocator());
}

void KPT_XML_PARSER_WRAPPER::doctypeDecl(const DTDElementDecl& element, const XMLCh* public_id, const XMLCh* system_id,
                                         bool has_internal_subset, bool has_external_subset) {
  m_guard->document_type(public_id, system_id, has_external_subset, getScanner()->getLocator());
  KESTOV_DOM_PARSER::doctypeDecl(element, public_id, system_id, has_internal_subset, has_external_subset);
}

void KPT_XML_PARSER_WRAPPER::entityDecl(const DTDEntityDecl& entity, bool is_parameter_entity, bool is_ignored) {
  m_guard->entity(entity, is_parameter_entity, getScanner()->getLocator());
  KESTOV_DOM_PARSER::entityDecl(entity, is_parameter_entity, is_ignored);
}

void KPT_XML_PARSER_WRAPPER::startAttList(const DTDElementDecl& element) {
  m_guard->attribute_list(getScanner()->getLocator());
  KESTOV_DOM_PARSER::startAttList(element);
}

void KPT_XML_PARSER_WRAPPER::startEntityReference(const XMLEntityDecl& entity) {
  m_guard->reference_starts();
  KESTOV_DOM_PARSER::startEntityReference(entity);
}

void KPT_XML_PARSER_WRAPPER::endEntityReference(const XMLEntityDecl& entity) {
  m_guard->reference_ends();
  KESTOV_DOM_PARSER::endEntityReference(entity);
}

void KPT_XML_PARSER_WRAPPER::startElement(const XMLElementDecl& element, unsigned int url_id, const XMLCh* prefix,
                                          const RefVectorOf<XMLAttr>& attributes, XMLSize_t attribute_count,
                                          bool is_empty, bool is_root) {
  m_guard->element(attributes, attribute_count, getScanner()->getLocator());
  KESTOV_DOM_PARSER::startElement(element, url_id, prefix, attributes, attribute_count, is_empty, is_root);
}

KPT_XML_PARSER::KPT_XML_PARSER(std::string_view file_name) {
  try {
    const KPT_STRING name(file_name);
    m_ok = kpt_parse_and_tell(
        m_platform, name, [&] { parse(name); }, [&] { return m_parser.has_value() ? m_parser->error_count() : 0; });
    if (!m_ok) {
      m_problem = m_parser.has_value() ? m_parser->problem() : KPT_LOAD_PROBLEM();
      m_problem.note({KPT_LOAD_PROBLEM::NOT_WELL_FORMED, "the file cannot be parsed"});
    }
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);  // there was none even for the file name
    m_problem.note_end_of_memory();
    m_ok = false;
  }
}

// The parser is destroyed before its memory, and while xerces-c is started.
KPT_XML_PARSER::~KPT_XML_PARSER() { m_parser.reset(); }

void KPT_XML_PARSER::parse(const KPT_STRING& file_name) {
  m_parser.emplace(&m_memory);
  m_parser->setErrorHandler(&m_error_handler);
  m_parser->set_file_name(file_name);
  const KPT_STRING path = kpt_path_to_open(file_name);
  KPT_FILE_BYTES bytes(path);
  m_parser->parse(KPT_XML_INPUT(path, bytes.is_open() ? &bytes : nullptr));
  if (m_parser->error_count() == 0) {
    m_document = m_parser->getDocument();
  }
}

KPT_XML_ELEMENT KPT_XML_PARSER::root_element(std::string_view /*name*/, bool* ok) const {
  if (!*ok) {
    return {};
  }
  DOMElement* const root = m_document == nullptr ? nullptr : m_document->getDocumentElement();
  *ok = root != nullptr;
  return KPT_XML_ELEMENT(root);
}
