// What a database file can hold.
//
// Ownership: none.
#ifndef KPT_HELD_TEXT_H
#define KPT_HELD_TEXT_H

#include <string_view>

/// Whether the text is UTF-8 of characters that XML has: it has no control
/// characters but tab and line ends.
bool kpt_file_can_hold(std::string_view text);

#endif
