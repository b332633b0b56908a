#include "timescale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace kptdb {

namespace {

struct UNIT {
  std::string_view name;
  std::uint64_t femtoseconds;
};
constexpr std::array<UNIT, 6> UNITS{{{"s", 1'000'000'000'000'000},
                                     {"ms", 1'000'000'000'000},
                                     {"us", 1'000'000'000},
                                     {"ns", 1'000'000},
                                     {"ps", 1'000},
                                     {"fs", 1}}};

// A number and the text after it, without the blanks between.
std::optional<std::pair<std::uint64_t, std::string_view>> number_and_unit(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (problem != std::errc()) {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return std::pair(number, text);
}

std::optional<std::uint64_t> unit_of(std::string_view name) {
  const auto* const found = std::find_if(UNITS.begin(), UNITS.end(), [&](const UNIT& u) { return u.name == name; });
  return found == UNITS.end() ? std::nullopt : std::optional(found->femtoseconds);
}

}  // namespace

std::optional<std::uint64_t> timescale_of(std::string_view text) {
  const auto parts = number_and_unit(text);
  const auto unit = parts ? unit_of(parts->second) : std::nullopt;
  if (!unit || (parts->first != 1 && parts->first != 10 && parts->first != 100)) {
    return std::nullopt;
  }
  return parts->first * *unit;
}

std::optional<FEMTOSECONDS> time_of(std::string_view text, std::uint64_t unit) {
  const auto parts = number_and_unit(text);
  if (!parts) {
    return std::nullopt;
  }
  const std::optional<std::uint64_t> own = parts->second.empty() ? unit : unit_of(parts->second);
  return own ? std::optional(FEMTOSECONDS{parts->first} * *own) : std::nullopt;
}

std::string time_text(FEMTOSECONDS time) {
  const auto* const unit =
      std::find_if(UNITS.begin(), UNITS.end(), [&](const UNIT& u) { return time % u.femtoseconds == 0; });
  std::string digits;
  FEMTOSECONDS rest = time / unit->femtoseconds;
  do {
    digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    rest /= 10;
  } while (rest > 0);
  return digits + ' ' + std::string(time == 0 ? "fs" : unit->name);
}

}  // namespace kptdb
