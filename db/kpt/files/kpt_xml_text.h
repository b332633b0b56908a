// From the XML parser's text to narrow text.
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

/// The parser's text in UTF-8, whatever the locale and the parser's own narrow
/// characters are. Half of a pair of surrogates is left out.
void kpt_narrow(const XMLCh* text, KPT_STRING& out);
/// The same, behind what `out` holds.
void kpt_append_narrow(const XMLCh* text, KPT_STRING& out);
/// The way back. Empty for a text that is not UTF-8 of XML's characters.
KPT_WIDE_STRING kpt_widen(std::string_view text);

#endif
