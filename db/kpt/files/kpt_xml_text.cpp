#include "db/kpt/files/kpt_xml_text.h"

#include <memory>
#include <string>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

using namespace XERCES_CPP_NAMESPACE;

void kpt_narrow(const XMLCh* text, KPT_STRING& out) {
  out.clear();
  kpt_append_narrow(text, out);
}

void kpt_append_narrow(const XMLCh* text, KPT_STRING& out) {
  if (text == nullptr || *text == 0) {
    return;
  }
  const std::size_t size = std::char_traits<XMLCh>::length(text);
  const std::size_t start = out.size();
  out.resize(start + size);
  unsigned seen = 0;
  for (std::size_t k = 0; k < size; ++k) {
    seen |= text[k];
    out[start + k] = static_cast<char>(text[k]);
  }
  if (seen < 0x80) {
    return;
  }
  out.resize(start);
  try {
    const auto release = [](char* p) { XMLString::release(&p); };
    const std::unique_ptr<char, decltype(release)> transcoded(XMLString::transcode(text), release);
    if (transcoded != nullptr) {
      out += transcoded.get();
    }
  } catch (const XMLException&) {
    // No such text in the parser's narrow characters.
  }
}
