// Writes a value-change dump of the reference netlist.
//
// Ownership: the file outlives the writer.
#ifndef KPTDB_WAVE_WRITER_H
#define KPTDB_WAVE_WRITER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "../files.h"

namespace kptdb {

class WAVE_WRITER {
 public:
  WAVE_WRITER(RESULT_FILE& out, std::size_t bits);

  /// One name for each bit, in scopes below `scope`; joins vectors. Call it before the first step.
  void write_header(const std::vector<std::string_view>& names, const std::string& scope, const std::string& timescale,
                    char divider);
  /// A new value, '0', '1', 'x' or 'z', written at the end of the step.
  void set(std::uint32_t bit, char value);
  /// Writes all values at the first step, and later the new ones.
  void end_step(std::uint64_t time, bool is_last);
  std::size_t variables() const { return m_variables.size(); }

 private:
  struct VARIABLE {
    std::uint32_t first = 0;  // of m_bits, from the left
    std::uint32_t width = 0;
    bool is_marked = false;
  };
  class SCOPES;

  void write_value(std::uint32_t variable);
  void write(std::string_view text);

  RESULT_FILE& m_out;
  std::string m_text;
  std::vector<char> m_values;
  std::vector<std::uint32_t> m_variable_of;  // of a bit
  std::vector<std::uint32_t> m_bits;
  std::vector<VARIABLE> m_variables;
  std::vector<std::uint32_t> m_marked;
  bool m_has_begun = false;
  std::uint64_t m_last_time = 0;
};

}  // namespace kptdb

#endif
