// The host's message services, in the log of Yosys. Errors become warnings, because an
// error of Yosys ends the process. Debug lines appear where Yosys shows debug output.
#include <string>

#include "h/msg_sys.h"
#include "host/services/text.h"
#include "yosys_host.h"

using kpt_services::or_empty;

void MSG_BASE::post() {
  if (dynamic_cast<MSG_D*>(this) != nullptr) {
    kpt_yosys::show_debug(m_tag.c_str(), m_text.c_str());
  } else {
    kpt_yosys::show_warning(m_tag.c_str(), m_text.c_str());
  }
}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int line) {
  const std::string text =
      std::string("internal error: ") + or_empty(condition) + " (" + or_empty(file) + ":" + std::to_string(line) + ")";
  kpt_yosys::show_warning(or_empty(tag), text.c_str());
}

bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (!kpt_yosys::debug_is_shown()) {
    return false;
  }
  return kpt_yosys::show_debug(or_empty(tag), kpt_services::formatted(format, args).c_str());
}
