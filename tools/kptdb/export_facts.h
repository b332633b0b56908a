// The formats of `export` that are made from facts: for scripts, viewers, checkers and queries.
//
// Ownership: arguments are read only during the call.
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

/// A new SQLite file, written completely or not at all.
void export_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path);
/// The same tables in a file that may contain other designs. The rows of this design are replaced.
void append_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path);

struct VIEWER_OPTIONS {
  std::string folder;
  std::string dump;  // of the netlist; the viewer uses its names
  std::string scope;
  char divider = '.';
};
/// A save file NAME.gtkw and the filters that it names.
void export_gtkwave(const FACTS& facts, const std::string& name, const VIEWER_OPTIONS& options);
/// A mapping for every state machine.
void export_surfer(const FACTS& facts, const VIEWER_OPTIONS& options);

/// Writes the format if it is one of these, and returns whether it is.
bool export_facts(const DATABASE& db, const EXPORT_OPTIONS& options);

}  // namespace kptdb

#endif
