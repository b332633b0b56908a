// Gives bytes to xerces-c, whose own sources take a name for a URL when it looks
// like one.
//
// Ownership: none; the bytes outlive the parse.
#ifndef KPT_XML_INPUT_H
#define KPT_XML_INPUT_H

#include <xercesc/sax/InputSource.hpp>

#include "db/kpt/files/kpt_file_bytes.h"

class KPT_XML_INPUT : public XERCES_CPP_NAMESPACE::InputSource {
 public:
  /// The path is only used in messages. Null bytes mean a file that cannot be
  /// opened, which the parser reports.
  KPT_XML_INPUT(const KPT_STRING& path, KPT_BYTES* bytes);

  XERCES_CPP_NAMESPACE::BinInputStream* makeStream() const override;

 private:
  KPT_BYTES* m_bytes;
};

#endif
