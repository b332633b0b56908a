#include "find.h"

#include <fmt/format.h>

#include <algorithm>

#include "text.h"

namespace kptdb {

std::vector<KPT_SET_ENUM> sides_named(const std::string& side) {
  if (side.empty()) {
    return {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET};
  }
  return {side == "reference" ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET};
}

std::vector<REGISTER> find_registers(const DATABASE& db, const std::string& name, const std::string& side) {
  std::vector<REGISTER> result;
  for (const KPT_SET_ENUM wanted : sides_named(side)) {
    for (const KPT_REGISTER_KEYPOINT& reg : db.registers(wanted)) {
      if (std::string_view(reg.get_name()) == name) {
        result.push_back({wanted, reg, map_of(db, wanted, reg)});
      }
    }
  }
  return result;
}

// A near name differs in at most a third of the name. Returns the first of the nearest.
std::string close_name(const DATABASE& db, const std::string& name, const std::string& side) {
  std::string nearest;
  std::size_t distance = std::max<std::size_t>(2, name.size() / 3 + 1);
  for (const KPT_SET_ENUM wanted : sides_named(side)) {
    for (const KPT_REGISTER_KEYPOINT& reg : db.registers(wanted)) {
      const std::string_view candidate = reg.get_name();
      const std::size_t found = edit_distance(name, candidate, distance);
      if (found < distance) {
        distance = found;
        nearest = candidate;
      }
    }
  }
  return nearest;
}

std::string not_found_text(const std::string& file, const std::string& name, const std::string& side,
                           const std::string& close) {
  const std::string where = side.empty() ? "" : side + " ";
  const std::string hint = close.empty() ? "" : fmt::format("; did you mean {}?", printable(close));
  return fmt::format("{}: no {}register {}{}", file, where, printable(name), hint);
}

}  // namespace kptdb
