// export: files for waveform viewers. GTKWave gets a save file, with every register under its own
// name, and a filter for each state machine; Surfer gets a mapping for each state machine.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>

#include "export_facts.h"
#include "facts.h"
#include "files.h"
#include "text.h"
#include "wave/buses.h"
#include "wave/vcd_names.h"
#include "wave/vcd_reader.h"

namespace kptdb {

namespace {

// How GTKWave shows a trace.
constexpr unsigned SHOW_BINARY = 0x28;
constexpr unsigned SHOW_HEXADECIMAL = 0x22;
constexpr unsigned SHOW_INVERTED = 0x40;
constexpr unsigned SHOW_COMMENT = 0x200;
constexpr unsigned SHOW_TRANSLATED = 0x2000;

// A label is between braces and ends at a blank or a brace.
std::string label_of(std::string_view name) {
  std::string label = printable(name);
  std::replace_if(
      label.begin(), label.end(), [](char c) { return c == ' ' || c == '{' || c == '}'; }, '_');
  return label;
}

// A bit of the netlist with the viewer's name.
struct TRACE {
  std::string object;
  bool inverse = false;
};

// A state machine's registers and codes, in the order of the display.
struct SHOWN_MACHINE {
  std::string label;
  std::vector<std::uint32_t> reference_columns;
  std::map<std::string, std::string> codes;  // reference code by transformed code, both as shown
};

// The first register of every column of a side.
std::vector<const FACT_MEMBER*> columns_of(const FACTS& facts, const FACT& fact, bool transformed) {
  std::vector<const FACT_MEMBER*> columns(transformed ? fact.t_columns : fact.r_columns, nullptr);
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    const FACT_MEMBER& member = facts.member(k);
    if (member.transformed == transformed && columns[member.column] == nullptr) {
      columns[member.column] = &member;
    }
  }
  return columns;
}

// The registers as one vector if they are one, otherwise one after the other.
SHOWN_MACHINE shown_machine(const FACTS& facts, const FACT& fact) {
  const std::vector<const FACT_MEMBER*> columns = columns_of(facts, fact, false);
  std::vector<std::string> names;
  names.reserve(columns.size());
  for (const FACT_MEMBER* member : columns) {
    names.push_back(member == nullptr ? "?" : name_in_netlist(member->reg, '.'));
  }
  SHOWN_MACHINE machine;
  const std::vector<std::string_view> views(names.begin(), names.end());
  const std::vector<BUS> buses = join_buses(views, '.');
  for (const BUS& bus : buses) {
    machine.label +=
        (machine.label.empty() ? "" : ",") + label_of(std::string(bus.path) + std::string(bus.base)) + bus.range();
    machine.reference_columns.insert(machine.reference_columns.end(), bus.bits.begin(), bus.bits.end());
  }
  return machine;
}

// Codes by the displayed bits. When several states share these, x marks the bits that differ.
void add_codes(const FACTS& facts, const FACT& fact, const std::vector<std::pair<std::uint32_t, bool>>& shown,
               SHOWN_MACHINE& machine) {
  for (const auto& [reference, transformed] : facts.codes_of(fact)) {
    std::string key;
    for (const auto& [column, inverse] : shown) {
      key += (transformed[column] == '1') != inverse ? '1' : '0';
    }
    std::string code;
    for (const std::uint32_t column : machine.reference_columns) {
      code += reference[column];
    }
    const auto [found, is_new] = machine.codes.try_emplace(std::move(key), code);
    for (std::size_t k = 0; !is_new && k < code.size(); ++k) {
      found->second[k] = found->second[k] == code[k] ? code[k] : 'x';
    }
  }
}

void make_folder(const std::string& folder) {
  std::error_code problem;
  std::filesystem::create_directories(folder, problem);
  if (problem) {
    throw FAILURE(EXIT_FOUND, fmt::format("{}: not written: {}", folder, problem.message()));
  }
}

void write_file(const std::string& path, const std::string& text) {
  RESULT_FILE out(path);
  out.write(text);
  out.finish();
}

class GTKWAVE_FILES {
 public:
  GTKWAVE_FILES(const FACTS& facts, const VIEWER_OPTIONS& options)
      : m_facts(facts),
        m_options(options),
        m_reader(options.dump),
        m_names(m_reader, options.scope, options.divider),
        m_is_written(facts.all().size(), false) {}

  void write(const std::string& name) {
    make_folder(m_options.folder);
    std::vector<std::string> texts;
    for (const SUBJECT& subject : m_facts.subjects()) {
      texts.push_back(name_in_netlist(subject.reg, m_options.divider));
    }
    const std::vector<std::string_view> names(texts.begin(), texts.end());
    for (const BUS& bus : join_buses(names, m_options.divider)) {
      write_bus(bus, names);
    }
    write_file(m_options.folder + "/" + name + ".gtkw", m_text);
  }

 private:
  std::optional<TRACE> trace_of(const SUBJECT& subject) const {
    std::optional<TRACE> trace;
    if (m_facts.fact_of(subject).kind == PLAIN_FACT) {
      m_facts.for_each_copy(subject, [&](const FACT_MEMBER& copy, bool inverse) {
        const VCD_BIT bit = trace ? VCD_BIT() : m_names.find(name_in_netlist(copy.reg, m_options.divider));
        if (bit.finding == FOUND) {
          trace = TRACE{m_names.viewer_name(bit), inverse};
        }
      });
    }
    return trace;
  }

  // A vector is one trace if all its bits have the same polarity.
  void write_bus(const BUS& bus, const std::vector<std::string_view>& names) {
    std::string objects;
    std::optional<bool> inverse;
    bool is_one = bus.bits.size() > 1;
    for (const std::uint32_t bit : bus.bits) {
      const std::optional<TRACE> trace = trace_of(m_facts.subjects()[bit]);
      is_one = is_one && trace && (!inverse || *inverse == trace->inverse);
      if (is_one) {
        inverse = trace->inverse;
        objects += " " + trace->object;
      }
    }
    if (is_one) {
      const std::string label = label_of(std::string(bus.path) + std::string(bus.base)) + bus.range();
      m_text += fmt::format("@{:x}\n#{{{}}}{}\n", SHOW_HEXADECIMAL | (*inverse ? SHOW_INVERTED : 0U), label, objects);
      return;
    }
    for (const std::uint32_t bit : bus.bits) {
      write_single(m_facts.subjects()[bit], names[bit]);
    }
  }

  void write_single(const SUBJECT& subject, std::string_view name) {
    const FACT& fact = m_facts.fact_of(subject);
    if (fact.kind == MACHINE_FACT) {
      write_machine(subject.fact);
    } else if (const auto constant = m_facts.constant_of(subject)) {
      m_text += fmt::format("@{:x}\n-{} = {}\n", SHOW_COMMENT, label_of(name), *constant ? 1 : 0);
    } else if (const std::optional<TRACE> trace = trace_of(subject)) {
      m_text += fmt::format("@{:x}\n+{{{}}} {}\n", SHOW_BINARY | (trace->inverse ? SHOW_INVERTED : 0U), label_of(name),
                            trace->object);
    } else {
      m_text += fmt::format("@{:x}\n-{}: {}\n", SHOW_COMMENT, label_of(name),
                            fact.kind == UNUSED_FACT ? "without fanout" : "unknown");
    }
  }

  // Once, at the position of its first register.
  void write_machine(std::uint32_t number) {
    if (m_is_written[number]) {
      return;
    }
    m_is_written[number] = true;
    const FACT& fact = m_facts.all()[number];
    SHOWN_MACHINE machine = shown_machine(m_facts, fact);
    std::string objects;
    std::vector<std::pair<std::uint32_t, bool>> shown;
    for (const FACT_MEMBER* member : columns_of(m_facts, fact, true)) {
      const VCD_BIT bit = member == nullptr ? VCD_BIT() : m_names.find(name_in_netlist(member->reg, m_options.divider));
      if (bit.finding == FOUND) {
        shown.emplace_back(member->column, member->inverse);
        objects += " " + m_names.viewer_name(bit);
      }
    }
    if (shown.empty()) {
      m_text += fmt::format("@{:x}\n-{}: not in the dump\n", SHOW_COMMENT, machine.label);
      return;
    }
    add_codes(m_facts, fact, shown, machine);
    const std::string filter = fmt::format("{}/machine_{}.txt", m_options.folder, ++m_machines);
    std::string text = "# " + machine.label + "\n";
    for (const auto& [key, code] : machine.codes) {
      text += fmt::format("{} {}\n", key, code);
    }
    write_file(filter, text);
    // A trace of one bit has no braces.
    m_text +=
        fmt::format("@{:x}\n^1 {}\n{}{{{}}}{}\n", SHOW_BINARY | SHOW_TRANSLATED,
                    std::filesystem::absolute(filter).string(), shown.size() > 1 ? '#' : '+', machine.label, objects);
  }

  const FACTS& m_facts;
  const VIEWER_OPTIONS& m_options;
  VCD_READER m_reader;
  VCD_NAMES m_names;
  std::string m_text = "[timestart] 0\n";
  std::vector<bool> m_is_written;  // by fact
  std::size_t m_machines = 0;
};

std::string file_name_of(std::string_view label) {
  std::string name(label);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '/' || c == '.' || c == ','; }, '_');
  return name;
}

}  // namespace

void export_gtkwave(const FACTS& facts, const std::string& name, const VIEWER_OPTIONS& options) {
  GTKWAVE_FILES(facts, options).write(file_name_of(label_of(name)));
}

// A mapping belongs to one variable of the viewer. So the bits are those of one vector of the
// netlist, from the left. A machine whose registers are not such a vector has no variable to map.
void export_surfer(const FACTS& facts, const VIEWER_OPTIONS& options) {
  make_folder(options.folder);
  std::size_t number = 0;
  for (const FACT& fact : facts.all()) {
    if (fact.kind != MACHINE_FACT) {
      continue;
    }
    SHOWN_MACHINE machine = shown_machine(facts, fact);
    const std::vector<const FACT_MEMBER*> columns = columns_of(facts, fact, true);
    std::vector<std::string_view> names;
    for (const FACT_MEMBER* member : columns) {
      if (member != nullptr && member->reg.is_signal()) {
        names.push_back(name_of(member->reg));
      }
    }
    const std::vector<BUS> buses = join_buses(names, options.divider);
    if (buses.size() != 1 || names.size() != columns.size()) {
      continue;
    }
    std::vector<std::pair<std::uint32_t, bool>> shown;
    for (const std::uint32_t column : buses.front().bits) {
      shown.emplace_back(column, columns[column]->inverse);
    }
    add_codes(facts, fact, shown, machine);
    std::string text = fmt::format("Name = {}\nBits = {}\n", machine.label, shown.size());
    for (const auto& [key, code] : machine.codes) {
      text += fmt::format("0b{} {}\n", key, code);
    }
    write_file(fmt::format("{}/machine_{}.txt", options.folder, ++number), text);
  }
}

}  // namespace kptdb
