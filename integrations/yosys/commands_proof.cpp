// The commands that prove netlists with a keypoint database.
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <string_view>

#include "command_support.h"
#include "netlist_choices.h"
#include "proof.h"
#include "proof_status.h"
#include "written_choices.h"

namespace {

using namespace kpt_yosys;

struct KPT_APPLY : Yosys::Pass {
  KPT_APPLY() : Pass("kpt_apply", "prepare an equivalence proof by a keypoint database") {}
  void help() override {
    Yosys::log(
        "\n    kpt_apply [-name <name>] -encfile <file> <gold> <gate>\n\n"
        "Gives the registers of two flat modules, before and after synthesis, names that both\n"
        "share, and writes the codes of state machines to the file. Then prove:\n\n"
        "    equiv_make -encfile <file> gold gate equiv\n"
        "    equiv_induct -seq 1 equiv; equiv_status -assert equiv\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string name = "kpt";
    std::string file;
    std::size_t at = 1;
    while (at < args.size() && (takes(args, at, "-name", name) || takes(args, at, "-encfile", file))) {
      ++at;
    }
    if (file.empty() || at + 2 != args.size()) {
      Yosys::log_cmd_error("Give -encfile <file> and two modules.\n");
    }
    RTLIL::Module* const gold = design->module(RTLIL::escape_id(args[at]));
    RTLIL::Module* const gate = design->module(RTLIL::escape_id(args[at + 1]));
    if (gold == nullptr || gate == nullptr) {
      Yosys::log_cmd_error("There is no module %s.\n", args[gold == nullptr ? at : at + 1].c_str());
    }
    const KPT_KEYPOINTS_DB* const db = find_database(name);
    std::ofstream codes(file);
    kpt_yosys::PROOF_SUMMARY done;
    guarded([&] { done = kpt_yosys::prepare_proof(*db, gold, gate, codes); });
    if (!codes.flush()) {
      Yosys::log_cmd_error("Cannot write %s.\n", file.c_str());
    }
    Yosys::log("Matched %zu registers, %zu constants and %zu state machines; %zu have no fanout, %zu are missing.\n",
               done.m_registers, done.m_constants, done.m_machines, done.m_no_fanout, done.m_missing);
    if (done.m_copies != 0) {
      Yosys::log("%zu more registers of the netlist seem to be copies, and are compared as well.\n", done.m_copies);
    }
  }
} kpt_apply;

void report(const PROOF_STATUS& status) {
  for (const std::string& first : status.m_open) {
    Yosys::log("Unproven: %s.\n", first.c_str());
  }
  for (const std::string& first : status.m_refuted) {
    Yosys::log_warning("Refuted by power-up values: %s.\n", first.c_str());
  }
  Yosys::log("Facts: %zu proved, %zu claimed, %zu refuted, %zu not in the proof. Unproven cells: %zu.\n",
             status.m_proved, status.m_claimed, status.m_refuted.size(), status.m_absent, status.m_unproven_cells);
}

struct KPT_STATUS : Yosys::Pass {
  KPT_STATUS() : Pass("kpt_status", "read what a proof left back into a keypoint database") {}
  void help() override {
    Yosys::log(
        "\n    kpt_status [-name <name>] [<equiv>]\n\n"
        "Looks at the $equiv cells of the module (default: equiv) that was proven as 'kpt_apply' says,\n"
        "and sets the attribute 'status' of each fact of the database that is in it: 'proved' when no\n"
        "cell is unproven, 'refuted' when power-up values contradict it, else 'claimed'. 'kpt_save'\n"
        "keeps it.\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string name = "kpt";
    std::string equiv = "equiv";
    std::size_t at = 1;
    while (at < args.size() && takes(args, at, "-name", name)) {
      ++at;
    }
    if (at < args.size()) {
      equiv = args[at++];
    }
    if (at != args.size()) {
      Yosys::log_cmd_error("Give one module.\n");
    }
    RTLIL::Module* const module = design->module(RTLIL::escape_id(equiv));
    if (module == nullptr) {
      Yosys::log_cmd_error("There is no module %s.\n", equiv.c_str());
    }
    const KPT_KEYPOINTS_DB* const db = find_database(name);
    kpt_yosys::PROOF_STATUS status;
    guarded([&] { status = kpt_yosys::read_proof_status(*db, module); });
    report(status);
  }
} kpt_status;

// The words of a command.
std::string spaced(std::initializer_list<std::string_view> words) {
  std::string command;
  for (const std::string_view word : words) {
    command += command.empty() ? "" : " ";
    command += word;
  }
  return command;
}

void run_steps(RTLIL::Design* design, std::initializer_list<std::string> steps) {
  for (const std::string& step : steps) {
    Yosys::Pass::call(design, step);
  }
}

// Makes gates of both modules, and the module 'equiv' that compares them. What is undefined in the source is
// 0, or with `undefined` what the netlist chooses.
void make_equiv(RTLIL::Design* design, const std::string& gold, const std::string& gate, const std::string& codes,
                bool undefined) {
  const std::string both = spaced({gold, gate});
  if (undefined) {
    write_down_choices(design->module(RTLIL::escape_id(gold)));
    write_down_choices(design->module(RTLIL::escape_id(gate)));
  } else {
    run_steps(design, {spaced({"pmuxtree", both}), spaced({"setundef -zero", both})});
  }
  run_steps(design, {spaced({"async2sync", both}), spaced({"dffunmap", both}), spaced({"techmap", both}),
                     spaced({"simplemap", both})});
  if (!undefined) {
    Yosys::Pass::call(design, spaced({"setundef -zero", both}));
  }
  Yosys::Pass::call(design, spaced({"equiv_make -encfile", codes, both, "equiv"}));
  if (undefined) {
    Yosys::log("The source leaves %zu of the compared values to the netlist, always or at times.\n",
               take_choices(design->module(RTLIL::escape_id("equiv"))));
  }
}

// Lets ABC merge gates of both sides that compute the same, whatever the compared values are. The solver then
// has less to show. Cells that compare are kept, also those whose output nothing reads. What is undefined may
// be any value, which ABC would take for 0.
void merge_equal_gates(RTLIL::Design* design) {
  run_steps(design, {"setattr -set keep 1 equiv/t:$equiv", "setundef -undriven -anyseq equiv",
                     "abc -g AND,XOR,MUX -script +strash;ifraig;map equiv",
                     "opt_merge equiv/t:$_*_ equiv/t:$_DFF_*_ %d", "opt_clean equiv"});
}

struct KPT_PROVE : Yosys::Pass {
  KPT_PROVE() : Pass("kpt_prove", "prove a netlist equal to its source by a keypoint database") {}
  void help() override {
    Yosys::log(
        "\n    kpt_prove [options] <gold> <gate>\n\n"
        "Flattens both modules, makes registers of their memories and lets the database say which\n"
        "registers belong together ('kpt_apply'), settles what the source leaves open at zero and makes\n"
        "asynchronous resets synchronous. Then makes the module 'equiv' of both, merges gates that compute\n"
        "the same, proves what it can and reads the outcome back ('kpt_status'). Both modules are changed.\n\n"
        "    -name <name>\n        the database (default: kpt)\n\n"
        "    -simple <number>\n        prove what is left with equiv_simple, which looks back so many clocks\n\n"
        "    -induct <number>\n        then prove with equiv_induct in up to so many steps (default: 1). With more "
        "than\n"
        "        one clock or step, the proof holds only once both sides have agreed for as many clocks:\n"
        "        a netlist may be wrong after power-up, and may for example not be reset\n\n"
        "    -undef\n        let the source take the netlist's choice where it leaves a value undefined, instead of\n"
        "        settling it at zero: for a netlist that was synthesised without kpt_track -settle\n\n"
        "    -assert\n        end with an error when something stays unproven\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string name = "kpt";
    std::string simple;
    std::string induct = "1";
    bool asserts = false;
    bool undefined = false;
    std::size_t at = 1;
    for (; at < args.size(); ++at) {
      if (args[at] == "-assert") {
        asserts = true;
      } else if (args[at] == "-undef") {
        undefined = true;
      } else if (!takes(args, at, "-name", name) && !takes(args, at, "-simple", simple) &&
                 !takes(args, at, "-induct", induct)) {
        break;
      }
    }
    if (at + 2 != args.size()) {
      Yosys::log_cmd_error("Give two modules.\n");
    }
    for (const std::string& module : {args[at], args[at + 1]}) {
      if (design->module(RTLIL::escape_id(module)) == nullptr) {
        Yosys::log_cmd_error("There is no module %s.\n", module.c_str());
      }
    }
    if (design->module(RTLIL::escape_id("equiv")) != nullptr) {
      Yosys::log_cmd_error("There is a module equiv already.\n");
    }
    find_database(name);
    const std::string codes = Yosys::make_temp_file();
    const std::string both = spaced({args[at], args[at + 1]});
    // Does not clean up between the steps, because that would delete nets by which registers are found.
    run_steps(design, {"proc", spaced({"flatten", both}), spaced({"memory_collect", both}),
                       spaced({"memory_map", both}), spaced({"kpt_apply -name", name, "-encfile", codes, both})});
    make_equiv(design, args[at], args[at + 1], codes, undefined);
    merge_equal_gates(design);
    // A proven $equiv cell no longer says that both sides are equal, so the step that takes all of them comes first.
    Yosys::Pass::call(design, "equiv_induct -seq 1 equiv");
    if (!simple.empty()) {
      Yosys::Pass::call(design, spaced({"equiv_simple -short -seq", simple, "equiv"}));
    }
    if (induct != "1") {
      Yosys::Pass::call(design, spaced({"equiv_induct -seq", induct, "equiv"}));
    }
    std::remove(codes.c_str());
    Yosys::Pass::call(design, spaced({"kpt_status -name", name, "equiv"}));
    Yosys::Pass::call(design, asserts ? "equiv_status -assert equiv" : "equiv_status equiv");
  }
} kpt_prove;

}  // namespace
