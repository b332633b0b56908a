// Tests whether a database file can hold a text.
//
// Ownership: none.
#ifndef KPT_HELD_TEXT_H
#define KPT_HELD_TEXT_H

#include <string_view>

#include "kpt_export.h"

/// Whether a text that `save_atomically` writes can be read back. It has to be
/// UTF-8 without U+FFFE and U+FFFF, and without control characters below U+0020
/// except tab, line feed and carriage return. True for an empty text.
KPT_EXPORT bool kpt_file_can_hold(std::string_view text);

#endif
