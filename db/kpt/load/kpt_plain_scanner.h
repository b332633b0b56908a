// Reads plain database files. They consist of elements, attributes in double
// quotes, texts in ASCII or UTF-8, the five predefined entities and character
// references; docs/format.md defines them.
//
// Ownership: none. The builder reads its arguments only during a call.
//
// The scanner is strict. A file that it accepts is well-formed and has the same
// meaning for every XML parser. At the first byte of anything else it stops
// without a message. The general source then decides whether that is an error,
// and which one.
#ifndef KPT_PLAIN_SCANNER_H
#define KPT_PLAIN_SCANNER_H

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/load/kpt_watched_builder.h"

/// Whether all of the bytes are a plain file. `name` is then the attribute "name"
/// of the root.
bool kpt_is_plain(KPT_BYTES& bytes, KPT_STRING& name);

/// Gives the elements of a plain file to the builder. False when the file is not
/// plain; the builder then has the elements before that.
bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_DATABASE_BUILDER& builder);

/// The same, and sets the lines for the builder.
bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_WATCHED_BUILDER& builder);

#endif
