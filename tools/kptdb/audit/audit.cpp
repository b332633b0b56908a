#include "audit.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>

#include "../database.h"
#include "../files.h"
#include "../model.h"
#include "../text.h"
#include "claims.h"
#include "timescale.h"

namespace kptdb {

namespace {

CLOCK_EDGE edge_of(const std::string& word) {
  return word == "falling" ? FALLING_EDGE : word == "both" ? BOTH_EDGES : RISING_EDGE;
}

// Dumps without a timescale have the same unit.
struct UNITS {
  std::uint64_t reference = 1;
  std::uint64_t transformed = 1;
  bool is_known = false;
};

UNITS units_of(const VCD_READER& reference, const VCD_READER& transformed) {
  const auto r = timescale_of(reference.timescale());
  const auto t = timescale_of(transformed.timescale());
  return r && t ? UNITS{*r, *t, true} : UNITS{};
}

std::string shown_time(FEMTOSECONDS time, const UNITS& units) {
  if (units.is_known) {
    return time_text(time);
  }
  return std::to_string(static_cast<std::uint64_t>(time));
}

// False when the dump has no such signal.
bool sample_at_clock(SAMPLER& sampler, const AUDIT_OPTIONS& options, char divider) {
  const VCD_NAMES names(sampler.reader(), "", divider);
  // The parts of a dump's path are separated by dots, whatever separates the instances of a register.
  std::string path = options.clock;
  std::replace(path.begin(), path.end(), '.', divider);
  const VCD_BIT clock = names.find(path);
  if (clock.finding == AMBIGUOUS) {
    throw FAILURE(EXIT_WRONG_USE,
                  fmt::format("{}: several signals are called {}", sampler.reader().path(), printable(options.clock)));
  }
  if (clock.finding == FOUND) {
    sampler.sample_at_edges(sampler.reader().follow(clock.signal, clock.bit), edge_of(options.edge));
  }
  return clock.finding == FOUND;
}

// A dump of only the netlist may lack the clock of the bench. The clock of the source is then used for both.
void sample_at_clocks(SAMPLER& reference, SAMPLER& transformed, const AUDIT_OPTIONS& options, char divider) {
  if (!sample_at_clock(reference, options, divider)) {
    throw FAILURE(EXIT_WRONG_USE, fmt::format("{}: no signal {}", options.reference_dump, printable(options.clock)));
  }
  sample_at_clock(transformed, options, divider);
}

FEMTOSECONDS time_option(const std::string& text, const UNITS& units) {
  const auto time = time_of(text, units.reference);
  if (!time || (!units.is_known && text.find_first_not_of("0123456789") != std::string::npos)) {
    throw FAILURE(EXIT_WRONG_USE, "no time of these dumps: " + printable(text));
  }
  return *time;
}

// A time between two units of a dump is not one of its times.
std::uint64_t time_in(FEMTOSECONDS time, std::uint64_t unit) {
  const FEMTOSECONDS whole = time / unit;
  if (whole * unit != time || whole > ~std::uint64_t{0}) {
    throw FAILURE(EXIT_WRONG_USE, time_text(time) + " is no time of these dumps");
  }
  return static_cast<std::uint64_t>(whole);
}

void sample_at_times(SAMPLER& reference, SAMPLER& transformed, const AUDIT_OPTIONS& options, const UNITS& units) {
  std::set<FEMTOSECONDS> times;
  for (const std::string& text : options.at) {
    times.insert(time_option(text, units));
  }
  std::vector<std::uint64_t> r;
  std::vector<std::uint64_t> t;
  for (const FEMTOSECONDS time : times) {
    r.push_back(time_in(time, units.reference));
    t.push_back(time_in(time, units.transformed));
  }
  reference.sample_at(std::move(r));
  transformed.sample_at(std::move(t));
}

// Returns the number of moments. Dumps whose clocks differ come from two stimuli.
std::size_t check_all(CLAIMS& claims, SAMPLER& reference, SAMPLER& transformed, const AUDIT_OPTIONS& options,
                      const UNITS& units) {
  const FEMTOSECONDS from = options.from.empty() ? FEMTOSECONDS{0} : time_option(options.from, units);
  std::size_t moments = 0;
  while (reference.next_sample()) {
    const FEMTOSECONDS r = FEMTOSECONDS{reference.time()} * units.reference;
    // Values change at whole units, so just before a time between two units is just before the later unit.
    const auto before = static_cast<std::uint64_t>((r + units.transformed - 1) / units.transformed);
    if (!(transformed.has_moments() ? transformed.next_sample() : transformed.sample_before(before))) {
      break;
    }
    const FEMTOSECONDS t = FEMTOSECONDS{transformed.time()} * units.transformed;
    if (transformed.has_moments() && r != t) {
      throw FAILURE(EXIT_FOUND, fmt::format("the clocks of the dumps differ: an edge at {}, the other at {}",
                                            shown_time(r, units), shown_time(t, units)));
    }
    if (r >= from) {
      claims.check();
      ++moments;
    }
  }
  return moments;
}

class REPORT {
 public:
  REPORT(const CLAIMS& claims, const AUDIT_OPTIONS& options, const UNITS& units, std::size_t moments)
      : m_claims(claims), m_options(options), m_units(units), m_moments(moments) {
    for (const CLAIM& claim : claims.all()) {
      m_checked += claim.is_checked ? 1U : 0U;
      m_weak += claim.is_checked && !claim.is_violated && !claim.has_toggled && claim.kind != CONSTANT_CLAIM ? 1U : 0U;
    }
  }

  std::string text() const {
    std::string text;
    for (const VIOLATION& violation : m_claims.violations()) {
      text += line(violation);
    }
    text +=
        fmt::format("{}: {} at {}: {} checked, {} violated\n", m_options.file, counted(m_claims.all().size(), "claim"),
                    counted(m_moments, "moment"), m_checked, m_claims.violations().size());
    text += count_line(m_claims.all().size() - m_checked, "never known in both dumps");
    text += count_line(m_weak, "held without ever changing: weak evidence");
    text += count_line(m_claims.not_in_dumps(), "registers not in the dumps");
    return text + count_line(m_claims.ambiguous(), "registers whose names stand for several signals");
  }

  JSON json() const {
    JSON json;
    json["format"] = 1;
    json["moments"] = m_moments;
    json["claims"] = m_claims.all().size();
    json["checked"] = m_checked;
    json["never_known"] = m_claims.all().size() - m_checked;
    json["never_toggled"] = m_weak;
    json["registers_not_in_the_dumps"] = m_claims.not_in_dumps();
    json["registers_ambiguous"] = m_claims.ambiguous();
    json["violations"] = JSON::array();
    for (const VIOLATION& violation : m_claims.violations()) {
      const CLAIM& claim = m_claims.all()[violation.claim];
      JSON entry;
      entry["register"] = subject(claim);
      entry["claim"] = what(claim);
      entry["time"] = time(violation);
      entry["values"] = values(violation);
      json["violations"].push_back(std::move(entry));
    }
    return json;
  }

  bool has_checked() const { return m_checked > 0; }

 private:
  static std::string count_line(std::size_t count, std::string_view what) {
    return count == 0 ? "" : fmt::format("  {} {}\n", count, what);
  }
  std::string name(std::uint32_t member) const {
    return printable(name_in_netlist(m_claims.facts().member(member).reg, m_options.divider.front()));
  }
  // For a machine, all of its registers on that side.
  std::string names(const CLAIM& claim, bool transformed) const {
    const FACT& fact = m_claims.facts().all()[claim.fact];
    std::string text;
    std::uint32_t column = ~std::uint32_t{0};
    for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
      const FACT_MEMBER& member = m_claims.facts().member(k);
      if (member.transformed == transformed && member.column != column) {
        text += (text.empty() ? "" : " ") + name(k);
        column = member.column;
      }
    }
    return text;
  }
  std::string subject(const CLAIM& claim) const {
    return claim.kind == CODES_OF_MACHINE_CLAIM ? names(claim, false) : name(claim.member);
  }
  std::string what(const CLAIM& claim) const {
    switch (claim.kind) {
      case SAME_CLAIM:
        return "same as " + name(claim.other);
      case INVERSE_CLAIM:
        return "inverse of " + name(claim.other);
      case CONSTANT_CLAIM:
        return claim.constant ? "constant 1" : "constant 0";
      case CODES_OF_MACHINE_CLAIM:
        break;
    }
    return "codes with " + names(claim, true);
  }
  std::string time(const VIOLATION& violation) const {
    return shown_time(FEMTOSECONDS{violation.time} * m_units.reference, m_units);
  }
  static std::string values(const VIOLATION& violation) {
    const bool has_both = !violation.value.empty() && !violation.other_value.empty();
    return violation.value + (has_both ? " and " : "") + violation.other_value;
  }
  std::string line(const VIOLATION& violation) const {
    const CLAIM& claim = m_claims.all()[violation.claim];
    return fmt::format("{}: {}: violated at {}: {}\n", subject(claim), what(claim), time(violation), values(violation));
  }

  const CLAIMS& m_claims;
  const AUDIT_OPTIONS& m_options;
  const UNITS& m_units;
  std::size_t m_moments;
  std::size_t m_checked = 0;
  std::size_t m_weak = 0;
};

// A simulation can refute a claim but cannot prove it. A claim that held becomes "claimed" if it has
// no status yet. A claim that was violated becomes "refuted". Other statuses do not change.
void write_status(const DATABASE& db, const CLAIMS& claims, const std::string& file) {
  for (const CLAIM& claim : claims.all()) {
    const KPT_REGISTER_TRANSFORMATION& map = claims.facts().all()[claim.fact].map;
    if (claim.is_violated) {
      map.add_attribute("status", "refuted");
    } else if (claim.is_checked && map.get_attribute("status").empty()) {
      map.add_attribute("status", "claimed");
    }
  }
  db.save(file);
}

void refuse_options_that_do_not_fit(const AUDIT_OPTIONS& options) {
  if (options.clock.empty() == options.at.empty()) {
    throw FAILURE(EXIT_WRONG_USE, "audit needs either --clock or --at");
  }
  if (options.divider.size() != 1) {
    throw FAILURE(EXIT_WRONG_USE, "--divider takes one character");
  }
}

}  // namespace

EXIT_CODE run_audit(const AUDIT_OPTIONS& options) {
  refuse_options_that_do_not_fit(options);
  const char divider = options.divider.front();
  const DATABASE db = DATABASE::load(options.file);
  const FACTS facts(db.handle());
  SAMPLER reference(options.reference_dump);
  SAMPLER transformed(options.transformed_dump);
  const UNITS units = units_of(reference.reader(), transformed.reader());
  if (options.at.empty()) {
    sample_at_clocks(reference, transformed, options, divider);
  } else {
    sample_at_times(reference, transformed, options, units);
  }
  CLAIMS claims(facts, reference, transformed, divider);
  claims.plan(VCD_NAMES(reference.reader(), options.scope, divider),
              VCD_NAMES(transformed.reader(),
                        options.transformed_scope.empty() ? options.scope : options.transformed_scope, divider));
  const std::size_t moments = check_all(claims, reference, transformed, options, units);
  const REPORT report(claims, options, units, moments);
  RESULT_FILE out = RESULT_FILE::beside(options.write ? options.file : std::string());
  out.write(options.json ? json_text(report.json()) + "\n" : report.text());
  out.finish();
  if (!report.has_checked()) {
    throw FAILURE(EXIT_FOUND, "nothing was checked: no claim had known values at any moment");
  }
  if (options.write) {
    write_status(db, claims, options.file);
  }
  return claims.violations().empty() ? EXIT_DONE : EXIT_FOUND;
}

}  // namespace kptdb
