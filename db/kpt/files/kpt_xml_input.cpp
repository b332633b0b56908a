#include "db/kpt/files/kpt_xml_input.h"

#include <algorithm>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "db/kpt/files/kpt_xml_text.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

class STREAM : public BinInputStream {
 public:
  explicit STREAM(KPT_BYTES& bytes) : m_bytes(bytes) {}

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
  KPT_BYTES& m_bytes;
  XMLFilePos m_position = 0;
};

}  // namespace

KPT_XML_INPUT::KPT_XML_INPUT(const KPT_STRING& path, KPT_BYTES* bytes) : m_bytes(bytes) {
  KPT_WIDE_STRING shown(path.size(), u'\uFFFD');
  std::transform(path.begin(), path.end(), shown.begin(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 ? static_cast<char16_t>(byte) : u'\uFFFD';
  });
  setSystemId(shown.c_str());
}

BinInputStream* KPT_XML_INPUT::makeStream() const { return m_bytes == nullptr ? nullptr : new STREAM(*m_bytes); }
