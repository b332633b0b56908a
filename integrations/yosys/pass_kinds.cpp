#include "pass_kinds.h"

#include <algorithm>
#include <array>

namespace kpt_yosys {

bool removes_unused(const std::string& pass) { return pass == "opt_clean" || pass == "clean"; }

bool keeps_names(const std::string& pass) {
  constexpr std::array NAMES{"design", "flatten", "hierarchy", "splitnets", "uniquify"};
  return std::find(NAMES.begin(), NAMES.end(), pass) != NAMES.end();
}

bool only_simplifies(const std::string& pass) {
  constexpr std::array NAMES{
      "abc",      "abc9",        "alumacc",      "attrmvcp",   "check",     "clean",     "design",    "dffinit",
      "dffunmap", "dfflegalize", "dfflibmap",    "flatten",    "fsm",       "hierarchy", "memory",    "muxcover",
      "opt",      "opt_clean",   "opt_demorgan", "opt_dff",    "opt_expr",  "opt_ffinv", "opt_lut",   "opt_lut_ins",
      "opt_mem",  "opt_merge",   "opt_muxtree",  "opt_reduce", "opt_share", "peepopt",   "pmuxtree",  "proc",
      "rename",   "script",      "setattr",      "setundef",   "share",     "simplemap", "splitnets", "stat",
      "techmap",  "uniquify",    "zinit"};
  return pass.empty() || pass.starts_with("synth") || std::find(NAMES.begin(), NAMES.end(), pass) != NAMES.end();
}

bool makes_registers_anew(const std::string& pass, const std::vector<std::string>& args) {
  return pass == "abc" && std::find(args.begin(), args.end(), "-dff") != args.end();
}

bool maps_to_technology(const std::string& pass) {
  return pass == "dfflibmap" || pass == "techmap" || pass == "extract";
}

}  // namespace kpt_yosys
