// list: one line a register.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "commands.h"
#include "files.h"
#include "find.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

constexpr std::size_t MOST_PARTNERS_SHOWN = 4;

bool is_wanted(const REGISTER& reg, const LIST_OPTIONS& options) {
  const std::string_view kind = register_kind_word(reg.keypoint);
  return (options.kind.empty() || options.kind == kind) &&
         (options.status.empty() || options.status == status_word(status_of(reg))) &&
         matches(options.glob, reg.keypoint.get_name());
}

// The registers across the map, or why there are none.
std::string partners_in_short(const REGISTER& reg) {
  if (reg.map.is_null()) {
    return {};
  }
  std::vector<std::string> names;
  const auto others = members(reg.map, other_side(reg.side));
  for (std::size_t k = 0; k < std::min(others.size(), MOST_PARTNERS_SHOWN); ++k) {
    names.push_back(label(others[k]));
  }
  if (others.size() > MOST_PARTNERS_SHOWN) {
    names.push_back(fmt::format("and {} more", others.size() - MOST_PARTNERS_SHOWN));
  }
  return names.empty() ? std::string(reason_word(reg.map)) : fmt::format("{}", fmt::join(names, ", "));
}

JSON json_of_entry(const REGISTER& reg) {
  JSON result = json_of(reg);
  JSON partners = JSON::array();
  if (!reg.map.is_null()) {
    result["map"] = kind_word(kind_of(reg.map));
    const std::string_view reason = reason_word(reg.map);
    result["elimination"] = reason.empty() ? JSON(nullptr) : JSON(reason);
    for (const KPT_REGISTER_KEYPOINT& k : members(reg.map, other_side(reg.side))) {
      partners.push_back(json_of(k));
    }
  }
  result["partners"] = std::move(partners);
  return result;
}

// One register at a time: a netlist has more of them than would be wise to hold as text.
void write_json(RESULT_FILE& out, const std::vector<REGISTER>& registers) {
  out.write("{\"registers\": [");
  bool first = true;
  for (const REGISTER& reg : registers) {
    out.write((first ? "\n  " : ",\n  ") + json_text(json_of_entry(reg), -1));
    first = false;
  }
  out.write("\n]}\n");
}

void write_text(RESULT_FILE& out, const std::vector<REGISTER>& registers) {
  TEXT_TABLE table({"side", "kind", "status", "map", "register", "across"});
  for (const REGISTER& reg : registers) {
    table.add({std::string(side_word(reg.side)), std::string(register_kind_word(reg.keypoint)),
               std::string(status_word(status_of(reg))),
               reg.map.is_null() ? "-" : std::string(kind_word(kind_of(reg.map))), label(reg.keypoint),
               partners_in_short(reg)});
  }
  out.write(table.text());
}

}  // namespace

EXIT_CODE run_list(const LIST_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  std::vector<REGISTER> wanted;
  for (const KPT_SET_ENUM side : sides_named(options.side)) {
    const std::vector<REGISTER> all = registers_of(db, side);
    std::copy_if(all.begin(), all.end(), std::back_inserter(wanted),
                 [&](const REGISTER& reg) { return is_wanted(reg, options); });
  }
  RESULT_FILE out("");
  options.json ? write_json(out, wanted) : write_text(out, wanted);
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
