#include "wave_translator.h"

#include <algorithm>

#include "../text.h"

namespace kptdb {

namespace {

char inverse_of(char value) { return value == '0' ? '1' : value == '1' ? '0' : 'x'; }

bool is_known(char value) { return value == '0' || value == '1'; }

}  // namespace

WAVE_TRANSLATOR::WAVE_TRANSLATOR(const FACTS& facts, VCD_READER& reader, const VCD_NAMES& names, char divider)
    : m_facts(facts),
      m_reader(reader),
      m_names(names),
      m_divider(divider),
      m_first_column(facts.all().size(), NO_BIT),
      m_finding(facts.all().size(), NOT_FOUND) {}

std::vector<std::string_view> WAVE_TRANSLATOR::plan(const std::string& only, bool with_unknown) {
  std::vector<std::pair<const SUBJECT*, std::uint32_t>> chosen;
  for (const SUBJECT& subject : m_facts.subjects()) {
    if (!matches(only, name_of(subject.reg))) {
      continue;
    }
    const std::uint32_t column = column_for(subject);
    if (column != NO_BIT || with_unknown) {
      chosen.emplace_back(&subject, column);
    }
  }
  m_bits.reserve(chosen.size());  // so that the names are not moved
  std::vector<std::string_view> names;
  for (const auto& [subject, column] : chosen) {
    show(*subject, column, names);
  }
  m_counts.written = names.size();
  finish_plan();
  return names;
}

void WAVE_TRANSLATOR::show(const SUBJECT& subject, std::uint32_t column, std::vector<std::string_view>& names) {
  const auto bit = static_cast<std::uint32_t>(m_bits.size());
  m_bits.push_back(name_in_netlist(subject.reg, m_divider));
  names.push_back(m_bits.back());
  if (column != NO_BIT) {
    m_columns[column].shown.push_back({bit, m_facts.member(subject.member).inverse});
  }
}

// The column whose value the register shows; NO_BIT when its value is not known.
std::uint32_t WAVE_TRANSLATOR::column_for(const SUBJECT& subject) {
  const FACT& fact = m_facts.fact_of(subject);
  if (fact.kind == NO_FACT || fact.kind == UNUSED_FACT) {
    ++m_counts.no_successor;
    return NO_BIT;
  }
  std::uint32_t column = m_first_column[subject.fact];
  if (column == NO_BIT) {
    column = fact.kind == MACHINE_FACT ? machine_columns(subject.fact) : plain_column(subject.fact);
    m_first_column[subject.fact] = column;
  }
  if (fact.kind == CONSTANT_FACT) {
    ++m_counts.constant;
    return column;
  }
  if (m_finding[subject.fact] != FOUND) {
    ++(m_finding[subject.fact] == AMBIGUOUS ? m_counts.ambiguous : m_counts.not_in_dump);
    return NO_BIT;
  }
  ++(fact.kind == MACHINE_FACT ? m_counts.decoded : m_counts.followed);
  return column + (fact.kind == MACHINE_FACT ? m_facts.member(subject.member).column : 0);
}

VCD_FINDING WAVE_TRANSLATOR::add_copy(COLUMN& column, const FACT_MEMBER& member) {
  const VCD_BIT found = m_names.find(name_in_netlist(member.reg, m_divider));
  if (found.finding == FOUND) {
    column.copies.push_back({m_reader.follow(found.signal, found.bit), member.inverse});
  }
  return found.finding;
}

std::uint32_t WAVE_TRANSLATOR::plain_column(std::uint32_t number) {
  const FACT& fact = m_facts.all()[number];
  COLUMN column;
  column.name = name_of(m_facts.member(fact.first_member).reg);
  column.constant = fact.kind == CONSTANT_FACT ? (fact.constant ? '1' : '0') : '\0';
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    if (m_facts.member(k).transformed) {
      const VCD_FINDING finding = add_copy(column, m_facts.member(k));
      m_finding[number] = m_finding[number] == FOUND || finding == NOT_FOUND ? m_finding[number] : finding;
    }
  }
  m_columns.push_back(std::move(column));
  return static_cast<std::uint32_t>(m_columns.size() - 1);
}

// The columns of the reference side first, then those of the transformed side.
std::uint32_t WAVE_TRANSLATOR::machine_columns(std::uint32_t number) {
  const FACT& fact = m_facts.all()[number];
  const auto first = static_cast<std::uint32_t>(m_columns.size());
  m_columns.resize(first + fact.r_columns + fact.t_columns);
  for (std::uint32_t k = fact.first_member; k < fact.end_member; ++k) {
    const FACT_MEMBER& member = m_facts.member(k);
    if (member.transformed) {
      const VCD_FINDING finding = add_copy(m_columns[first + fact.r_columns + member.column], member);
      m_finding[number] = m_finding[number] == FOUND || finding == NOT_FOUND ? m_finding[number] : finding;
    }
  }
  std::vector<std::uint32_t> known;
  std::vector<std::uint32_t> table_columns;
  std::vector<std::uint32_t> reference;
  for (std::uint32_t k = 0; k < fact.t_columns; ++k) {
    COLUMN& column = m_columns[first + fact.r_columns + k];
    column.name = name_of(m_facts.member(fact.first_member).reg);
    if (!column.copies.empty()) {
      column.machine = static_cast<std::uint32_t>(m_machines.size());
      known.push_back(first + fact.r_columns + k);
      table_columns.push_back(k);
    }
  }
  for (std::uint32_t k = 0; k < fact.r_columns; ++k) {
    reference.push_back(first + k);
  }
  m_machines.push_back({std::move(known), std::move(reference), COLUMN_CODES(m_facts.codes_of(fact), table_columns),
                        name_of(m_facts.member(fact.first_member).reg), false, false});
  return first;
}

// Settles every column once, so that the first step writes all constants.
void WAVE_TRANSLATOR::finish_plan() {
  m_begin_of_bit.assign(m_reader.followed() + 1, 0);
  for (const COLUMN& column : m_columns) {
    for (const COPY& copy : column.copies) {
      ++m_begin_of_bit[copy.followed + 1];
    }
  }
  for (std::size_t k = 1; k < m_begin_of_bit.size(); ++k) {
    m_begin_of_bit[k] += m_begin_of_bit[k - 1];
  }
  m_column_of_bit.resize(m_begin_of_bit.back());
  std::vector<std::uint32_t> next(m_begin_of_bit.begin(), m_begin_of_bit.end() - 1);
  for (std::uint32_t k = 0; k < m_columns.size(); ++k) {
    for (const COPY& copy : m_columns[k].copies) {
      m_column_of_bit[next[copy.followed]++] = k;
    }
    if (m_columns[k].constant != 0) {
      mark(k);
    }
  }
}

void WAVE_TRANSLATOR::mark(std::uint32_t column) {
  if (!m_columns[column].is_marked) {
    m_columns[column].is_marked = true;
    m_marked_columns.push_back(column);
  }
}

void WAVE_TRANSLATOR::translate(WAVE_WRITER& writer) {
  for (const std::uint32_t bit : m_reader.changed()) {
    for (std::uint32_t k = m_begin_of_bit[bit]; k < m_begin_of_bit[bit + 1]; ++k) {
      mark(m_column_of_bit[k]);
    }
  }
  for (const std::uint32_t column : m_marked_columns) {
    m_columns[column].is_marked = false;
    settle_column(m_columns[column], writer);
  }
  m_marked_columns.clear();
  for (const std::uint32_t machine : m_marked_machines) {
    m_machines[machine].is_marked = false;
    decode(m_machines[machine], writer);
  }
  m_marked_machines.clear();
}

// The value of the copies: that of the known ones, if they agree. Only a single
// copy can give z.
void WAVE_TRANSLATOR::settle_column(COLUMN& column, WAVE_WRITER& writer) {
  char value = column.constant == 0 ? 'x' : column.constant;
  bool disagrees = false;
  for (const COPY& copy : column.copies) {
    const char now = m_reader.value(copy.followed);
    const char turned = copy.inverse ? inverse_of(now) : now;
    if (is_known(turned) && is_known(value) && turned != value) {
      disagrees = true;
    } else if (is_known(turned) || column.copies.size() == 1) {
      value = is_known(turned) || column.constant == 0 ? turned : value;
    }
  }
  if (disagrees && !column.disagrees) {
    note(m_counts.disagreement, column.name);
  }
  column.disagrees = disagrees;
  set(column, disagrees ? 'x' : value, writer);
  if (column.machine != NO_BIT && !m_machines[column.machine].is_marked) {
    m_machines[column.machine].is_marked = true;
    m_marked_machines.push_back(column.machine);
  }
}

void WAVE_TRANSLATOR::decode(MACHINE& machine, WAVE_WRITER& writer) {
  m_code.clear();
  bool all_known = true;
  for (const std::uint32_t column : machine.known) {
    m_code += m_columns[column].value;
    all_known = all_known && is_known(m_columns[column].value);
  }
  const std::string* code = all_known ? machine.codes.reference_code(m_code) : nullptr;
  const bool is_unknown = all_known && code == nullptr;
  if (is_unknown && !machine.was_unknown) {
    note(m_counts.unknown_code, machine.name);
  }
  machine.was_unknown = is_unknown;
  for (std::size_t k = 0; k < machine.reference.size(); ++k) {
    set(m_columns[machine.reference[k]], code == nullptr ? 'x' : (*code)[k], writer);
  }
}

void WAVE_TRANSLATOR::set(COLUMN& column, char value, WAVE_WRITER& writer) {
  column.value = value;
  for (const SHOWN& shown : column.shown) {
    writer.set(shown.bit, shown.inverse ? inverse_of(value) : value);
  }
}

void WAVE_TRANSLATOR::note(WAVE_EVENT& event, std::string_view name) const {
  if (event.count++ == 0) {
    event.name = name;
    event.time = m_reader.time();
  }
}

}  // namespace kptdb
