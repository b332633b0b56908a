#include "db/kpt/msg_kpt.h"

#include <cstdarg>
#include <memory>
#include <new>

#include "h/mem_alloc_sys.h"

namespace {

// Tells the host's memory system that the library is loaded, and later that it is unloaded.
const MEM_INITIALIZER s_memory(KPT_TAG);

}  // namespace

namespace MSG_KPT {
namespace E {

MSG_E* REGNAME_NOT_IN_T_SET(const char* name) {
  std::unique_ptr<MSG_E> message(new MSG_E(nullptr));
  message->fill_args("\"%1!s!\" does not exist in the transformed set/EKPT_REGNAME_NOT_IN_T_SET", 1, name);
  return message.release();
}

// The count is 2 although there are four arguments: hosts format by the
// placeholders and use the count for other purposes.
MSG_E* PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE(const char* file, int line, int column, const char* text) {
  std::unique_ptr<MSG_E> message(new MSG_E(nullptr));
  message->fill_args(
      "Syntax error in XML Keypoint Database %1!s! at line number %2!d!, column number %3!d! : %4!s!"
      "/EKPT_PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE",
      2, file, line, column, text);
  return message.release();
}

MSG_E* OUT_OF_MEMORY(const char* file) {
  std::unique_ptr<MSG_E> message(new MSG_E(nullptr));
  message->fill_args("Keypoint Database %1!s! can be neither loaded nor saved: memory has run out/EKPT_OUT_OF_MEMORY",
                     1, file);
  return message.release();
}

MSG_E* TEXTS_CANNOT_BE_SAVED(const char* file, const char* owner) {
  std::unique_ptr<MSG_E> message(new MSG_E(nullptr));
  message->fill_args(
      "Keypoint Database %1!s! cannot be saved: no file can hold the texts of %2!s!/EKPT_TEXTS_CANNOT_BE_SAVED", 2,
      file, owner);
  return message.release();
}

MSG_E* OWNER_NOT_KEPT(const char* file) {
  std::unique_ptr<MSG_E> message(new MSG_E(nullptr));
  message->fill_args(
      "Keypoint Database %1!s! is saved, but the owner or the group of the earlier file could not be kept"
      "/EKPT_OWNER_NOT_KEPT",
      1, file);
  return message.release();
}

}  // namespace E

MSG_D* DEBUG_MSG(const char* format, ...) {
  std::unique_ptr<MSG_D> message(new MSG_D(nullptr));
  va_list arguments;
  va_start(arguments, format);
  message->fill_args(format, arguments);
  va_end(arguments);
  message->set_tag(KPT_TAG);
  return message.release();
}

}  // namespace MSG_KPT

// Lines are also issued after a change, and the change must not fail because
// there is no memory for the line.
bool kpt_msg_debug(const char* format, ...) {
  char tag[] = "KPT";  // the host takes the tag as a writable text
  va_list arguments;
  va_start(arguments, format);
  bool shown = false;
  try {
    shown = msg_local_vdebug(tag, format, arguments);
  } catch (const std::bad_alloc&) {
    shown = false;
  }
  va_end(arguments);
  return shown;
}

void kpt_tell_out_of_memory(std::string_view file_name) {
  try {
    const MEM_STRING name(file_name);
    const std::unique_ptr<MSG_E> message(MSG_KPT::E::OUT_OF_MEMORY(name.c_str()));
    message->post();
  } catch (const std::bad_alloc&) {
    // The result of the operation has to tell it alone.
  }
}
