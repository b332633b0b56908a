// info: the number of registers, and the number of those with an answer.
#include <fmt/format.h>

#include <array>
#include <map>

#include "commands.h"
#include "coverage.h"
#include "fates.h"
#include "files.h"
#include "host/kpt_host.h"
#include "text.h"

namespace kptdb {

namespace {

struct SIDE_COUNTS {
  std::size_t signals = 0;
  std::size_t instances = 0;
  FATE_COUNTS by_fate{};
};

struct MAP_COUNTS {
  std::array<std::size_t, 5> by_kind{};  // indexed by MAP_KIND
  std::map<std::string, std::size_t, std::less<>> by_reason{
      {"stuck_at_zero", 0}, {"stuck_at_one", 0}, {"no_fanout", 0}, {"eliminated", 0}};
};

SIDE_COUNTS count_side(const DATABASE& db, KPT_SET_ENUM side) {
  SIDE_COUNTS counts;
  FATES fates;
  for_each_register(db, side, [&](const REGISTER& reg) {
    ++(reg.keypoint.is_signal() ? counts.signals : counts.instances);
    ++counts.by_fate.at(fates.of(reg).word);
  });
  return counts;
}

MAP_COUNTS count_maps(const DATABASE& db) {
  MAP_COUNTS counts;
  for (const KPT_REGISTER_TRANSFORMATION& map : db.maps()) {
    const MAP_KIND kind = kind_of(map);
    ++counts.by_kind.at(kind);
    if (kind == ELIMINATED_MAP) {
      ++counts.by_reason[std::string(reason_word(map))];
    }
  }
  return counts;
}

JSON json_of(const SIDE_COUNTS& counts) {
  JSON result;
  result["signals"] = counts.signals;
  result["instances"] = counts.instances;
  return result;
}

JSON json_of(const MAP_COUNTS& counts) {
  JSON result;
  for (const MAP_KIND kind : {ONE_TO_ONE, MANY_TO_MANY, STATE_MACHINE, OPEN_MAP}) {
    result[std::string(kind_word(kind))] = counts.by_kind.at(kind);
  }
  result["eliminated"] = JSON(counts.by_reason);
  return result;
}

JSON json_of_memory() {
  JSON result = JSON::array();
  for (const kpt_host::TRACKER& tracker : kpt_host::trackers()) {
    JSON entry;
    entry["type"] = tracker.type;
    entry["live_bytes"] = tracker.live_bytes;
    entry["live_blocks"] = tracker.live_blocks;
    entry["peak_bytes"] = tracker.peak_bytes;
    entry["peak_blocks"] = tracker.peak_blocks;
    result.push_back(std::move(entry));
  }
  return result;
}

std::string text_of_registers(const SIDE_COUNTS& r, const SIDE_COUNTS& t) {
  TEXT_TABLE table({"registers", "signals", "instances", "all"});
  const auto add = [&](KPT_SET_ENUM side, const SIDE_COUNTS& c) {
    table.add({std::string(side_word(side)), std::to_string(c.signals), std::to_string(c.instances),
               std::to_string(c.signals + c.instances)});
  };
  add(KPT_REFERENCE_SET, r);
  add(KPT_TRANSFORMED_SET, t);
  return table.text();
}

std::string text_of_maps(const MAP_COUNTS& counts) {
  TEXT_TABLE table({"maps", "count"});
  for (const MAP_KIND kind : {ONE_TO_ONE, MANY_TO_MANY, STATE_MACHINE, OPEN_MAP}) {
    table.add({std::string(kind_word(kind)), std::to_string(counts.by_kind.at(kind))});
  }
  for (const auto& [reason, count] : counts.by_reason) {
    table.add({reason == "eliminated" ? "eliminated" : "eliminated " + reason, std::to_string(count)});
  }
  return table.text() + "open: the map lists registers of one side alone and gives no reason\n";
}

std::string text_of_coverage(const SIDE_COUNTS& r) {
  TEXT_TABLE table({"coverage of the reference", "registers", "share"});
  for (const KPT_FATE_ENUM fate : ALL_FATES) {
    const std::size_t count = r.by_fate.at(fate);
    table.add({kpt_fate_word(fate), std::to_string(count), percent(count, r.signals + r.instances)});
  }
  return table.text() + "unknown: the database does not say what became of the register\n";
}

std::string text_of_memory() {
  TEXT_TABLE table({"live bytes", "blocks", "peak bytes", "blocks", "type"});
  for (const kpt_host::TRACKER& t : kpt_host::trackers()) {
    table.add({std::to_string(t.live_bytes), std::to_string(t.live_blocks), std::to_string(t.peak_bytes),
               std::to_string(t.peak_blocks), t.type});
  }
  return table.text();
}

}  // namespace

EXIT_CODE run_info(const INFO_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  const SIDE_COUNTS r = count_side(db, KPT_REFERENCE_SET);
  const SIDE_COUNTS t = count_side(db, KPT_TRANSFORMED_SET);
  const MAP_COUNTS maps = count_maps(db);
  RESULT_FILE out("");
  if (options.json) {
    JSON result = new_result();
    result["name"] = db.name();
    result["registers"] = {{"reference", json_of(r)}, {"transformed", json_of(t)}};
    result["maps"] = json_of(maps);
    for (const KPT_FATE_ENUM fate : ALL_FATES) {
      result["coverage"][std::string(fate_word(fate))] = r.by_fate.at(fate);
    }
    if (options.memory) {
      result["memory"] = json_of_memory();
    }
    out.write(json_text(result) + "\n");
  } else {
    out.write(fmt::format("database {}\n\n{}\n{}\n{}", printable(db.name()), text_of_registers(r, t),
                          text_of_maps(maps), text_of_coverage(r)));
    out.write(options.memory ? fmt::format("\n{}", text_of_memory()) : "");
  }
  out.finish();
  return judge_coverage(db, options.file, options.fail_under);
}

}  // namespace kptdb
