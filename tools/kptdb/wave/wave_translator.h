// Turns the values of a transformed netlist into those of the reference netlist.
//
// A column is one value of a fact. Copies in the dump give the value, and bits of
// the output show it. The columns of a state machine's reference side have no
// copies; its table gives their values.
//
// Ownership: facts, reader, names and writer outlive the translator.
#ifndef KPTDB_WAVE_TRANSLATOR_H
#define KPTDB_WAVE_TRANSLATOR_H

#include <map>
#include <string>
#include <vector>

#include "../facts.h"
#include "column_codes.h"
#include "vcd_names.h"
#include "vcd_reader.h"
#include "wave_writer.h"

namespace kptdb {

/// A problem, how often it occurred, and where and when first.
struct WAVE_EVENT {
  std::size_t count = 0;
  std::string name;
  std::uint64_t time = 0;
};

struct WAVE_COUNTS {
  std::size_t followed = 0;  // reference registers whose value the dump has
  std::size_t constant = 0;
  std::size_t decoded = 0;  // bits of state machines
  std::size_t no_successor = 0;
  std::size_t not_in_dump = 0;
  std::size_t ambiguous = 0;  // whose name stands for two signals of the dump
  std::size_t written = 0;
  WAVE_EVENT disagreement;  // replicas that had two values at the end of a step
  WAVE_EVENT unknown_code;
};

class WAVE_TRANSLATOR {
 public:
  WAVE_TRANSLATOR(const FACTS& facts, VCD_READER& reader, const VCD_NAMES& names, char divider);

  /// Plans the registers whose names match; also those of unknown value if wanted.
  std::vector<std::string_view> plan(const std::string& only, bool with_unknown);
  /// Call it after every step of the reader, and before the first step to write constants.
  void translate(WAVE_WRITER& writer);
  const WAVE_COUNTS& counts() const { return m_counts; }
  /// The number of written bits.
  std::size_t bits() const { return m_bits.size(); }

 private:
  struct COPY {
    std::uint32_t followed;
    bool inverse;
  };
  struct SHOWN {
    std::uint32_t bit;
    bool inverse;
  };
  struct COLUMN {
    std::vector<COPY> copies;
    std::vector<SHOWN> shown;
    std::uint32_t machine = NO_BIT;
    char constant = 0;
    char value = 'x';
    bool is_marked = false;
    bool disagrees = false;
    std::string_view name;
  };
  struct MACHINE {
    std::vector<std::uint32_t> known;      // columns with copies
    std::vector<std::uint32_t> reference;  // columns to decode
    COLUMN_CODES codes;
    std::string_view name;
    bool is_marked = false;
    bool was_unknown = false;
  };

  std::uint32_t column_for(const SUBJECT& subject);
  std::uint32_t plain_column(std::uint32_t fact);
  std::uint32_t machine_columns(std::uint32_t fact);
  VCD_FINDING add_copy(COLUMN& column, const FACT_MEMBER& member);
  void show(const SUBJECT& subject, std::uint32_t column, std::vector<std::string_view>& names);
  void finish_plan();
  void mark(std::uint32_t column);
  void settle_column(COLUMN& column, WAVE_WRITER& writer);
  void decode(MACHINE& machine, WAVE_WRITER& writer);
  void set(COLUMN& column, char value, WAVE_WRITER& writer);
  void note(WAVE_EVENT& event, std::string_view name) const;

  const FACTS& m_facts;
  VCD_READER& m_reader;
  const VCD_NAMES& m_names;
  char m_divider;
  std::vector<COLUMN> m_columns;
  std::vector<MACHINE> m_machines;
  std::vector<std::uint32_t> m_first_column;  // of a fact; NO_BIT while there is none
  std::vector<VCD_FINDING> m_finding;         // of a fact: the best of its copies
  std::vector<std::uint32_t> m_begin_of_bit;  // by followed bit, into m_column_of_bit
  std::vector<std::uint32_t> m_column_of_bit;
  std::vector<std::uint32_t> m_marked_columns;
  std::vector<std::uint32_t> m_marked_machines;
  std::vector<std::string> m_bits;  // the names of what is written
  std::string m_code;
  WAVE_COUNTS m_counts;
};

}  // namespace kptdb

#endif
