// Which texts a database file can hold.
//
// Ownership: none.
#ifndef KPT_HELD_TEXT_H
#define KPT_HELD_TEXT_H

#include <string_view>

#include "kpt_export.h"

/// Whether `save_atomically` can bring the text back: it is UTF-8 and has no
/// control characters below U+0020 but tab and the two line ends, and neither
/// U+FFFE nor U+FFFF. True for an empty text.
KPT_EXPORT bool kpt_file_can_hold(std::string_view text);

#endif
