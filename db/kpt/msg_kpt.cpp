#include "db/kpt/msg_kpt.h"

#include <cstdarg>

#include "h/mem_alloc_sys.h"

namespace {

// Announces the library to the host's memory system for as long as it is loaded.
const MEM_INITIALIZER s_memory(KPT_TAG);

}  // namespace

namespace MSG_KPT {
namespace E {

MSG_E* REGNAME_NOT_IN_T_SET(const char* name) {
  auto* message = new MSG_E(nullptr);
  message->fill_args("\"%1!s!\" does not exist in the transformed set/EKPT_REGNAME_NOT_IN_T_SET", 1, name);
  return message;
}

// The count is 2 although there are four arguments: hosts format by the
// placeholders and use the count for purposes of their own.
MSG_E* PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE(const char* file, int line, int column, const char* text) {
  auto* message = new MSG_E(nullptr);
  message->fill_args(
      "Syntax error in XML Keypoint Database %1!s! at line number %2!d!, column number %3!d! : %4!s!"
      "/EKPT_PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE",
      2, file, line, column, text);
  return message;
}

}  // namespace E

MSG_D* DEBUG_MSG(const char* format, ...) {
  auto* message = new MSG_D(nullptr);
  va_list arguments;
  va_start(arguments, format);
  message->fill_args(format, arguments);
  va_end(arguments);
  message->set_tag(KPT_TAG);
  return message;
}

}  // namespace MSG_KPT

bool kpt_msg_debug(const char* format, ...) {
  char tag[] = "KPT";  // the host takes the tag as a writable text
  va_list arguments;
  va_start(arguments, format);
  const bool shown = msg_local_vdebug(tag, format, arguments);
  va_end(arguments);
  return shown;
}
