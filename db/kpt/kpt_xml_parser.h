// Parses a keypoint database file into a document.
//
// Ownership: KPT_XML_PARSER owns the document. No element wrapper is valid after
// the parser object is destroyed. xerces-c stays started as long as it lives.
//
// A database file may come from anywhere, so the parser reads only this file.
// External entities, external document types and entities that expand beyond a
// bound are syntax errors like any other.
//
// Of the headers that code outside the library's sources includes, this is the
// only one that needs the headers of xerces-c.
#ifndef KPT_XML_PARSER_H
#define KPT_XML_PARSER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>

#include "db/kpt/files/kpt_xml_memory.h"
#include "db/kpt/files/kpt_xml_platform.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_types.h"
#include "db/kpt/kpt_xml_element.h"

class KPT_XML_GUARD;

/// Does nothing. The parser needs a handler; KPT_XML_PARSER_WRAPPER reports the errors.
class KPT_EXPORT KPT_XML_ERROR_HANDLER : public XERCES_CPP_NAMESPACE::ErrorHandler {
 public:
  void warning(const XERCES_CPP_NAMESPACE::SAXParseException&) override {}
  void error(const XERCES_CPP_NAMESPACE::SAXParseException&) override {}
  void fatalError(const XERCES_CPP_NAMESPACE::SAXParseException&) override {}
  void resetErrors() override {}
};

class KPT_EXPORT KESTOV_DOM_PARSER : public XERCES_CPP_NAMESPACE::XercesDOMParser {
 public:
  explicit KESTOV_DOM_PARSER(
      XERCES_CPP_NAMESPACE::MemoryManager* memory = XERCES_CPP_NAMESPACE::XMLPlatformUtils::fgMemoryManager)
      : XercesDOMParser(nullptr, memory) {}
  ~KESTOV_DOM_PARSER() override;
};

/// Turns the parser's errors into the library's message. Stops the parser when a
/// file would make it open another file or use far more memory than the file has.
class KPT_EXPORT KPT_XML_PARSER_WRAPPER : public KESTOV_DOM_PARSER {
 public:
  explicit KPT_XML_PARSER_WRAPPER(
      XERCES_CPP_NAMESPACE::MemoryManager* memory = XERCES_CPP_NAMESPACE::XMLPlatformUtils::fgMemoryManager);
  ~KPT_XML_PARSER_WRAPPER() override;

  void set_file_name(std::string_view file_name);
  /// The number of errors that the parser counted, and one more when it was stopped.
  std::size_t error_count() const;
  /// The first error.
  const KPT_LOAD_PROBLEM& problem() const;

  // From the parser. A warning becomes a debug line.
  void error(unsigned int code, const XMLCh* domain, XERCES_CPP_NAMESPACE::XMLErrorReporter::ErrTypes type,
             const XMLCh* message, const XMLCh* public_id, const XMLCh* system_id, XMLFileLoc line,
             XMLFileLoc column) override;
  XERCES_CPP_NAMESPACE::InputSource* resolveEntity(XERCES_CPP_NAMESPACE::XMLResourceIdentifier* identifier) override;
  void doctypeDecl(const XERCES_CPP_NAMESPACE::DTDElementDecl& element, const XMLCh* public_id, const XMLCh* system_id,
                   bool has_internal_subset, bool has_external_subset) override;
  void entityDecl(const XERCES_CPP_NAMESPACE::DTDEntityDecl& entity, bool is_parameter_entity,
                  bool is_ignored) override;
  void startAttList(const XERCES_CPP_NAMESPACE::DTDElementDecl& element) override;
  void startEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl& entity) override;
  void endEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl& entity) override;
  void startElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& element, unsigned int url_id, const XMLCh* prefix,
                    const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attributes,
                    XMLSize_t attribute_count, bool is_empty, bool is_root) override;

 private:
  std::unique_ptr<KPT_XML_GUARD> m_guard;
};

/// One parsed file.
class KPT_EXPORT KPT_XML_PARSER {
 public:
  /// Parses the file. Every error is posted as a message, and every exception
  /// becomes a debug line; `ok` is then false. When memory runs out, a message
  /// says so as well.
  explicit KPT_XML_PARSER(std::string_view file_name);
  ~KPT_XML_PARSER();
  KPT_XML_PARSER(const KPT_XML_PARSER&) = delete;
  KPT_XML_PARSER& operator=(const KPT_XML_PARSER&) = delete;

  bool ok() const { return m_ok; }
  /// Why `ok` is false.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }
  /// The root element of the document. The name is not compared, so files whose
  /// root has another name are read.
  KPT_XML_ELEMENT root_element(std::string_view name, bool* ok) const;

 private:
  void parse(const KPT_STRING& file_name);

  bool m_ok = true;
  KPT_LOAD_PROBLEM m_problem;
  XERCES_CPP_NAMESPACE::DOMDocument* m_document = nullptr;
  KPT_XML_ERROR_HANDLER m_error_handler;
  std::optional<KPT_XML_PARSER_WRAPPER> m_parser;  // empty when it could not be made
  KPT_XML_PLATFORM m_platform;
  KPT_XML_MEMORY m_memory;  // for the parser and its document
};

#endif
