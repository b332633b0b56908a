// Makes the text of a message. Not installed.
//
// Ownership: arguments are read only during the call; the caller owns the results.
#ifndef HOST_SERVICES_TEXT_H
#define HOST_SERVICES_TEXT_H

#include <cstdarg>

#include "h/mem_alloc_sys.h"

namespace kpt_services {

/// An empty text for null.
inline const char* or_empty(const char* text) { return text != nullptr ? text : ""; }

/// Like printf, into a string; empty when the format fails.
__attribute__((format(printf, 1, 0))) MEM_STRING formatted(const char* format, va_list args);

/// Replaces the positional placeholders of `text` by the arguments, which are read in order. Argument
/// n is a const char* where a placeholder is "%n!s!", an int where it is "%n!d!"; the first one that
/// names n decides. Everything else stays unchanged: unknown kinds, a second kind for the same
/// argument, and every argument after one that no placeholder names, because it cannot be reached.
MEM_STRING filled(const MEM_STRING& text, va_list args);

}  // namespace kpt_services

#endif
