// A picture for Graphviz: reference registers on the left, maps in the middle,
// transformed registers on the right.
#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "export.h"
#include "find.h"
#include "model.h"
#include "text.h"

namespace kptdb {

namespace {

using MAPS = std::vector<KPT_REGISTER_TRANSFORMATION>;

std::string dot_text(std::string_view text) {
  const std::string shown = printable(text);
  std::string result;
  result.reserve(shown.size() + 2);
  result += '"';
  for (const char c : shown) {
    if (c == '"' || c == '\\') {
      result += '\\';
    }
    result += c;
  }
  return result += '"';
}

std::string node_of(KPT_SET_ENUM side, const KPT_REGISTER_KEYPOINT& k) {
  return dot_text((side == KPT_REFERENCE_SET ? "r " : "t ") + label(k));
}

MAPS wanted_maps(const DATABASE& db, const EXPORT_OPTIONS& options) {
  MAPS result;
  if (options.around.empty()) {
    for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
      result.push_back(map);
    }
    return result;
  }
  const std::vector<REGISTER> found = find_registers(db, options.around, "");
  if (found.empty()) {
    throw FAILURE(EXIT_FOUND, not_found_text(options.file, options.around, "", close_name(db, options.around, "")));
  }
  for (const REGISTER& reg : found) {
    if (!reg.map.is_null() && std::find(result.begin(), result.end(), reg.map) == result.end()) {
      result.push_back(reg.map);
    }
  }
  return result;
}

void write_register(RESULT_FILE& out, std::string_view node, const KPT_REGISTER_KEYPOINT& k, bool is_centre) {
  out.write(fmt::format("  {} [label={}{}];\n", node, dot_text(label(k)), is_centre ? ", style=bold" : ""));
}

void write_edge(RESULT_FILE& out, std::size_t map, KPT_SET_ENUM side, std::string_view node, bool inverting) {
  const std::string_view attributes = inverting ? " [style=dashed, label=inverted]" : "";
  if (side == KPT_REFERENCE_SET) {
    out.write(fmt::format("  {} -> \"map {}\"{};\n", node, map, attributes));
  } else {
    out.write(fmt::format("  \"map {}\" -> {}{};\n", map, node, attributes));
  }
}

void write_map(RESULT_FILE& out, std::size_t number, const KPT_REGISTER_TRANSFORMATION& map,
               const std::string& centre) {
  const std::string_view reason = reason_word(map);
  const std::string text(reason.empty() ? kind_word(kind_of(map)) : reason);
  out.write(fmt::format("  \"map {}\" [shape=ellipse, label={}];\n", number, dot_text(text)));
  for (const KPT_SET_ENUM side : {KPT_REFERENCE_SET, KPT_TRANSFORMED_SET}) {
    for_each_place(map, side, [&](std::size_t, bool inverting, const KPT_REGISTER_KEYPOINT& reg) {
      if (!reg.is_null()) {
        const std::string node = node_of(side, reg);
        write_register(out, node, reg, std::string_view(reg.get_name()) == centre);
        write_edge(out, number, side, node, inverting);
      }
    });
  }
}

}  // namespace

void export_dot(const DATABASE& db, const EXPORT_OPTIONS& options, RESULT_FILE& out) {
  const MAPS maps = wanted_maps(db, options);
  out.write(fmt::format("digraph {} {{\n  rankdir=LR;\n  node [shape=box];\n", dot_text(db.name())));
  std::size_t number = 0;
  EXPORT_PROGRESS progress(db);
  for (const KPT_REGISTER_TRANSFORMATION& map : maps) {
    progress.next();
    write_map(out, number++, map, options.around);
  }
  for_each_register(db, [&](const REGISTER& reg) {
    progress.next();
    const bool is_centre = std::string_view(reg.keypoint.get_name()) == options.around;
    if (reg.map.is_null() && (options.around.empty() || is_centre)) {
      write_register(out, node_of(reg.side, reg.keypoint), reg.keypoint, is_centre);
    }
  });
  out.write("}\n");
}

}  // namespace kptdb
