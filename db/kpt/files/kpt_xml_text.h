// Converts the XML parser's text to UTF-8, and back.
//
// Ownership: none.
#ifndef KPT_XML_TEXT_H
#define KPT_XML_TEXT_H

#include <string>
#include <string_view>
#include <xercesc/util/XercesDefs.hpp>

#include "db/kpt/kpt_types.h"

/// Text in the parser's characters.
using KPT_WIDE_STRING = std::basic_string<XMLCh, std::char_traits<XMLCh>, MEM_STL_ALLOCATOR<XMLCh>>;

/// The parser's text in UTF-8. It does not depend on the locale or on the
/// parser's own narrow characters. Half of a surrogate pair is left out.
void kpt_narrow(const XMLCh* text, KPT_STRING& out);
/// The same, appended to `out`.
void kpt_append_narrow(const XMLCh* text, KPT_STRING& out);
/// UTF-8 as the parser's text. Empty for a text that is not UTF-8, or has characters that XML does not have.
KPT_WIDE_STRING kpt_widen(std::string_view text);

#endif
