// Reads plain database files: those that need no more of XML than elements,
// attributes in double quotes, texts in ASCII or UTF-8, the five predefined
// entities and character references. docs/format.md says what is plain.
//
// Ownership: none. What it hands on is read during the call only.
//
// It is a strict judge of the little that it knows: what it takes for plain is
// well-formed, and means to every XML parser what it means here. At the first
// byte of anything else it steps aside, without a word: whether that is an
// error, and which, is for the general source to say.
#ifndef KPT_PLAIN_SCANNER_H
#define KPT_PLAIN_SCANNER_H

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/load/kpt_watched_builder.h"

/// Whether all of the bytes are a plain file. `name` is then the attribute
/// "name" of its root.
bool kpt_is_plain(KPT_BYTES& bytes, KPT_STRING& name);

/// Hands a plain file to the builder. False when it is none, and what stands
/// before that is handed on by then.
bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_DATABASE_BUILDER& builder);

/// The same, and the builder is told of lines.
bool kpt_build_from_plain(KPT_BYTES& bytes, KPT_WATCHED_BUILDER& builder);

#endif
