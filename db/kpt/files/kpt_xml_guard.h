// Lets xerces-c read only the given file and bounds the memory that the file can
// take; also reports its errors. The parser of documents and the general source
// of a load use it in the same way, at the same events.
//
// Ownership: owns its counts and the parser's security manager.
//
// A database file may come from anywhere: external entities, external document
// types and entities that expand beyond a bound are syntax errors like any
// other.
#ifndef KPT_XML_GUARD_H
#define KPT_XML_GUARD_H

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLErrorReporter.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "db/kpt/files/kpt_xml_platform.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_types.h"

class KPT_XML_GUARD {
 public:
  /// Thrown to stop a parse, after the message was posted.
  struct STOPPED {};
  using ATTRIBUTES = XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>;
  using LOCATOR = XERCES_CPP_NAMESPACE::Locator;

  KPT_XML_GUARD();

  void set_file_name(std::string_view file_name) { m_file_name = file_name; }
  XERCES_CPP_NAMESPACE::SecurityManager* security() { return &m_security; }
  /// How often it stopped the parser, which does not count this as an error.
  std::size_t stops() const { return m_stops; }
  /// The first error.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }

  /// An error is posted as a message, a warning becomes a debug line.
  void error(XERCES_CPP_NAMESPACE::XMLErrorReporter::ErrTypes type, const XMLCh* message, XMLFileLoc line,
             XMLFileLoc column);
  /// Issues the lines of all warnings a second time.
  void repeat_warnings() const;

  // The parser's events. Each stops the parser when a bound is exceeded.
  [[noreturn]] void external_entity(const LOCATOR* place);
  void document_type(const XMLCh* public_id, const XMLCh* system_id, bool has_external_subset, const LOCATOR* place);
  void entity(const XERCES_CPP_NAMESPACE::DTDEntityDecl& entity, bool is_parameter_entity, const LOCATOR* place);
  void attribute_list(const LOCATOR* place);
  void reference_starts() { ++m_open_references; }
  void reference_ends() { --m_open_references; }
  void element(const ATTRIBUTES& attributes, XMLSize_t attribute_count, const LOCATOR* place) {
    if (m_has_document_type) {
      element_of_document_type(attributes, attribute_count, place);
    }
  }

 private:
  void element_of_document_type(const ATTRIBUTES& attributes, XMLSize_t attribute_count, const LOCATOR* place);
  void post(XMLFileLoc line, XMLFileLoc column, const char* message);
  [[noreturn]] void stop(const LOCATOR* place, const char* message);

  KPT_STRING m_file_name;
  KPT_LOAD_PROBLEM m_problem;
  XERCES_CPP_NAMESPACE::SecurityManager m_security;
  struct WARNING {
    int line;
    int column;
    KPT_STRING text;
  };
  void issue(const WARNING& warning) const;
  std::vector<WARNING, MEM_STL_ALLOCATOR<WARNING>> m_warnings;
  std::size_t m_stops = 0;
  bool m_has_document_type = false;
  bool m_has_growing_entity = false;
  std::size_t m_open_references = 0;
  std::size_t m_expanded_elements = 0;
  std::size_t m_default_characters = 0;
};

/// Runs a parse if xerces-c has started, and reports its end to the host: a
/// line for an exception, a message when memory ran out, and in any case the
/// line of the parse with the number of errors. Returns whether the file is
/// well-formed.
bool kpt_parse_and_tell(const KPT_XML_PLATFORM& platform, const KPT_STRING& file_name,
                        const std::function<void()>& parse, const std::function<std::size_t()>& error_count);

#endif
