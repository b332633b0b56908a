// The library's messages and its debug line.
//
// Ownership: a MSG_KPT function returns a new message object, which the caller
// posts and then deletes. The library keeps no pointer to it.
#ifndef MSG_KPT_H
#define MSG_KPT_H

#include <string_view>

#include "h/msg_sys.h"
#include "kpt_export.h"

/// The module tag of every debug line, internal error and allocation.
inline constexpr char KPT_TAG[] = "KPT";

namespace MSG_KPT {
namespace E {

/// "\"NAME\" does not exist in the transformed set". For clients: the library itself does not post it.
KPT_EXPORT MSG_E* REGNAME_NOT_IN_T_SET(const char* name);

/// "Syntax error in XML Keypoint Database FILE at line number L, column number C : TEXT".
/// Lines and columns count from 1. Posted once for every error that the XML parser reports.
KPT_EXPORT MSG_E* PARSER_REPORTED_SYNTAX_ERROR_IN_XML_FILE(const char* file, int line, int column, const char* text);

/// "Keypoint Database FILE can be neither loaded nor saved: memory has run out".
KPT_EXPORT MSG_E* OUT_OF_MEMORY(const char* file);

/// "Keypoint Database FILE cannot be saved: no file can hold the texts of OWNER".
/// OWNER is the database, a register, or a map, which is named by its first
/// register. A byte of a name that cannot be shown is written as \xNN.
KPT_EXPORT MSG_E* TEXTS_CANNOT_BE_SAVED(const char* file, const char* owner);

/// "Keypoint Database FILE is saved, but the owner or the group of the earlier file could not be kept".
KPT_EXPORT MSG_E* OWNER_NOT_KEPT(const char* file);

}  // namespace E

/// A debug message with a printf format, filed under "KPT".
KPT_EXPORT MSG_D* DEBUG_MSG(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace MSG_KPT

/// Gives one debug line (printf format) to the host under the tag "KPT", and
/// returns the host's answer. The host decides whether to show it. When the host
/// has no memory for the line, the line is lost and the result is false.
KPT_EXPORT bool kpt_msg_debug(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Posts OUT_OF_MEMORY, unless there is no memory for the message.
void kpt_tell_out_of_memory(std::string_view file_name);

#endif
