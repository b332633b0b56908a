// export: sections for the configuration of EQY, which matches nets by name and recodes state
// machines whose wires keep their name.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "export_facts.h"
#include "progress.h"
#include "text.h"
#include "wave/indexed_name.h"

namespace kptdb {

namespace {

// A name as a pattern that matches nothing else: every character with a special meaning
// gets a backslash. A digit must not get one, because that would refer to a group.
std::string pattern_of(std::string_view name) {
  std::string pattern;
  for (const char c : name) {
    const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    pattern += is_plain ? "" : "\\";
    pattern += c;
  }
  return pattern;
}

// Blanks separate words, and a backslash before a digit means a group.
bool can_be_pattern(std::string_view name) {
  return !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c <= '~' && c != '\\'; });
}

struct UNSAID {
  std::size_t inverted = 0;
  std::size_t constant = 0;
  std::size_t machines = 0;
  std::size_t names = 0;
};

void write_matches(const FACTS& facts, RESULT_FILE& out, UNSAID& unsaid) {
  PROGRESS progress("exporting", facts.subjects().size(), PROGRESS::REGISTERS);
  std::uint64_t done = 0;
  for (const SUBJECT& subject : facts.subjects()) {
    progress.at(++done);
    unsaid.constant += facts.constant_of(subject) ? 1U : 0U;
    if (facts.fact_of(subject).kind != PLAIN_FACT) {
      continue;
    }
    const std::string gold = name_in_netlist(subject.reg, '.');
    bool is_said = false;
    bool is_sayable = can_be_pattern(gold);
    bool has_same = false;
    facts.for_each_copy(subject, [&](const FACT_MEMBER& copy, bool inverse) {
      if (inverse || is_said) {
        return;
      }
      has_same = true;
      const std::string gate = name_in_netlist(copy.reg, '.');
      if (is_sayable && can_be_pattern(gate)) {
        out.write(fmt::format("gold-match {} {}\n", pattern_of(gold), pattern_of(gate)));
        is_said = true;
      }
    });
    unsaid.inverted += has_same ? 0U : 1U;
    unsaid.names += has_same && !is_said ? 1U : 0U;
  }
}

// The wire whose bits are the columns of a side, with the bit of each column; empty when there is none.
struct WIRE {
  std::string name;
  std::map<std::int64_t, std::uint32_t, std::greater<>> columns;  // by index, from the left
};

WIRE wire_of(const FACTS& facts, const FACT& fact, bool transformed) {
  WIRE wire;
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    const FACT_MEMBER& member = facts.member(k);
    const auto split = split_index(name_of(member.reg));
    if (member.transformed != transformed) {
      continue;
    }
    const bool is_alone = (transformed ? fact.t_columns : fact.r_columns) == 1;
    const std::string_view base = split ? split->base : is_alone ? name_of(member.reg) : std::string_view();
    if (!member.reg.is_signal() || base.empty() || (!wire.name.empty() && wire.name != base) || member.inverse ||
        !wire.columns.try_emplace(split ? split->index : 0, member.column).second) {
      return {};
    }
    wire.name = base;
  }
  // A wire with bits that the table does not have cannot be recoded as a whole.
  const bool is_whole = wire.columns.size() == (transformed ? fact.t_columns : fact.r_columns) &&
                        !wire.columns.empty() && wire.columns.rbegin()->first == 0 &&
                        wire.columns.begin()->first + 1 == static_cast<std::int64_t>(wire.columns.size());
  return is_whole ? wire : WIRE();
}

std::string code_on(const WIRE& wire, const std::string& code) {
  std::string text;
  for (const auto& [index, column] : wire.columns) {
    text += code[column];
  }
  return text;
}

void write_recode(const FACTS& facts, const FACT& fact, const std::string& module, RESULT_FILE& out, UNSAID& unsaid) {
  const WIRE gold = wire_of(facts, fact, false);
  const WIRE gate = wire_of(facts, fact, true);
  if (gold.name.empty() || gold.name != gate.name || !can_be_pattern(gold.name)) {
    ++unsaid.machines;
    return;
  }
  out.write(fmt::format("\n[recode {} {}]\n", module, pattern_of(gold.name)));
  std::set<std::string> written;
  for (const auto& [r, t] : facts.codes_of(fact)) {
    std::string line = code_on(gold, r) + " " + code_on(gate, t) + "\n";
    if (written.insert(line).second) {
      out.write(line);
    }
  }
}

}  // namespace

void export_eqy(const FACTS& facts, const std::string& module, RESULT_FILE& out) {
  if (!can_be_pattern(module)) {
    throw FAILURE(EXIT_FOUND, fmt::format("EQY cannot be told of the module \"{}\"", printable(module)));
  }
  const std::string pattern = pattern_of(module);
  UNSAID unsaid;
  out.write(fmt::format("[match {}]\n", pattern));
  write_matches(facts, out, unsaid);
  for (const FACT& fact : facts.all()) {
    if (fact.kind == MACHINE_FACT) {
      write_recode(facts, fact, pattern, out, unsaid);
    }
  }
  out.write(
      fmt::format("\n# EQY cannot be told of {} inverted and {} constant, of {} whose wires have two names\n"
                  "# or inverted bits, and of {} whose names its patterns cannot hold.\n",
                  counted(unsaid.inverted, "register"), counted(unsaid.constant, "register"),
                  counted(unsaid.machines, "state machine"), counted(unsaid.names, "register")));
}

}  // namespace kptdb
