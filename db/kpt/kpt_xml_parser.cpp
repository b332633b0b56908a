#include "db/kpt/kpt_xml_parser.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/files/kpt_xml_text.h"
#include "db/kpt/msg_kpt.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

// A database file needs no entities at all. Those of a hand-written one are
// few and short; together these bounds keep what a document can make of itself
// to some megabytes, however it nests.
constexpr XMLSize_t MOST_EXPANSIONS = 1000;
constexpr XMLSize_t LONGEST_ENTITY = 4096;
// Parameter entities are expanded without being counted, so they may hold
// little, and no other.
constexpr XMLSize_t LONGEST_PARAMETER_ENTITY = 16;
// Nor are those of the default values of attributes counted.
constexpr XMLSize_t LONGEST_ENTITY_BEFORE_ATTRIBUTES = 16;
// The parser recurses over the elements that an entity stands for.
constexpr std::size_t MOST_EXPANDED_ELEMENTS = 1000;
// Attributes that a document type adds to every element of a kind.
constexpr std::size_t MOST_DEFAULT_CHARACTERS = std::size_t{1} << 20;
constexpr std::size_t DEFAULT_ATTRIBUTE_COST = 64;

// The parser's own sources take a name for a URL where it looks like one.
class FILE_STREAM : public BinInputStream {
 public:
  explicit FILE_STREAM(const KPT_STRING& path) : m_bytes(path) {}

  bool is_open() const { return m_bytes.is_open(); }
  XMLFilePos curPos() const override { return m_position; }
  const XMLCh* getContentType() const override { return nullptr; }
  XMLSize_t readBytes(XMLByte* to, XMLSize_t size) override {
    const std::ptrdiff_t count = m_bytes.read(reinterpret_cast<char*>(to), size);
    if (count < 0) {
      ThrowXML(XMLPlatformUtilsException, XMLExcepts::File_CouldNotReadFromFile);
    }
    m_position += static_cast<XMLFilePos>(count);
    return static_cast<XMLSize_t>(count);
  }

 private:
  KPT_FILE_BYTES m_bytes;
  XMLFilePos m_position = 0;
};

class FILE_SOURCE : public InputSource {
 public:
  explicit FILE_SOURCE(const KPT_STRING& path) : m_path(path) {
    // The parser only shows this name, in messages.
    KPT_WIDE_STRING shown(path.size(), u'\uFFFD');
    std::transform(path.begin(), path.end(), shown.begin(), [](char c) {
      const auto byte = static_cast<unsigned char>(c);
      return byte < 0x80 ? static_cast<char16_t>(byte) : u'\uFFFD';
    });
    setSystemId(shown.c_str());
  }

  // Null when the file cannot be opened, which the parser reports.
  BinInputStream* makeStream() const override {
    auto stream = std::make_unique<FILE_STREAM>(m_path);
    return stream->is_open() ? stream.release() : nullptr;
  }

 private:
  const KPT_STRING& m_path;
};

int as_int(XMLFileLoc place) {
  constexpr XMLFileLoc most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(place, most));
}

KPT_STRING narrow(const XMLCh* text) {
  KPT_STRING out;
  kpt_narrow(text, out);
  return out;
}

bool is_given(const XMLCh* text) { return text != nullptr && *text != 0; }

}  // namespace

KESTOV_DOM_PARSER::~KESTOV_DOM_PARSER() = default;

KPT_XML_PARSER_WRAPPER::KPT_XML_PARSER_WRAPPER(MemoryManager* memory) : KESTOV_DOM_PARSER(memory) {
  m_security.setEntityExpansionLimit(MOST_EXPANSIONS);
  setSecurityManager(&m_security);
  // Without this the parser asks nobody and opens what an entity names.
  getScanner()->setEntityHandler(this);
}

KPT_XML_PARSER_WRAPPER::~KPT_XML_PARSER_WRAPPER() = default;

void KPT_XML_PARSER_WRAPPER::post(XMLFileLoc line, XMLFileLoc column, const char* message) const {
  const std::unique_ptr<MSG_E> error(
      MSG_KPT::E::PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE(m_file_name.c_str(), as_int(line), as_int(column), message));
  error->post();
}

void KPT_XML_PARSER_WRAPPER::warn(XMLFileLoc line, XMLFileLoc column, const char* message) const {
  kpt_msg_debug("Warning in XML Keypoint Database %s at line number %d, column number %d : %s", m_file_name.c_str(),
                as_int(line), as_int(column), message);
}

void KPT_XML_PARSER_WRAPPER::error(unsigned int /*code*/, const XMLCh* /*domain*/, XMLErrorReporter::ErrTypes type,
                                   const XMLCh* message, const XMLCh* /*public_id*/, const XMLCh* /*system_id*/,
                                   XMLFileLoc line, XMLFileLoc column) {
  // A warning is not counted by the parser and keeps no file from loading.
  const KPT_STRING text = narrow(message);
  if (type == XMLErrorReporter::ErrType_Warning) {
    warn(line, column, text.c_str());
  } else {
    post(line, column, text.c_str());
  }
}

void KPT_XML_PARSER_WRAPPER::stop(const char* message) {
  ++m_stops;
  const Locator* place = getScanner()->getLocator();
  post(place->getLineNumber(), place->getColumnNumber(), message);
  throw STOPPED();
}

InputSource* KPT_XML_PARSER_WRAPPER::resolveEntity(XMLResourceIdentifier* /*identifier*/) {
  stop("external entities are not read");
}

void KPT_XML_PARSER_WRAPPER::doctypeDecl(const DTDElementDecl& element, const XMLCh* public_id, const XMLCh* system_id,
                                         bool has_internal_subset, bool has_external_subset) {
  if (has_external_subset || is_given(public_id) || is_given(system_id)) {
    stop("external document types are not read");
  }
  m_has_document_type = true;
  KESTOV_DOM_PARSER::doctypeDecl(element, public_id, system_id, has_internal_subset, has_external_subset);
}

void KPT_XML_PARSER_WRAPPER::entityDecl(const DTDEntityDecl& entity, bool is_parameter_entity, bool is_ignored) {
  const XMLCh* const value = entity.getValue();
  if (value != nullptr) {
    const std::basic_string_view<XMLCh> text(value, entity.getValueLen());
    if (text.size() > LONGEST_ENTITY) {
      stop("the entity is too long");
    }
    if (is_parameter_entity && (text.size() > LONGEST_PARAMETER_ENTITY || text.find(u'%') != text.npos)) {
      stop("the parameter entity is too long or refers to another");
    }
    m_has_growing_entity =
        m_has_growing_entity || text.size() > LONGEST_ENTITY_BEFORE_ATTRIBUTES || text.find(u'&') != text.npos;
  }
  KESTOV_DOM_PARSER::entityDecl(entity, is_parameter_entity, is_ignored);
}

void KPT_XML_PARSER_WRAPPER::startAttList(const DTDElementDecl& element) {
  if (m_has_growing_entity) {
    stop("attributes are declared behind an entity that is long or refers to another");
  }
  KESTOV_DOM_PARSER::startAttList(element);
}

void KPT_XML_PARSER_WRAPPER::startEntityReference(const XMLEntityDecl& entity) {
  ++m_open_references;
  KESTOV_DOM_PARSER::startEntityReference(entity);
}

void KPT_XML_PARSER_WRAPPER::endEntityReference(const XMLEntityDecl& entity) {
  --m_open_references;
  KESTOV_DOM_PARSER::endEntityReference(entity);
}

void KPT_XML_PARSER_WRAPPER::startElement(const XMLElementDecl& element, unsigned int url_id, const XMLCh* prefix,
                                          const RefVectorOf<XMLAttr>& attributes, XMLSize_t attribute_count,
                                          bool is_empty, bool is_root) {
  if (m_has_document_type) {
    if (m_open_references > 0 && ++m_expanded_elements > MOST_EXPANDED_ELEMENTS) {
      stop("entities stand for too many elements");
    }
    for (XMLSize_t k = 0; k < attribute_count; ++k) {
      const XMLAttr* const attribute = attributes.elementAt(k);
      if (!attribute->getSpecified()) {
        m_default_characters += DEFAULT_ATTRIBUTE_COST + XMLString::stringLen(attribute->getValue());
      }
    }
    if (m_default_characters > MOST_DEFAULT_CHARACTERS) {
      stop("the document type adds too many attributes");
    }
  }
  KESTOV_DOM_PARSER::startElement(element, url_id, prefix, attributes, attribute_count, is_empty, is_root);
}

KPT_XML_PARSER::KPT_XML_PARSER(std::string_view file_name) {
  try {
    parse(file_name);
  } catch (const std::bad_alloc&) {
    kpt_tell_out_of_memory(file_name);  // not even for the name of the file
    m_ok = false;
  }
}

// The parser goes before its memory and before what keeps xerces-c started.
KPT_XML_PARSER::~KPT_XML_PARSER() { m_parser.reset(); }

void KPT_XML_PARSER::parse(std::string_view file_name) {
  const KPT_STRING name(file_name);
  m_ok = m_platform.is_started();
  if (m_ok) {
    try {
      const KPT_STRING path = kpt_path_to_open(name);
      const FILE_SOURCE source(path);
      m_parser.emplace(&m_memory);
      m_parser->setErrorHandler(&m_error_handler);
      m_parser->set_file_name(name);
      m_parser->parse(source);
    } catch (...) {
      tell_caught(name.c_str());
      m_ok = false;
    }
  }
  const std::size_t errors = m_parser.has_value() ? m_parser->error_count() : 0;
  kpt_msg_debug("XML parse: file: %s, nerrors: %d", name.c_str(), static_cast<int>(errors));
  m_ok = m_ok && errors == 0;
  m_document = m_ok ? m_parser->getDocument() : nullptr;
}

// Called while an exception is handled.
void KPT_XML_PARSER::tell_caught(const char* file_name) {
  constexpr char UNKNOWN[] = "Caught Unknown XML exception while parsing file %s";
  try {
    throw;
  } catch (const XMLException& problem) {
    kpt_msg_debug("Caught XMLException(error_msg: %s) while parsing file %s", narrow(problem.getMessage()).c_str(),
                  file_name);
  } catch (const DOMException& problem) {
    kpt_msg_debug("Caught DOM_DOMException(code %d) while parsing file %s", static_cast<int>(problem.code), file_name);
  } catch (const KPT_XML_PARSER_WRAPPER::STOPPED&) {
    // Reported where it was thrown.
  } catch (const OutOfMemoryException&) {
    kpt_msg_debug(UNKNOWN, file_name);
    kpt_tell_out_of_memory(file_name);
  } catch (const std::bad_alloc&) {
    kpt_msg_debug(UNKNOWN, file_name);
    kpt_tell_out_of_memory(file_name);
  } catch (...) {
    kpt_msg_debug(UNKNOWN, file_name);
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
