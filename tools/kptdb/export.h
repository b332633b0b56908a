// The forms of `export` that have a source of their own.
//
// Ownership: arguments are read during the call only.
#ifndef KPTDB_EXPORT_H
#define KPTDB_EXPORT_H

#include "commands.h"
#include "database.h"
#include "files.h"

namespace kptdb {

/// A picture of all maps, or of those of one register, for Graphviz.
void export_dot(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out);

/// The state encodings, as synthesis tools exchange them: for every state machine a line
/// ".fsm MODULE SIGNAL" and a line ".map OLD NEW" a state, most significant bit first.
void export_encfile(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out);

/// The lines of an event file from which record makes a database that says the same.
void export_events(const DATABASE& db, RESULT_FILE& out);

}  // namespace kptdb

#endif
