// The forms of `export` that are made from facts: for scripts, viewers, checkers and queries.
//
// Ownership: arguments are read during the call only.
#ifndef KPTDB_EXPORT_FACTS_H
#define KPTDB_EXPORT_FACTS_H

#include <string>

#include "commands.h"
#include "database.h"
#include "facts.h"
#include "files.h"

namespace kptdb {

/// Arrays for Tcl.
void export_tcl(const FACTS& facts, RESULT_FILE& out);

/// Sections for a configuration of EQY.
void export_eqy(const FACTS& facts, const std::string& module, RESULT_FILE& out);

/// A new file of SQLite, there whole or not at all.
void export_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path);
/// The same tables in a file that may hold other designs; what it says of this one is replaced.
void append_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path);

struct VIEWER_OPTIONS {
  std::string folder;
  std::string dump;  // of the netlist, whose names the viewer goes by
  std::string scope;
  char divider = '.';
};
/// A save file NAME.gtkw and the filters that it names.
void export_gtkwave(const FACTS& facts, const std::string& name, const VIEWER_OPTIONS& options);
/// A mapping for every state machine.
void export_surfer(const FACTS& facts, const VIEWER_OPTIONS& options);

/// Whether the format is one of these; if so, it is written.
bool export_facts(const DATABASE& db, const EXPORT_OPTIONS& options);

}  // namespace kptdb

#endif
