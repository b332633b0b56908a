#include "usage.h"

#include <fmt/format.h>

#include <algorithm>

#include "text.h"

namespace kptdb {

namespace {

// A near word differs in at most a third of the word. Returns the first of the nearest.
std::string nearest(const std::string& word, const std::vector<std::string>& all) {
  std::string result;
  std::size_t distance = std::max<std::size_t>(3, word.size() / 3 + 1);
  for (const std::string& candidate : all) {
    const std::size_t found = edit_distance(word, candidate, distance);
    if (found < distance) {
      distance = found;
      result = candidate;
    }
  }
  return result;
}

std::string with_hint(const std::string& text, const std::string& near) {
  return near.empty() ? text : fmt::format("{}; did you mean {}?", text, near);
}

std::string no_command(const CLI::App& app, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::App* command : commands_of(app)) {
    names.push_back(command->get_name());
  }
  return with_hint("no command " + printable(word), nearest(word, names));
}

std::vector<std::string> options_of(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
    for (const std::string& name : option->get_snames()) {
      names.push_back("-" + name);
    }
  }
  return names;
}

const CLI::App* command_given(const CLI::App& app) {
  const std::vector<CLI::App*> given = app.get_subcommands();
  return given.empty() ? nullptr : given.front();
}

std::string told_of_extra(const CLI::App& app, const CLI::App* command, const std::string& word) {
  if (!word.starts_with("-")) {
    return "one argument too many: " + printable(word);
  }
  std::vector<std::string> names = options_of(app);
  if (command != nullptr) {
    const std::vector<std::string> own = options_of(*command);
    names.insert(names.begin(), own.begin(), own.end());
  }
  const std::string option = word.substr(0, word.find('='));
  return with_hint("no option " + printable(option), nearest(option, names));
}

// The parser's own words count values, where the reader wrote an option twice.
std::string told_plainly(std::string text) {
  constexpr std::string_view REPEATED = ": At Most 1 required but received ";
  const std::size_t at = text.find(REPEATED);
  if (at == std::string::npos) {
    return text;
  }
  return fmt::format("{} is given {} times, but may be given once", text.substr(0, at),
                     text.substr(at + REPEATED.size()));
}

}  // namespace

std::vector<const CLI::App*> commands_of(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_name().empty(); });
}

EXIT_CODE print_help(const CLI::App& app, const std::string& command) {
  if (command.empty()) {
    // The program's own help would be the help of this command.
    fmt::print("{}", app.get_formatter()->make_help(&app, "kptdb", CLI::AppFormatMode::Normal));
    return EXIT_DONE;
  }
  for (const CLI::App* known : commands_of(app)) {
    if (known->get_name() == command) {
      fmt::print("{}", known->help("kptdb"));
      return EXIT_DONE;
    }
  }
  throw FAILURE(EXIT_WRONG_USE, no_command(app, command));
}

std::string unknown_command(const CLI::App& app, const std::vector<std::string>& arguments) {
  const auto word =
      std::find_if(arguments.begin(), arguments.end(), [](const std::string& a) { return a.rfind('-', 0) != 0; });
  if (word == arguments.end() || (word != arguments.begin() && *std::prev(word) == "--color")) {
    return {};
  }
  const std::vector<const CLI::App*> all = commands_of(app);
  const bool is_known = std::any_of(all.begin(), all.end(), [&](const CLI::App* c) { return c->get_name() == *word; });
  return is_known ? std::string() : no_command(app, *word);
}

std::string told(const CLI::App& app, const CLI::ParseError& problem) {
  const CLI::App* const command = command_given(app);
  std::vector<std::string> extras = app.remaining(true);
  const bool is_extra = problem.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) && !extras.empty();
  std::string text = is_extra ? told_of_extra(app, command, extras.front()) : told_plainly(problem.what());
  if (command != nullptr) {
    return fmt::format("{}: {} (kptdb help {} tells more)", command->get_name(), text, command->get_name());
  }
  return text + " (kptdb help tells more)";
}

}  // namespace kptdb
