#include "db/kpt/files/kpt_xml_platform.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "db/kpt/msg_kpt.h"

using namespace XERCES_CPP_NAMESPACE;

KPT_XML_PLATFORM::KPT_XML_PLATFORM() {
  try {
    XMLPlatformUtils::Initialize();
    m_started = true;
  } catch (...) {
    kpt_msg_debug("Error: the XML parser cannot be initialised");
  }
}

KPT_XML_PLATFORM::~KPT_XML_PLATFORM() {
  if (m_started) {
    XMLPlatformUtils::Terminate();
  }
}
