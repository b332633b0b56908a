// kptdb: the keypoint database at the command line.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <new>

#include "audit/audit.h"
#include "colour.h"
#include "commands.h"
#include "completion.h"
#include "files.h"
#include "model.h"
#include "progress.h"
#include "usage.h"
#include "wave/wave.h"

namespace {

using RUN = std::function<kptdb::EXIT_CODE()>;

const CLI::IsMember SIDES({"reference", "transformed"});

CLI::App* add_command(CLI::App& app, RUN& run, const char* name, const char* text, RUN what) {
  CLI::App* command = app.add_subcommand(name, text);
  command->callback([&run, what = std::move(what)] { run = what; });
  return command;
}

template <class OPTIONS>
CLI::App* add_command(CLI::App& app, RUN& run, const char* name, const char* text, OPTIONS& options,
                      kptdb::EXIT_CODE (*what)(const OPTIONS&)) {
  return add_command(app, run, name, text, [&options, what] { return what(options); });
}

void add_json(CLI::App* command, bool& json) { command->add_flag("--json", json, "Print JSON for programs"); }

void add_file(CLI::App* command, std::string& file) {
  command->add_option("FILE", file, "A database file, compressed with gzip or not; - for standard input")->required();
}

void add_names(CLI::App* command, kptdb::NAME_OPTIONS& names) {
  command->add_flag("-E,--regex", names.is_regex, "The names are extended regular expressions");
  command->add_flag("-i,--ignore-case", names.any_case, "Ignore the case of letters");
  command->add_option("--names-from", names.from, "A file with a name on each line; - for standard input");
}

void add_fail_under(CLI::App* command, std::optional<double>& percent) {
  command
      ->add_option("--fail-under", percent,
                   "Exit with 1 when less than so many per cent of the reference registers have an answer")
      ->check(CLI::Range(0.0, 100.0));
}

void add_share(CLI::App* command, double& share) {
  command->add_option("--share", share, "The share of a stage's first registers that the stage before it has to know")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
}

void add_keep_unrecorded(CLI::App* command, bool& keep) {
  command->add_flag("--keep-unrecorded", keep, "Treat registers that a stage does not mention as unchanged");
}

struct COMMAND_LINE {
  explicit COMMAND_LINE(CLI::App& app) {
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.set_version_flag("--version", "kptdb " KPTDB_VERSION);
    app.footer("Exit codes: 0 done, 1 something was found or refused, 2 wrong use, 3 unreadable input.");
    add_manners(app);
    add_record(app);
    add_questions(app);
    add_comparisons(app);
    add_results(app);
    add_waves(app);
  }

  void add_manners(CLI::App& app) {
    app.add_option_function<std::string>("--color", kptdb::set_colours, "Show colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->default_str("auto");
    app.add_flag_callback(
        "--progress", [] { kptdb::PROGRESS::set_mode(kptdb::PROGRESS::ON); },
        "Show how far the work has come, from the start and wherever standard error goes");
    app.add_flag_callback(
        "--no-progress", [] { kptdb::PROGRESS::set_mode(kptdb::PROGRESS::OFF); }, "Show no progress");
    run = [&app] { return kptdb::print_help(app, ""); };
    add_command(app, run, "help", "Tell how a command is used", [this, &app] {
      return kptdb::print_help(app, help_command);
    })->add_option("COMMAND", help_command, "A command");
    CLI::App* c = add_command(app, run, "completion", "Print the completions for a shell", [this, &app] {
      kptdb::RESULT_FILE out(completion_file);
      out.write(kptdb::completion_script(app, completed_shell));
      out.finish();
      return kptdb::EXIT_DONE;
    });
    c->add_option("SHELL", completed_shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    c->add_option("-o,--output", completion_file, "The file to write (default: standard output)");
  }

  void add_record(CLI::App& app) {
    CLI::App* c = add_command(app, run, "record", "Replay event files into a new database", record, kptdb::run_record);
    c->add_option("EVENTS", record.events, "Event files, JSON Lines; - for standard input")->required();
    c->add_option("-o,--output", record.output, "The database file to write")->required();
    c->add_option("--name", record.name, "The database's name (default: the first event file's)");
    c->add_flag("--keep-going", record.keep_going, "Report refused events and go on; write what was recorded");
    c->add_flag("--complete", record.complete, "Refuse an event file that does not say where it ends");
    add_json(c, record.json);
  }

  void add_questions(CLI::App& app) {
    CLI::App* c = add_command(app, run, "info", "Count registers, maps and answers", info, kptdb::run_info);
    add_file(c, info.file);
    c->add_flag("--memory", info.memory, "Show the memory by type");
    add_fail_under(c, info.fail_under);
    add_json(c, info.json);

    c = add_command(app, run, "show", "Tell what became of a register", show, kptdb::run_show);
    add_file(c, show.file);
    c->add_option("REGISTER", show.names.names, "Names of registers; * is any text, ? any character");
    add_names(c, show.names);
    c->add_option("--side", show.side, "Look on this side only")->check(SIDES);
    add_json(c, show.json);

    c = add_command(app, run, "list", "List registers", list, kptdb::run_list);
    add_file(c, list.file);
    c->add_option("--side", list.side, "Only this side")->check(SIDES);
    c->add_option("--kind", list.kind, "Only this kind")->check(CLI::IsMember({"signal", "instance"}));
    c->add_option("--fate,--status", list.fate, "Only registers that became this")
        ->check(CLI::IsMember({"mapped", "machine", "constant", "without_fanout", "unknown"}));
    list.names.is_glob = true;
    c->add_option("--name", list.names.names, "Only names that match: * is any text, ? any character")->take_all();
    add_names(c, list.names);
    c->add_option("--under", list.under, "Only registers of this instance, as top/u1");
    c->add_option("--pass", list.pass, "Only registers whose map this pass made");
    add_json(c, list.json);

    c = add_command(app, run, "stats", "Count what became of the registers, by instance", stats, kptdb::run_stats);
    add_file(c, stats.file);
    c->add_option("--depth", stats.depth, "How many levels of instances to show; 0 for all")->capture_default_str();
    c->add_option("--side", stats.side, "Count on this side")->check(SIDES)->capture_default_str();
    add_json(c, stats.json);
  }

  void add_comparisons(CLI::App& app) {
    CLI::App* c = add_command(app, run, "diff", "Compare two databases by what they say", diff, kptdb::run_diff);
    c->add_option("A", diff.first, "A database file")->required();
    c->add_option("B", diff.second, "A database file")->required();
    add_json(c, diff.json);

    c = add_command(app, run, "check", "Find errors and doubtful facts in a database file", check, kptdb::run_check);
    add_file(c, check.file);
    add_fail_under(c, check.fail_under);
    add_json(c, check.json);
  }

  void add_results(CLI::App& app) {
    CLI::App* c = add_command(app, run, "unite", "Unite successive stages into one database", unite, kptdb::run_unite);
    c->add_option("FILES", unite.files, "Database files in the order of the stages")->required()->expected(2, 1000);
    c->add_option("-o,--output", unite.output, "The database file to write")->required();
    add_keep_unrecorded(c, unite.keep_unrecorded);
    add_json(c, unite.json);

    c = add_command(app, run, "compose", "Compose successive stages into one database, exactly", compose,
                    kptdb::run_compose);
    c->add_option("FILES", compose.files, "Database files in the order of the stages")->required()->expected(2, 1000);
    c->add_option("-o,--output", compose.output, "The database file to write")->required();
    add_share(c, compose.share);
    add_keep_unrecorded(c, compose.keep_unrecorded);
    add_json(c, compose.json);

    c = add_command(app, run, "explain", "Follow a register through the stages", explain, kptdb::run_explain);
    c->add_option("REGISTER", explain.name, "A register of the first netlist")->required();
    c->add_option("FILES", explain.files, "Database files in the order of the stages")->required()->expected(1, 1000);
    c->add_flag("--transformed", explain.transformed, "The register is one of the last netlist");
    add_share(c, explain.share);
    add_json(c, explain.json);

    c = add_command(app, run, "report", "Write a page that shows where the registers went", report, kptdb::run_report);
    c->add_option("FILES", report.files, "Database files in the order of the stages")->required()->expected(1, 1000);
    c->add_option("-o,--output", report.output, "The page to write")->required();
    c->add_option("--against", report.against, "An older database file: show what it says differently");
    c->add_option("--title", report.title, "The design's name (default: the first database's)");

    c = add_command(app, run, "export", "Write the facts in another form", export_, kptdb::run_export);
    add_file(c, export_.file);
    CLI::Option* format = c->add_option("--format", export_.format,
                                        "json, csv, dot, encfile, events, tcl, sqlite, eqy, gtkwave or surfer")
                              ->check(CLI::IsMember({"json", "csv", "dot", "encfile", "events", "tcl", "sqlite", "eqy",
                                                     "gtkwave", "surfer"}));
    c->add_flag_callback(
         "--json", [this] { export_.format = "json"; }, "The same as --format json")
        ->excludes(format);
    c->add_option("-o,--output", export_.output, "The file to write (default: standard output)");
    c->add_option("--around", export_.around, "With dot: only the maps of this register");
    c->add_option("--module", export_.module, "With encfile or eqy: the module's name (default: the database's)");
    c->add_option("--design", export_.design, "With sqlite: the design's name (default: the database's)");
    c->add_flag("--append", export_.append, "With sqlite: keep the other designs of the file");
    c->add_option("--dump", export_.dump, "With gtkwave: a dump of the netlist, whose names the viewer goes by");
    c->add_option("--scope", export_.scope, "With gtkwave: the scope of the netlist in the dump, as tb.dut");
    c->add_option("--divider", export_.divider, "With gtkwave: what stands between the instances of a name");
  }

  void add_waves(CLI::App& app) {
    CLI::App* c = add_command(app, run, "wave", "Show a dump of the netlist under the names of the source", wave,
                              kptdb::run_wave);
    add_file(c, wave.file);
    c->add_option("DUMP", wave.dump,
                  "A value-change dump of the netlist, compressed with gzip or not; - for standard input")
        ->required();
    c->add_option("-o,--output", wave.output, "The dump to write (default: standard output)");
    c->add_option("--scope", wave.scope, "The scope of the netlist in the dump, as tb.dut");
    c->add_option("--to-scope", wave.to_scope, "The scope of the source in the output (default: the same)");
    c->add_option("--only", wave.only, "Only registers whose names match: * is any text, ? any character");
    c->add_option("--divider", wave.divider, "What stands between the instances of a name (default: .)");
    c->add_flag("--with-unknown", wave.with_unknown, "Show registers of unknown value as x");
    add_json(c, wave.json);

    c = add_command(app, run, "audit", "Check the claims against two simulations", audit, kptdb::run_audit);
    add_file(c, audit.file);
    c->add_option("SOURCE", audit.reference_dump, "A dump of the source's simulation")->required();
    c->add_option("NETLIST", audit.transformed_dump, "A dump of the netlist's simulation with the same stimulus")
        ->required();
    c->add_option("--clock", audit.clock, "The clock at whose edges values are compared, as tb.clk");
    c->add_option("--edge", audit.edge, "rising, falling or both")->check(CLI::IsMember({"rising", "falling", "both"}));
    c->add_option("--at", audit.at, "Times to compare at instead, as 100ns,200ns")->delimiter(',');
    c->add_option("--from", audit.from, "Check nothing before this time");
    c->add_option("--scope", audit.scope, "The scope of the source in its dump, as tb.dut");
    c->add_option("--netlist-scope", audit.transformed_scope, "The scope of the netlist (default: the same)");
    c->add_option("--divider", audit.divider, "What stands between the instances of a name (default: .)");
    c->add_flag("--write", audit.write,
                "Put what was found into the database: refuted, or claimed where nothing was said");
    add_json(c, audit.json);
  }

  RUN run;
  std::string help_command;
  std::string completed_shell;
  std::string completion_file;
  kptdb::WAVE_OPTIONS wave;
  kptdb::AUDIT_OPTIONS audit;
  kptdb::RECORD_OPTIONS record;
  kptdb::INFO_OPTIONS info;
  kptdb::SHOW_OPTIONS show;
  kptdb::LIST_OPTIONS list;
  kptdb::STATS_OPTIONS stats;
  kptdb::DIFF_OPTIONS diff;
  kptdb::CHECK_OPTIONS check;
  kptdb::UNITE_OPTIONS unite;
  kptdb::COMPOSE_OPTIONS compose;
  kptdb::EXPLAIN_OPTIONS explain;
  kptdb::REPORT_OPTIONS report;
  kptdb::EXPORT_OPTIONS export_;
};

// Whether a program reads JSON from standard output.
bool wants_json(const std::vector<std::string>& arguments) {
  bool has_json = false;
  bool is_result_elsewhere = false;
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    has_json = has_json || arguments[k] == "--json";
    const bool is_output = arguments[k] == "-o" || arguments[k] == "--output";
    is_result_elsewhere =
        is_result_elsewhere ||
        (is_output && (arguments.front() == "export" || (k + 1 < arguments.size() && arguments[k + 1] == "-")));
  }
  return has_json && !is_result_elsewhere;
}

// Prints why a command failed: as text, and also as JSON for a program that reads it.
int fail(kptdb::EXIT_CODE code, const std::string& text, const std::vector<std::string>& arguments) {
  kptdb::print_failure(text);
  if (wants_json(arguments) && !kptdb::RESULT_FILE::has_used_standard_output()) {
    kptdb::JSON result = kptdb::new_result();
    result["error"] = {{"exit_code", static_cast<int>(code)}, {"text", text}};
    std::fputs((kptdb::json_text(result) + "\n").c_str(), stdout);
  }
  return code;
}

int guarded(const RUN& run, const std::vector<std::string>& arguments) {
  try {
    return run();
  } catch (const kptdb::FAILURE& failure) {
    return fail(failure.code(), failure.what(), arguments);
  } catch (const std::bad_alloc&) {
    return fail(kptdb::EXIT_UNREADABLE, "the input needs more memory than there is", arguments);
  } catch (const std::exception& problem) {
    return fail(kptdb::EXIT_UNREADABLE, problem.what(), arguments);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  CLI::App app("Records, inspects, compares and unites keypoint databases.", "kptdb");
  COMMAND_LINE line(app);
  const std::string unknown = kptdb::unknown_command(app, arguments);
  if (!unknown.empty()) {
    return fail(kptdb::EXIT_WRONG_USE, unknown + " (kptdb help lists them)", arguments);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& problem) {
    return fail(kptdb::EXIT_WRONG_USE, kptdb::told(app, problem), arguments);
  }
  return guarded(line.run, arguments);
}
