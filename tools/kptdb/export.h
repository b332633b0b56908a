// The formats of `export` with a source of their own.
//
// Ownership: arguments are read only during the call.
#ifndef KPTDB_EXPORT_H
#define KPTDB_EXPORT_H

#include "commands.h"
#include "database.h"
#include "files.h"
#include "progress.h"

namespace kptdb {

/// Shows how many of a database's registers and maps are exported.
class EXPORT_PROGRESS {
 public:
  explicit EXPORT_PROGRESS(const DATABASE& db)
      : m_progress("exporting",
                   db.registers(KPT_REFERENCE_SET).size() + db.registers(KPT_TRANSFORMED_SET).size() + db.maps().size(),
                   PROGRESS::REGISTERS_AND_MAPS) {}
  /// One more of them is exported.
  void next() { m_progress.at(++m_done); }

 private:
  PROGRESS m_progress;
  std::uint64_t m_done = 0;
};

/// A picture for Graphviz of all maps, or of the maps of one register.
void export_dot(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out);

/// The state encodings, as synthesis tools exchange them: a line ".fsm MODULE SIGNAL" for
/// every state machine and a line ".map OLD NEW" for every state, most significant bit first.
void export_encfile(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out);

/// The lines of an event file from which record makes a database that says the same.
void export_events(const DATABASE& db, RESULT_FILE& out);

}  // namespace kptdb

#endif
