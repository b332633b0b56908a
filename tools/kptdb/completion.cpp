#include "completion.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "usage.h"

namespace kptdb {

namespace {

struct COMPLETED_OPTION {
  std::vector<std::string> names;    // including their dashes
  std::vector<std::string> choices;  // the choices for its value
  bool takes_value;
  std::string text;
};

// An option with a fixed choice of words describes them as "{a,b}".
std::vector<std::string> choices_of(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t open = type.find('{');
  const std::size_t close = type.find('}', std::min(open, type.size()));
  if (open == std::string::npos || close == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

std::vector<COMPLETED_OPTION> options_of(const CLI::App& app) {
  std::vector<COMPLETED_OPTION> result;
  for (const CLI::Option* option : app.get_options()) {
    COMPLETED_OPTION entry{{}, choices_of(*option), option->get_items_expected_max() > 0, option->get_description()};
    for (const std::string& name : option->get_snames()) {
      entry.names.push_back("-" + name);
    }
    for (const std::string& name : option->get_lnames()) {
      entry.names.push_back("--" + name);
    }
    if (!entry.names.empty()) {
      result.push_back(std::move(entry));
    }
  }
  return result;
}

std::vector<COMPLETED_OPTION> options_of(const CLI::App& app, const CLI::App& command) {
  std::vector<COMPLETED_OPTION> result = options_of(command);
  for (COMPLETED_OPTION& option : options_of(app)) {
    if (option.names.back() != "--help" && option.names.back() != "--version") {
      result.push_back(std::move(option));
    }
  }
  return result;
}

std::string names_of(const std::vector<COMPLETED_OPTION>& options) {
  std::vector<std::string> names;
  for (const COMPLETED_OPTION& option : options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return fmt::format("{}", fmt::join(names, " "));
}

std::string command_names(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : commands_of(app)) {
    names.push_back(command->get_name());
  }
  return fmt::format("{}", fmt::join(names, " "));
}

// The words that may follow a command or an option, if there is a fixed choice.
std::string words_after(const CLI::App& app, const CLI::App& command) {
  if (command.get_name() == "help") {
    return command_names(app);
  }
  return command.get_name() == "completion" ? "bash zsh fish" : "";
}

std::string bash_script(const CLI::App& app) {
  std::string options;
  std::string values;
  for (const CLI::App* command : commands_of(app)) {
    const std::vector<COMPLETED_OPTION> all = options_of(app, *command);
    const std::string words = words_after(app, *command);
    options += fmt::format("    {}) options='{}'; words='{}' ;;\n", command->get_name(), names_of(all), words);
    for (const COMPLETED_OPTION& option : all) {
      for (const std::string& name : option.names) {
        values += option.choices.empty() ? ""
                                         : fmt::format("    {} {}) words='{}' ;;\n", command->get_name(), name,
                                                       fmt::join(option.choices, " "));
      }
    }
  }
  for (std::size_t at = 0; (at = values.find(" --", at)) != std::string::npos; at += 4) {
    values.replace(at, 1, "\\ ");
  }
  return fmt::format(R"(# Completes the commands and options of kptdb in bash. Made by "kptdb completion bash".
_kptdb() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} command='' options='' words='' k
  for ((k = 1; k < COMP_CWORD; ++k)); do
    case ${{COMP_WORDS[k]}} in
      -*) ;;
      *) command=${{COMP_WORDS[k]}}; break ;;
    esac
  done
  if [[ -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W '{} {}' -- "$current")
    return
  fi
  case $command in
{}  esac
  case "$command $previous" in
{}    *) [[ $current == -* ]] && words=$options ;;
  esac
  if [[ -n $words ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  fi
}}
complete -o default -F _kptdb kptdb
)",
                     command_names(app), names_of(options_of(app)), options, values);
}

// In single quotes, for a shell.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    result += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return result + "'";
}

std::string zsh_text(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c == ':' || c == '[' || c == ']' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  }
  return result;
}

std::string zsh_option(const COMPLETED_OPTION& option, const std::string& name) {
  std::string value;
  if (option.takes_value) {
    value = option.choices.empty() ? ":value:_files" : fmt::format(":value:({})", fmt::join(option.choices, " "));
  }
  return quoted(fmt::format("{}[{}]{}", name, zsh_text(option.text), value));
}

std::string zsh_script(const CLI::App& app) {
  std::string described;
  std::string cases;
  for (const CLI::App* command : commands_of(app)) {
    described += fmt::format("    {}\n", quoted(command->get_name() + ":" + zsh_text(command->get_description())));
    cases += fmt::format("    {})\n      _arguments", command->get_name());
    for (const COMPLETED_OPTION& option : options_of(app, *command)) {
      for (const std::string& name : option.names) {
        cases += " \\\n        " + zsh_option(option, name);
      }
    }
    const std::string words = words_after(app, *command);
    cases += fmt::format(" \\\n        '*:{}' ;;\n", words.empty() ? "file:_files" : "word:(" + words + ")");
  }
  return fmt::format(R"(#compdef kptdb
# Completes the commands and options of kptdb in zsh. Made by "kptdb completion zsh".
local -a commands
if (( CURRENT == 2 )); then
  commands=(
{}  )
  _describe command commands
else
  local command=$words[2]
  shift words
  (( CURRENT-- ))
  case $command in
{}  esac
fi
)",
                     described, cases);
}

std::string fish_option(const COMPLETED_OPTION& option, const std::string& condition) {
  std::string line = "complete -c kptdb" + condition;
  for (const std::string& name : option.names) {
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (!option.choices.empty()) {
    line += fmt::format(" -x -a {}", quoted(fmt::format("{}", fmt::join(option.choices, " "))));
  } else if (option.takes_value) {
    line += " -r";
  }
  return line + " -d " + quoted(option.text) + "\n";
}

std::string fish_script(const CLI::App& app) {
  std::string text = "# Completes the commands and options of kptdb in fish. Made by \"kptdb completion fish\".\n";
  for (const COMPLETED_OPTION& option : options_of(app)) {
    text += fish_option(option, "");
  }
  for (const CLI::App* command : commands_of(app)) {
    text += fmt::format("complete -c kptdb -n __fish_use_subcommand -f -a {} -d {}\n", command->get_name(),
                        quoted(command->get_description()));
    const std::string condition = fmt::format(" -n '__fish_seen_subcommand_from {}'", command->get_name());
    for (const COMPLETED_OPTION& option : options_of(*command)) {
      text += fish_option(option, condition);
    }
    const std::string words = words_after(app, *command);
    if (!words.empty()) {
      text += fmt::format("complete -c kptdb{} -f -a {}\n", condition, quoted(words));
    }
  }
  return text;
}

}  // namespace

std::string completion_script(const CLI::App& app, const std::string& shell) {
  return shell == "bash" ? bash_script(app) : shell == "zsh" ? zsh_script(app) : fish_script(app);
}

}  // namespace kptdb
