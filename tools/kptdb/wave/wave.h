// wave: turns a dump of the transformed netlist into a dump of the reference netlist.
//
// Ownership: options are read only during the call.
#ifndef KPTDB_WAVE_H
#define KPTDB_WAVE_H

#include <string>

#include "../outcome.h"

namespace kptdb {

struct WAVE_OPTIONS {
  std::string file;
  std::string dump;  // of the transformed netlist; "-" for standard input
  std::string output;
  std::string scope;     // of the netlist in the dump; empty: the whole dump
  std::string to_scope;  // of the reference netlist in the output; empty: the same
  std::string only = "*";
  std::string divider = ".";  // between the instances of a name
  bool with_unknown = false;
  bool json = false;
};
EXIT_CODE run_wave(const WAVE_OPTIONS& options);

}  // namespace kptdb

#endif
