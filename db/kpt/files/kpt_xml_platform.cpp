#include "db/kpt/files/kpt_xml_platform.h"

#include <mutex>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLInitializer.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/util/XMLUniDefs.hpp>

#include "db/kpt/files/kpt_xml_memory.h"
#include "db/kpt/msg_kpt.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

// A start takes about 730,000 bytes. When memory runs out during a start, the
// parser can be neither used nor terminated.
constexpr std::size_t BYTES_OF_A_START = std::size_t{1} << 20;

struct PANIC {};
struct TAKEN_BACK {};

// The parser's own handler ends the process.
class THROWING : public PanicHandler {
 public:
  void panic(const PanicReasons /*reason*/) override { throw PANIC(); }
};

// The last part of a start, in which a few bytes are taken past the memory
// manager: the first thing that it does, and one of its last.
class STATIC_DATA : public XMLInitializer {
 public:
  static void initialize() { initializeStaticData(); }
};

// The parser uses both after our last static object is destroyed.
KPT_XML_MEMORY& memory() {
  static auto& s_memory = *new KPT_XML_MEMORY;
  return s_memory;
}

PanicHandler& panic_handler() {
  static auto& s_handler = *new THROWING;
  return s_handler;
}

// Over the parser's starts and ends, which count themselves without one.
constinit std::mutex s_lock;
bool s_is_half_started = false;

// The parser counts a start before it makes it, so a second call would think that
// it is started. A start that failed before its last part did much is completed,
// now or by the next start. After that, it can be undone.
void complete_start() {
  if (DOMImplementation::getImplementation() == nullptr) {
    STATIC_DATA::initialize();
    s_is_half_started = false;
    return;
  }
  XMLPlatformUtils::Terminate();
  s_is_half_started = false;
  memory().release();
  throw TAKEN_BACK();
}

void start() {
  if (s_is_half_started) {
    complete_start();
    return;
  }
  if (XMLPlatformUtils::fgMemoryManager != nullptr) {
    XMLPlatformUtils::Initialize();  // once more, by us or by the host
    return;
  }
  PanicHandler& handler = panic_handler();  // allocates, so that it may fail: before anything has begun
  memory().provide(BYTES_OF_A_START);
  try {
    XMLPlatformUtils::Initialize(XMLUni::fgXercescDefaultLocale, nullptr, &handler, &memory());
  } catch (...) {
    s_is_half_started = true;
    complete_start();
  }
}

}  // namespace

KPT_XML_PLATFORM::KPT_XML_PLATFORM() {
  try {
    const std::lock_guard lock(s_lock);
    start();
    m_started = true;
  } catch (const std::bad_alloc&) {
    m_ran_out_of_memory = true;
  } catch (const TAKEN_BACK&) {
    m_ran_out_of_memory = true;
  } catch (...) {
    // The parser lacks something else, which is reported below.
  }
  if (!m_started) {
    kpt_msg_debug("Error: the XML parser cannot be initialised");
  }
}

KPT_XML_PLATFORM::~KPT_XML_PLATFORM() {
  if (!m_started) {
    return;
  }
  const std::lock_guard lock(s_lock);
  XMLPlatformUtils::Terminate();
  if (XMLPlatformUtils::fgMemoryManager == nullptr) {
    memory().release();
  }
}
