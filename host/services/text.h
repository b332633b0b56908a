// How a message's text is put together. Not installed.
//
// Ownership: arguments are read during the call only; results are values of the caller.
#ifndef HOST_SERVICES_TEXT_H
#define HOST_SERVICES_TEXT_H

#include <cstdarg>

#include "h/mem_alloc_sys.h"

namespace kpt_services {

/// The empty text for null.
inline const char* or_empty(const char* text) { return text != nullptr ? text : ""; }

/// printf into a string; empty when the format cannot be carried out.
__attribute__((format(printf, 1, 0))) MEM_STRING formatted(const char* format, va_list args);

/// Replaces the positional placeholders of `text` by the arguments, read in order: argument n is a
/// const char* where a placeholder says "%n!s!", an int where it says "%n!d!". The first one that
/// names n decides. Anything else stays as it is: unknown kinds, a second kind for the same
/// argument, and arguments after one that no placeholder names, since they cannot be reached.
MEM_STRING filled(const MEM_STRING& text, va_list args);

}  // namespace kpt_services

#endif
