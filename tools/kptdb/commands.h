// The commands. Each writes its result to standard output or to a given file, and
// returns its exit code. It throws a FAILURE when it has to stop.
//
// Ownership: options are read only during the call.
#ifndef KPTDB_COMMANDS_H
#define KPTDB_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

#include "name_query.h"
#include "outcome.h"

namespace kptdb {

struct RECORD_OPTIONS {
  std::vector<std::string> events;  // files in the order of the events; "-" for standard input
  std::string output;
  std::string name;  // the name of the database; empty: that of the first file
  bool keep_going = false;
  bool complete = false;  // a file without an end is refused
  bool json = false;
};
EXIT_CODE run_record(const RECORD_OPTIONS& options);

struct INFO_OPTIONS {
  std::string file;
  bool memory = false;
  std::optional<double> fail_under;  // the least percentage of reference registers with an answer
  bool json = false;
};
EXIT_CODE run_info(const INFO_OPTIONS& options);

struct SHOW_OPTIONS {
  std::string file;
  NAME_OPTIONS names;
  std::string side;  // empty: both
  bool json = false;
};
EXIT_CODE run_show(const SHOW_OPTIONS& options);

struct LIST_OPTIONS {
  std::string file;
  std::string side;
  std::string kind;
  std::string fate;
  std::string under;  // an instance in the hierarchy
  std::string pass;
  NAME_OPTIONS names;
  bool json = false;
};
EXIT_CODE run_list(const LIST_OPTIONS& options);

struct STATS_OPTIONS {
  std::string file;
  std::string side = "reference";
  unsigned depth = 2;  // 0: all levels
  bool json = false;
};
EXIT_CODE run_stats(const STATS_OPTIONS& options);

struct DIFF_OPTIONS {
  std::string first;
  std::string second;
  bool json = false;
};
EXIT_CODE run_diff(const DIFF_OPTIONS& options);

struct CHECK_OPTIONS {
  std::string file;
  std::optional<double> fail_under;
  bool json = false;
};
EXIT_CODE run_check(const CHECK_OPTIONS& options);

struct UNITE_OPTIONS {
  std::vector<std::string> files;  // in the order of the stages
  std::string output;
  bool keep_unrecorded = false;  // for the composition that it is compared with, as for compose
  bool json = false;
};
EXIT_CODE run_unite(const UNITE_OPTIONS& options);

struct COMPOSE_OPTIONS {
  std::vector<std::string> files;  // in the order of the stages
  std::string output;
  double share = 0.5;            // the least share of a stage's first registers that the stage before knows
  bool keep_unrecorded = false;  // what a stage does not mention goes through it
  bool json = false;
};
EXIT_CODE run_compose(const COMPOSE_OPTIONS& options);

struct EXPLAIN_OPTIONS {
  std::string name;
  std::vector<std::string> files;  // in the order of the stages
  bool transformed = false;        // the register is one of the last netlist
  double share = 0.5;              // as for compose
  bool json = false;
};
EXIT_CODE run_explain(const EXPLAIN_OPTIONS& options);

struct REPORT_OPTIONS {
  std::vector<std::string> files;  // in the order of the stages
  std::string output;
  std::string title;    // empty: the name of the first database
  std::string against;  // an older database; empty: none
};
EXIT_CODE run_report(const REPORT_OPTIONS& options);

struct EXPORT_OPTIONS {
  std::string file;
  std::string format;
  std::string output;  // empty: standard output
  std::string around;
  std::string module;
  std::string design;  // in an SQLite file; empty: the database's name
  bool append = false;
  std::string dump;
  std::string scope;
  std::string divider = ".";
};
EXIT_CODE run_export(const EXPORT_OPTIONS& options);

}  // namespace kptdb

#endif
