// The commands that this plugin adds to Yosys.
#include <algorithm>
#include <fstream>

#include "command_support.h"
#include "lasting_names.h"
#include "listing.h"
#include "recorder.h"
#include "session.h"

namespace {

using namespace kpt_yosys;

// Ends the command unless registers are being followed, and says why none are.
void demand_tracking(RTLIL::Design* design) {
  const kpt_yosys::TRACKER* const tracker = kpt_yosys::current_tracker();
  if (tracker == nullptr) {
    Yosys::log_cmd_error("No registers are being followed: use kpt_track.\n");
  }
  if (kpt_yosys::is_away()) {
    Yosys::log_cmd_error("The design that is followed is stored away: restore it with design -pop or -load.\n");
  }
  if (!tracker->started()) {
    Yosys::log_cmd_error("No registers are being followed: %s.\n", tracker->why_not_started(design).c_str());
  }
}

// Makes the choices of kpt_prove, before synthesis makes others.
void settle(RTLIL::Design* design, const std::string& top) {
  for (const std::string& step : {top.empty() ? std::string("hierarchy") : "hierarchy -top " + top, std::string("proc"),
                                  std::string("memory_collect"), std::string("memory_map"), std::string("pmuxtree"),
                                  std::string("setundef -zero")}) {
    Yosys::Pass::call(design, step);
  }
}

struct KPT_TRACK : Yosys::Pass {
  KPT_TRACK() : Pass("kpt_track", "start to follow what becomes of registers") {}
  void help() override {
    Yosys::log(
        "\n    kpt_track [options]\n\n"
        "Follows every flip-flop bit of the design from here on through all passes, those inside\n"
        "of scripts such as 'synth' too. Where processes are left, following starts with the pass\n"
        "that turns the last one into a netlist.\n\n"
        "    -top <module>\n        the module to look at (default: the top module)\n\n"
        "    -name <name>\n        the name of the stage's database (default: kpt)\n\n"
        "    -audit\n        keep the netlist as it is, for 'kpt_audit', and let 'kpt_stage' audit\n\n"
        "    -settle\n        first make registers of all memories and settle what the source leaves open at zero:\n"
        "        then synthesis has no freedom that a proof would have to follow\n\n"
        "    -off\n        end following without recording anything\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string top;
    std::string name = "kpt";
    bool audits = false;
    bool settles = false;
    std::size_t at = 1;
    for (; at < args.size(); ++at) {
      if (args[at] == "-audit" || args[at] == "-settle") {
        (args[at] == "-audit" ? audits : settles) = true;
        continue;
      }
      if (args[at] == "-off") {
        kpt_yosys::stop_tracking();
        return;
      }
      if (!takes(args, at, "-top", top) && !takes(args, at, "-name", name)) {
        break;
      }
    }
    extra_args(args, at, design, false);
    if (!top.empty() && design->module(RTLIL::escape_id(top)) == nullptr) {
      Yosys::log_cmd_error("There is no module %s.\n", top.c_str());
    }
    if (settles) {
      settle(design, top);
    }
    guarded([&] { kpt_yosys::start_tracking(design, top, name, audits); });
  }
} kpt_track;

// Takes back the facts that a simulation refutes, with a warning for each.
void audit(RTLIL::Design* design, const kpt_yosys::AUDIT::EFFORT& effort) {
  kpt_yosys::TRACKER& tracker = *kpt_yosys::current_tracker();
  tracker.boundary(design, "");
  const kpt_yosys::AUDIT::FINDINGS findings = kpt_yosys::current_audit()->check(tracker, effort);
  for (const int point : findings.m_false_points) {
    const std::string name = tracker.points()[static_cast<std::size_t>(point)].m_name;
    Yosys::log_warning("The audit refutes the fact about register %s that dates from %s. It is not recorded.\n",
                       name.c_str(), tracker.refuse(point).c_str());
  }
  for (const int machine : findings.m_false_machines) {
    const std::string name = tracker.machines()[static_cast<std::size_t>(machine)].m_name;
    Yosys::log_warning("The audit refutes the fact about state machine %s that dates from %s. It is not recorded.\n",
                       name.c_str(), tracker.refuse_machine(machine).c_str());
  }
  Yosys::log("Audit: %zu facts hold in %d runs of %d cycles, %zu have no known values, %zu are false.\n",
             findings.m_held, effort.m_runs, effort.m_cycles, findings.m_unseen,
             findings.m_false_points.size() + findings.m_false_machines.size());
}

struct KPT_AUDIT : Yosys::Pass {
  KPT_AUDIT() : Pass("kpt_audit", "check what was seen of registers in a simulation") {}
  void help() override {
    Yosys::log(
        "\n    kpt_audit [options]\n\n"
        "Simulates the netlist that 'kpt_track -audit' kept and the present one side by side, on random\n"
        "inputs from power-up, and takes back what was seen of a register where the simulation shows\n"
        "something else. After 'kpt_track -audit', 'kpt_stage' does this before it records.\n\n"
        "    -runs <number>\n        how often to start from power-up (default: 256), 64 at a time\n\n"
        "    -cycles <number>\n        how long each run is (default: 64)\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string runs = "256";
    std::string cycles = "64";
    std::size_t at = 1;
    while (at < args.size() && (takes(args, at, "-runs", runs) || takes(args, at, "-cycles", cycles))) {
      ++at;
    }
    extra_args(args, at, design, false);
    demand_tracking(design);
    if (kpt_yosys::current_audit() == nullptr) {
      Yosys::log_cmd_error("There is no reference netlist: use kpt_track -audit.\n");
    }
    const kpt_yosys::AUDIT::EFFORT effort{std::max(std::atoi(runs.c_str()), 1), std::max(std::atoi(cycles.c_str()), 1)};
    guarded([&] { audit(design, effort); });
  }
} kpt_audit;

// Warns with the number of names that a written netlist will not have, or gives lasting names.
void see_to_names(RTLIL::Design* design, bool give) {
  kpt_yosys::TRACKER& tracker = *kpt_yosys::current_tracker();
  const std::size_t count = kpt_yosys::count_private_names(tracker);
  if (count > 0 && give) {
    kpt_yosys::give_lasting_names(tracker);
    tracker.boundary(design, "rename");
  } else if (count > 0) {
    Yosys::log_warning(
        "%zu registers have private names, which write_verilog replaces: kpt_stage -names gives lasting ones.\n",
        count);
  }
}

struct KPT_STAGE : Yosys::Pass {
  KPT_STAGE() : Pass("kpt_stage", "end a stage and record what became of the registers") {}
  void help() override {
    Yosys::log(
        "\n    kpt_stage [options]\n\n"
        "Records what became of the registers in the stage's database, prints how many were kept,\n"
        "merged, eliminated and so on, and ends following.\n\n"
        "    -names\n        give registers with private names public ones, which stay when the netlist is\n"
        "        written: _kpt_17_\n\n"
        "    -next <name>\n        go on with a next stage, recorded in a database of that name\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string next;
    bool names = false;
    std::size_t at = 1;
    for (; at < args.size(); ++at) {
      if (args[at] == "-names") {
        names = true;
      } else if (!takes(args, at, "-next", next)) {
        break;
      }
    }
    extra_args(args, at, design, false);
    demand_tracking(design);
    const std::string& name = kpt_yosys::current_stage();
    KPT_KEYPOINTS_MANAGER* const manager = KPT_KEYPOINTS_MANAGER::get_instance();
    demand_free(name);
    guarded([&] {
      kpt_yosys::current_tracker()->boundary(design, "");
      if (kpt_yosys::current_audit() != nullptr) {
        audit(design, kpt_yosys::AUDIT::EFFORT());
      }
      see_to_names(design, names);
      const KPT_KEYPOINTS_DB& db = *manager->create_keypoints_db(name);
      kpt_yosys::print(kpt_yosys::record(*kpt_yosys::current_tracker(), db), name);
      const kpt_yosys::COST cost = kpt_yosys::tracking_cost();
      Yosys::log("Following took %.3f of %.3f seconds of processor time.\n", cost.m_tracking, cost.m_all);
      if (next.empty()) {
        kpt_yosys::stop_tracking();
      } else {
        kpt_yosys::next_stage(next);
      }
    });
  }
} kpt_stage;

struct KPT_COMPOSE : Yosys::Pass {
  KPT_COMPOSE() : Pass("kpt_compose", "compose the databases of successive stages") {}
  void help() override {
    Yosys::log(
        "\n    kpt_compose <new> <first> <next>...\n\n"
        "Makes a database that says of the registers before the first stage what became of them by the\n"
        "end of the last. The stages stay as they are.\n\n");
  }
  void execute(Arguments args, RTLIL::Design*) override {
    if (args.size() < 4) {
      Yosys::log_cmd_error("Give a new name and the names of two databases or more.\n");
    }
    KPT_KEYPOINTS_DB_LIST stages;
    for (std::size_t i = 2; i < args.size(); ++i) {
      stages.push_back(*find_database(args[i]));
    }
    KPT_KEYPOINTS_MANAGER* const manager = KPT_KEYPOINTS_MANAGER::get_instance();
    demand_free(args[1]);
    KPT_COMPOSITION_REPORT report;
    bool composed = false;
    guarded([&] {
      KPT_KEYPOINTS_DB* const db = manager->create_keypoints_db(args[1]);
      composed = db->compose(stages, {}, &report);
      if (!composed) {
        manager->destroy_keypoints_db(args[1]);
      }
    });
    for (const KPT_STRING& line : report.warnings) {
      Yosys::log_warning("%s\n", line.c_str());
    }
    if (!composed) {
      Yosys::log_cmd_error("The stages cannot be composed: %s.\n",
                           report.errors.empty() ? "no reason is known" : report.errors.front().c_str());
    }
  }
} kpt_compose;

struct KPT_SAVE : Yosys::Pass {
  KPT_SAVE() : Pass("kpt_save", "save a keypoint database") {}
  void help() override {
    Yosys::log(
        "\n    kpt_save [-name <name>] <file>\n\n"
        "Saves a recorded database (default: kpt). A database that no file can hold, because a name\n"
        "has control characters or is not UTF-8, is refused; the file is then left as it was.\n\n");
  }
  void execute(Arguments args, RTLIL::Design*) override {
    std::string name = "kpt";
    std::size_t at = 1;
    while (at < args.size() && takes(args, at, "-name", name)) {
      ++at;
    }
    if (at + 1 != args.size()) {
      Yosys::log_cmd_error("Give the name of one file.\n");
    }
    const KPT_KEYPOINTS_DB* const db = find_database(name);
    bool saved = false;
    guarded([&] { saved = db->save_atomically(args[at]); });
    if (!saved) {
      const std::string unfit = kpt_yosys::name_unfit_for_a_file(*db);
      Yosys::log_cmd_error("%s cannot be saved as %s%s%s.\n", name.c_str(), args[at].c_str(),
                           unfit.empty() ? "" : ": the file cannot hold the name of register ", unfit.c_str());
    }
    Yosys::log("Saved %s as %s.\n", name.c_str(), args[at].c_str());
  }
} kpt_save;

struct KPT_LOAD : Yosys::Pass {
  KPT_LOAD() : Pass("kpt_load", "load a keypoint database") {}
  void help() override {
    Yosys::log(
        "\n    kpt_load <file>\n\n"
        "Loads a database, under the name that the file gives it.\n\n");
  }
  void execute(Arguments args, RTLIL::Design*) override {
    if (args.size() != 2) {
      Yosys::log_cmd_error("Give the name of one file.\n");
    }
    const KPT_KEYPOINTS_DB* db = nullptr;
    guarded([&] { db = KPT_KEYPOINTS_MANAGER::get_instance()->load_db(args[1]); });
    if (db == nullptr) {
      Yosys::log_cmd_error("%s cannot be loaded.\n", args[1].c_str());
    }
    Yosys::log("Loaded %s.\n", db->get_name().c_str());
  }
} kpt_load;

struct KPT_SHOW : Yosys::Pass {
  KPT_SHOW() : Pass("kpt_show", "print what a keypoint database says") {}
  void help() override {
    Yosys::log(
        "\n    kpt_show [-name <name>] [-o <file>]\n\n"
        "Prints one line for each reference register, sorted by name, to the log or a file.\n\n");
  }
  void execute(Arguments args, RTLIL::Design* design) override {
    std::string name = "kpt";
    std::string file;
    std::size_t at = 1;
    while (at < args.size() && (takes(args, at, "-name", name) || takes(args, at, "-o", file))) {
      ++at;
    }
    extra_args(args, at, design, false);
    const KPT_KEYPOINTS_DB* const db = find_database(name);
    std::vector<std::string> lines;
    guarded([&] { lines = kpt_yosys::listing(*db); });
    std::ofstream out(file);
    for (const std::string& line : lines) {
      if (file.empty()) {
        Yosys::log("%s\n", line.c_str());
      } else {
        out << line << "\n";
      }
    }
    if (!file.empty() && !out.flush()) {
      Yosys::log_cmd_error("Cannot write %s.\n", file.c_str());
    }
  }
} kpt_show;

}  // namespace
