// From the XML parser's text to narrow text.
//
// Ownership: none.
#ifndef KPT_XML_TEXT_H
#define KPT_XML_TEXT_H

#include <string>
#include <xercesc/util/XercesDefs.hpp>

#include "db/kpt/kpt_types.h"

/// Text in the parser's characters.
using KPT_WIDE_STRING = std::basic_string<XMLCh, std::char_traits<XMLCh>, MEM_STL_ALLOCATOR<XMLCh>>;

/// The parser's text as narrow text. ASCII, which is all that a database file
/// is expected to hold, is narrowed in place; the rest goes through the parser's
/// own transcoder, and is left out where that fails.
void kpt_narrow(const XMLCh* text, KPT_STRING& out);
/// The same, behind what `out` holds.
void kpt_append_narrow(const XMLCh* text, KPT_STRING& out);

#endif
