#include "netlist_names.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <tuple>

namespace kpt_yosys {

namespace {

// Flattening puts this before a made name, and the path of instances, each with its mark, after it.
constexpr std::string_view FLATTENED = "$flatten";

}  // namespace

std::string text_of(const RTLIL::IdString& id) { return text_of_spelling(id.c_str()); }

std::string text_of_spelling(const std::string& id) {
  if (id.starts_with('\\')) {
    const bool keeps_its_mark = id.size() > 1 && (id[1] == '$' || id[1] == '\\');
    return id.substr(keeps_its_mark ? 0 : 1);
  }
  std::string text = id;
  if (text.starts_with(FLATTENED)) {
    text.erase(0, FLATTENED.size());
  }
  std::erase(text, '\\');
  return text;
}

std::string text_of(const RTLIL::Wire& wire, int bit) {
  std::string text = text_of(wire.name);
  if (wire.width == 1) {
    return text;
  }
  const int index = wire.start_offset + (wire.upto ? wire.width - 1 - bit : bit);
  return text + "[" + std::to_string(index) + "]";
}

bool names_better(const RTLIL::Wire& a, const RTLIL::Wire& b) {
  const auto rank = [](const RTLIL::Wire& wire) {
    return std::make_tuple(!is_public(wire.name), std::strlen(wire.name.c_str()), std::string_view(wire.name.c_str()));
  };
  return rank(a) < rank(b);
}

}  // namespace kpt_yosys
