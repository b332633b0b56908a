#include "db/kpt/load/kpt_general_source.h"

#include <algorithm>
#include <optional>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/XMLAttDefList.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/framework/XMLNotationDecl.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>

#include "db/kpt/files/kpt_xml_input.h"
#include "db/kpt/files/kpt_xml_platform.h"
#include "db/kpt/files/kpt_xml_text.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

// Compares without a copy: the names of this format are ASCII.
bool is_named(const XMLCh* own, std::string_view name) {
  const auto end =
      std::find_if(name.begin(), name.end(), [&](char c) { return *own++ != static_cast<unsigned char>(c); });
  return end == name.end() && *own == 0;
}

class WIDE_ATTRIBUTES final : public KPT_ELEMENT_ATTRIBUTES {
 public:
  void set(const KPT_XML_GUARD::ATTRIBUTES& attributes, XMLSize_t count) {
    m_attributes = &attributes;
    m_count = count;
  }

  std::string_view value(std::string_view name) const override {
    for (XMLSize_t k = 0; k < m_count; ++k) {
      const XMLAttr* const attribute = m_attributes->elementAt(k);
      if (is_named(attribute->getName(), name)) {
        kpt_narrow(attribute->getValue(), m_value);
        return m_value;
      }
    }
    return {};
  }

 private:
  const KPT_XML_GUARD::ATTRIBUTES* m_attributes = nullptr;
  XMLSize_t m_count = 0;
  mutable KPT_STRING m_value;
};

// xerces-c reports everything only to an installed handler. This one keeps the position.
class PLACE : public DefaultHandler {
 public:
  void setDocumentLocator(const Locator* const locator) override { m_locator = locator; }
  void fatalError(const SAXParseException&) override {}
  const Locator* get() const { return m_locator; }

 private:
  const Locator* m_locator = nullptr;
};

// Takes the parser's events before SAX2 passes them to handlers, because those do
// not see where a reference is.
class READER : public SAX2XMLReaderImpl {
 public:
  READER(KPT_XML_GUARD& guard, const KPT_WATCHED_BUILDER& builder) : m_guard(guard), m_builder(builder) {
    setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
    setFeature(XMLUni::fgSAX2CoreValidation, false);
    setFeature(XMLUni::fgXercesSchema, false);
    setContentHandler(&m_place);
    setDeclarationHandler(&m_place);
    setEntityResolver(&m_place);
    setErrorHandler(&m_place);
    setProperty(XMLUni::fgXercesSecurityManager, guard.security());
  }

  std::size_t error_count() const { return getErrorCount() + m_guard.stops(); }

  void error(unsigned int, const XMLCh*, XMLErrorReporter::ErrTypes type, const XMLCh* message, const XMLCh*,
             const XMLCh*, XMLFileLoc line, XMLFileLoc column) override {
    m_guard.error(type, message, line, column);
  }
  InputSource* resolveEntity(XMLResourceIdentifier*) override { m_guard.external_entity(m_place.get()); }
  using SAX2XMLReaderImpl::resolveEntity;

  void XMLDecl(const XMLCh* version, const XMLCh*, const XMLCh*, const XMLCh*) override {
    m_is_1_1 = XMLString::equals(version, XMLUni::fgVersion1_1);
    // A document has one of the two versions; another one raises its exception.
    if (version != nullptr && *version != 0 && !m_is_1_1 && !XMLString::equals(version, XMLUni::fgVersion1_0)) {
      throw DOMException(DOMException::NOT_SUPPORTED_ERR, 0);
    }
  }

  void startElement(const XMLElementDecl& element, unsigned int, const XMLCh*, const RefVectorOf<XMLAttr>& attributes,
                    XMLSize_t count, bool is_empty, bool) override {
    m_guard.element(attributes, count, m_place.get());
    kpt_narrow(element.getFullName(), m_name);
    m_attributes.set(attributes, count);
    note_line();
    m_builder.start(m_name, m_attributes);
    if (is_empty) {
      m_builder.end();
    }
  }
  void endElement(const XMLElementDecl&, unsigned int, bool, const XMLCh*) override {
    note_line();
    m_builder.end();
  }

  void docCharacters(const XMLCh* characters, XMLSize_t count, bool) override {
    if (m_builder.wants_text()) {
      text(characters, count);
    }
  }
  void ignorableWhitespace(const XMLCh* characters, XMLSize_t count, bool) override {
    docCharacters(characters, count, false);
  }
  void docComment(const XMLCh*) override {}
  void docPI(const XMLCh* target, const XMLCh* data) override {
    check_name(target);
    kpt_narrow(target, m_name);
    kpt_narrow(data, m_text);
    m_builder.instruction(m_name, m_text);
  }

  void startEntityReference(const XMLEntityDecl& entity) override {
    m_guard.reference_starts();
    check_name(entity.getName());
    kpt_narrow(entity.getName(), m_name);
    m_builder.start_reference(m_name);
  }
  void endEntityReference(const XMLEntityDecl&) override {
    m_guard.reference_ends();
    m_builder.end_reference();
  }

  void doctypeDecl(const DTDElementDecl& element, const XMLCh* public_id, const XMLCh* system_id, bool,
                   bool has_external_subset) override {
    m_guard.document_type(public_id, system_id, has_external_subset, m_place.get());
    check_name(element.getFullName());
  }
  void entityDecl(const DTDEntityDecl& entity, bool is_parameter_entity, bool) override {
    m_guard.entity(entity, is_parameter_entity, m_place.get());
    check_name(entity.getName());
  }
  void notationDecl(const XMLNotationDecl& notation, bool) override { check_name(notation.getName()); }
  void startAttList(const DTDElementDecl&) override { m_guard.attribute_list(m_place.get()); }
  void endAttList(const DTDElementDecl& element) override {
    if (!element.hasAttDefs()) {
      return;
    }
    check_name(element.getFullName());
    const XMLAttDefList& attributes = element.getAttDefList();
    for (XMLSize_t k = 0; k < attributes.getAttDefCount(); ++k) {
      const XMLAttDef& attribute = const_cast<XMLAttDefList&>(attributes).getAttDef(k);
      if (attribute.getValue() != nullptr) {
        check_name(attribute.getFullName());
      }
    }
  }
  void attDef(const DTDElementDecl&, const DTDAttDef&, bool) override {}
  void elementDecl(const DTDElementDecl&, bool) override {}

 private:
  // The parser accepts more names than a document does. A name that a document
  // does not accept raises the document's exception.
  void check_name(const XMLCh* name) const {
    if (m_is_1_1 ? !XMLChar1_1::isValidName(name) : !XMLChar1_0::isValidName(name)) {
      throw DOMException(DOMException::INVALID_CHARACTER_ERR, 0);
    }
  }

  void note_line() {
    if (m_place.get() != nullptr) {
      m_builder.set_line(static_cast<std::size_t>(m_place.get()->getLineNumber()));
    }
  }

  // A text comes in pieces, and a piece may end within a character.
  void text(const XMLCh* characters, XMLSize_t count) {
    m_wide_text.append(characters, count);
    const bool is_cut = !m_wide_text.empty() && m_wide_text.back() >= 0xD800 && m_wide_text.back() < 0xDC00;
    const XMLCh rest = is_cut ? m_wide_text.back() : XMLCh{0};
    m_wide_text.resize(m_wide_text.size() - (is_cut ? 1 : 0));
    kpt_narrow(m_wide_text.c_str(), m_text);
    m_builder.text(m_text);
    m_wide_text.assign(is_cut ? 1 : 0, rest);
  }

  KPT_XML_GUARD& m_guard;
  KPT_WATCHED_BUILDER m_builder;
  PLACE m_place;
  bool m_is_1_1 = false;
  WIDE_ATTRIBUTES m_attributes;
  KPT_STRING m_name;
  KPT_STRING m_text;
  KPT_WIDE_STRING m_wide_text;
};

}  // namespace

bool KPT_GENERAL_SOURCE::read(const KPT_STRING& file_name, KPT_BYTES* bytes, KPT_WATCHED_BUILDER builder) {
  m_guard.set_file_name(file_name);
  const KPT_XML_PLATFORM platform;
  std::optional<READER> reader;
  const auto parse = [&] {
    const KPT_XML_INPUT input(kpt_path_to_open(file_name), bytes);
    reader.emplace(m_guard, builder);
    reader->parse(input);
  };
  const bool is_well_formed =
      kpt_parse_and_tell(platform, file_name, parse, [&] { return reader.has_value() ? reader->error_count() : 0; });
  if (!is_well_formed) {
    m_problem.note(m_guard.problem());
    m_problem.note({KPT_LOAD_PROBLEM::NOT_WELL_FORMED, "the file cannot be parsed"});
  }
  return is_well_formed;
}
