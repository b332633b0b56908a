#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <set>

#include "export.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

// "state[3]" is bit 3 of "state".
struct BIT {
  std::string vector;
  unsigned index;
};

std::optional<BIT> bit_of(std::string_view name) {
  const std::size_t open = name.rfind('[');
  if (name.size() < 4 || name.back() != ']' || open == std::string_view::npos || open == 0) {
    return std::nullopt;
  }
  const std::string_view digits = name.substr(open + 1, name.size() - open - 2);
  if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  return BIT{std::string(name.substr(0, open)), static_cast<unsigned>(std::stoul(std::string(digits)))};
}

// The columns of a side as a signal: its name, and the columns from the most significant bit down.
struct SIGNAL {
  std::string name;
  std::vector<std::size_t> columns;
};

std::vector<std::string> column_names(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  std::vector<std::string> names;
  for (const KPT_REGISTER_KEYPOINT& reg : columns(map, side)) {
    names.emplace_back(reg.is_null() ? std::string_view() : std::string_view(reg.get_name()));
  }
  return names;
}

// Registers that are the bits of one vector are that vector. Any other registers
// are in the order of their columns, with the name of the first.
SIGNAL signal_of(const KPT_REGISTER_TRANSFORMATION& map, KPT_SET_ENUM side) {
  const std::vector<std::string> names = column_names(map, side);
  SIGNAL signal{names.empty() ? std::string() : names.front(), std::vector<std::size_t>(names.size())};
  std::iota(signal.columns.begin(), signal.columns.end(), std::size_t{0});
  std::vector<BIT> bits;
  for (const std::string& name : names) {
    std::optional<BIT> bit = bit_of(name);
    if (!bit || (!bits.empty() && bit->vector != bits.front().vector)) {
      return signal;
    }
    bits.push_back(std::move(*bit));
  }
  if (!bits.empty()) {
    signal.name = bits.front().vector;
    std::stable_sort(signal.columns.begin(), signal.columns.end(),
                     [&](std::size_t a, std::size_t b) { return bits[a].index > bits[b].index; });
  }
  return signal;
}

std::string signal_code(const KPT_STATE_TABLE& table, KPT_SET_ENUM side, unsigned state, const SIGNAL& signal) {
  const std::string code = code_of(table, side, state);
  std::string result;
  for (const std::size_t column : signal.columns) {
    result += code[column];
  }
  return result;
}

bool widths_fit(const KPT_REGISTER_TRANSFORMATION& map, const KPT_STATE_TABLE& table) {
  return !has_void_table(map) && map.get_number_of_indices(KPT_REFERENCE_SET) == width_of(table, KPT_REFERENCE_SET) &&
         map.get_number_of_indices(KPT_TRANSFORMED_SET) == width_of(table, KPT_TRANSFORMED_SET);
}

// A name with a blank or a line end would be read as two names.
void refuse_blanks(std::string_view what, const std::string& name) {
  if (name.empty() || !kpt_file_can_hold(name) || name.find_first_of(" \t\r\n") != std::string::npos) {
    throw FAILURE(EXIT_FOUND, fmt::format("an encoding file cannot hold the {} \"{}\"", what, printable(name)));
  }
}

void write_machine(RESULT_FILE& out, const std::string& module, const KPT_STATE_TABLE& table, const SIGNAL& r,
                   const SIGNAL& t) {
  out.write(fmt::format(".fsm {} {}\n", module, r.name));
  std::set<std::string> written;
  for (unsigned s = 0; s < table.get_number_of_states(); ++s) {
    std::string line = fmt::format(".map {} {}\n", signal_code(table, KPT_REFERENCE_SET, s, r),
                                   signal_code(table, KPT_TRANSFORMED_SET, s, t));
    if (written.insert(line).second) {
      out.write(line);
    }
  }
}

}  // namespace

void export_encfile(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out) {
  const std::string module = options.module.empty() ? db.name() : options.module;
  refuse_blanks("module", module);
  std::set<std::string> written;
  for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
    if (kind_of(map) != STATE_MACHINE) {
      continue;
    }
    const SIGNAL r = signal_of(map, KPT_REFERENCE_SET);
    refuse_blanks("signal", r.name);
    const KPT_STATE_TABLE table = map.get_state_table();
    if (!widths_fit(map, table)) {
      throw FAILURE(EXIT_FOUND,
                    fmt::format("{}: the state table of {} does not fit its registers", options.file, r.name));
    }
    if (!written.insert(r.name).second) {
      throw FAILURE(EXIT_FOUND, fmt::format("{}: two state machines are called {}", options.file, r.name));
    }
    write_machine(out, module, table, r, signal_of(map, KPT_TRANSFORMED_SET));
  }
}

}  // namespace kptdb
