#include "report_data.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "../model.h"
#include "report_page.h"

namespace kptdb {

namespace {

// `kptdb diff` lists the others.
constexpr std::size_t MOST_CHANGES = 10000;

// Appends a text with a NUL after it. No file holds a name with a NUL.
void add_text(std::string& texts, std::string_view text) {
  for (const char c : text) {
    texts += c == '\0' ? ' ' : c;
  }
  texts += '\0';
}

}  // namespace

REPORT_DATA::REPORT_DATA(std::vector<REPORT_STAGE> stages, const KPT_KEYPOINTS_DB& whole)
    : m_title(std::string_view(stages.front().db.get_name())),
      m_stages(std::move(stages)),
      m_netlists(m_stages.size() + 1),
      m_has_whole(!whole.is_null()) {
  for (std::size_t k = 0; k < m_stages.size(); ++k) {
    read_registers(STAGE(m_stages[k].db), k);
  }
  if (m_has_whole) {
    read_registers(STAGE(whole), m_stages.size());
  }
  m_fates.resize(m_netlists.front().size());
  for (std::size_t k = 0; k < m_stages.size(); ++k) {
    read_stage(STAGE(m_stages[k].db), k);
  }
  if (m_has_whole) {
    read_whole(STAGE(whole));
  }
  count_words();
}

// The whole database has registers of the first and the last netlist.
void REPORT_DATA::read_registers(const STAGE& stage, std::size_t number) {
  const bool is_whole = number == m_stages.size();
  for (unsigned side = 0; side < 2; ++side) {
    NETLIST& netlist = m_netlists[is_whole ? (side == 0 ? 0 : number) : number + side];
    netlist.reserve(stage.size(side));
    stage.for_each_register(side, [&](const REGISTER_KEY& key, const ATTRIBUTES& attributes) {
      const std::uint32_t at = netlist.add(key);
      if (!attributes.empty()) {
        netlist.row(at).attributes = m_attributes.number(attributes);
      }
    });
  }
}

namespace {

// Calls visit(side, member) for the members whose entries lead to this map.
template <class VISIT>
void for_each_found(const STAGE_MAP& map, VISIT visit) {
  for (unsigned side = 0; side < 2; ++side) {
    for (const STAGE_PAIR& pair : map.sides[side]) {
      for (const std::vector<STAGE_MEMBER>* group : {&pair.same, &pair.inverse}) {
        for (const STAGE_MEMBER& member : *group) {
          if (member.is_register && member.is_found) {
            visit(side, member);
          }
        }
      }
    }
  }
}

}  // namespace

void REPORT_DATA::read_stage(const STAGE& stage, std::size_t number) {
  NETLIST& reference = m_netlists[number];
  NETLIST& transformed = m_netlists[number + 1];
  MAP_COLUMN& maps = m_maps.emplace_back(reference, transformed);
  stage.for_each_map([&](const STAGE_MAP& map) {
    maps.add(map, m_attributes.number(map.attributes));
    for_each_found(map, [&](unsigned side, const STAGE_MEMBER& member) {
      NETLIST& netlist = side == 0 ? reference : transformed;
      const std::uint32_t at = netlist.find(member.key);
      if (at < netlist.size()) {
        (side == 0 ? netlist.row(at).map_as_reference : netlist.row(at).map_as_transformed) = maps.size();
      }
    });
    if (number == 0) {
      m_findings.look_at(map, reference, std::string(std::string_view(m_stages[number].db.get_name())));
    }
    if (!m_has_whole) {
      take_fates(map);
    }
  });
}

void REPORT_DATA::read_whole(const STAGE& stage) {
  const std::array netlists{&m_netlists.front(), &m_netlists.back()};
  MAP_COLUMN& maps = m_maps.emplace_back(*netlists[0], *netlists[1]);
  m_whole_of = {std::vector<std::uint32_t>(netlists[0]->size()), std::vector<std::uint32_t>(netlists[1]->size())};
  stage.for_each_map([&](const STAGE_MAP& map) {
    maps.add(map, m_attributes.number(map.attributes));
    for_each_found(map, [&](unsigned side, const STAGE_MEMBER& member) {
      m_whole_of[side].at(netlists[side]->find(member.key)) = maps.size();
    });
    take_fates(map);
  });
}

void REPORT_DATA::take_fates(const STAGE_MAP& map) {
  for (const STAGE_PAIR& pair : map.sides[0]) {
    for (const bool is_inverse : {false, true}) {
      const REGISTER_FATE fate = fate_of(map, pair, is_inverse);
      for (const STAGE_MEMBER& member : is_inverse ? pair.inverse : pair.same) {
        if (member.is_register && member.is_found) {
          m_fates.at(m_netlists.front().find(member.key)) = fate;
        }
      }
    }
  }
}

void REPORT_DATA::count_words() {
  for (const REGISTER_FATE& fate : m_fates) {
    ++m_word_counts.at(fate.word);
  }
  for (const NETLIST::ROW& row : m_netlists.front().rows()) {
    m_scope_of.push_back(m_scopes.scope_of(row.key.name));
  }
}

void REPORT_DATA::write(RESULT_FILE& out, const std::string& written, const std::string& tool) const {
  out.write(REPORT_PAGE_BEFORE_DATA);
  BLOCKS blocks(out);
  for (std::size_t k = 0; k < m_netlists.size(); ++k) {
    write_netlist(blocks, k);
  }
  for (std::size_t k = 0; k < m_stages.size(); ++k) {
    blocks.write(fmt::format("maps-{}", k), m_maps[k].bytes());
  }
  std::string names;
  COLUMN parents;
  for (const SCOPES::SCOPE& scope : m_scopes.all()) {
    add_text(names, scope.name);
    parents.add(scope.parent);
  }
  blocks.write("scopes", names);
  blocks.write("parents", parents.bytes());
  if (m_has_whole) {
    write_whole(blocks);
  }
  blocks.write("head", head(written, tool));
  out.write(REPORT_PAGE_AFTER_DATA);
}

void REPORT_DATA::write_netlist(BLOCKS& blocks, std::size_t number) const {
  std::string names;
  COLUMN columns;
  COLUMN attributes;
  STEPS as_reference;
  STEPS as_transformed;
  for (const NETLIST::ROW& row : m_netlists[number].rows()) {
    add_text(names, row.key.name);
    columns.add(m_kinds.number(row.key));
    attributes.add(row.attributes);
    as_reference.add(row.map_as_reference);
    as_transformed.add(row.map_as_transformed);
  }
  columns.append(attributes);
  columns.append(as_reference.column());
  columns.append(as_transformed.column());
  if (number == 0) {
    STEPS scopes;
    for (const std::uint32_t scope : m_scope_of) {
      scopes.add(scope);
    }
    columns.append(scopes.column());
    for (const REGISTER_FATE& fate : m_fates) {
      columns.add(fate.word | (fate.word == WORD_CONSTANT ? fate.value + 1 : 0U) << 3U);
    }
  }
  blocks.write(fmt::format("names-{}", number), names);
  blocks.write(fmt::format("columns-{}", number), columns.bytes());
}

void REPORT_DATA::write_whole(BLOCKS& blocks) const {
  blocks.write("maps-whole", m_maps.back().bytes());
  COLUMN columns;
  for (const std::vector<std::uint32_t>& numbers : m_whole_of) {
    STEPS steps;
    for (const std::uint32_t number : numbers) {
      steps.add(number);
    }
    columns.append(steps.column());
  }
  blocks.write("columns-whole", columns.bytes());
}

namespace {

JSON json_of(const REPORT_CHANGES& changes) {
  JSON list = JSON::array();
  for (const CHANGE& change : changes.changes) {
    if (list.size() == MOST_CHANGES) {
      break;
    }
    list.push_back({change.side == KPT_REFERENCE_SET ? 0 : 1, change.name, change.first, change.second});
  }
  return {{"file", changes.file}, {"total", changes.changes.size()}, {"changes", std::move(list)}};
}

}  // namespace

std::string REPORT_DATA::head(const std::string& written, const std::string& tool) const {
  JSON head;
  head["format"] = 1;
  head["tool"] = tool;
  head["design"] = m_title;
  head["written"] = written;
  for (const REPORT_STAGE& stage : m_stages) {
    head["stages"].push_back(
        {{"name", std::string_view(stage.db.get_name())}, {"file", stage.file}, {"modified", stage.modified}});
  }
  for (std::size_t w = 0; w < REGISTER_WORDS.size(); ++w) {
    head["words"][std::string(REGISTER_WORDS.at(w))] = m_word_counts.at(w);
  }
  head["kinds"] = m_kinds.all();
  head["attributes"] = m_attributes.all();
  for (const NETLIST& netlist : m_netlists) {
    head["netlists"].push_back(netlist.size());
  }
  for (std::size_t k = 0; k < m_stages.size(); ++k) {
    head["maps"].push_back(m_maps[k].size());
  }
  if (m_has_whole) {
    head["whole"] = m_maps.back().size();
  }
  head["scopes"] = m_scopes.all().size();
  head["unreachable"] = JSON::array();
  for (const FINDINGS::UNREACHABLE& found : m_findings.unreachable()) {
    head["unreachable"].push_back({found.reg, found.codes, found.states});
  }
  head["contradictions"] = JSON::array();
  for (const FINDINGS::CONTRADICTION& found : m_findings.contradictions()) {
    const bool is_source = found.reg < m_netlists.front().size();
    head["contradictions"].push_back({found.text, is_source ? static_cast<int>(found.reg) : -1});
  }
  head["told"] = m_told;
  if (m_changes) {
    head["against"] = json_of(*m_changes);
  }
  return json_text(head, -1);
}

}  // namespace kptdb
