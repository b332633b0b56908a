// Reads a value-change dump, one time step after the other.
//
// The header is read at once. Then the caller chooses the bits to follow, and every step
// updates their values. Memory depends on the header, and not on the length of the dump.
//
// Ownership: a reader owns its file and all values. Every failure is a FAILURE with file and line.
#ifndef KPTDB_VCD_READER_H
#define KPTDB_VCD_READER_H

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "byte_source.h"

namespace kptdb {

constexpr std::uint32_t NO_BIT = ~std::uint32_t{0};

/// What follows the name of a variable: nothing, one bit of a vector, or a range.
enum VCD_INDEX { NO_INDEX, BIT_INDEX, RANGE_INDEX };

/// A variable: a name of a signal. Several variables may name one signal.
struct VCD_VARIABLE {
  std::string name;  // without the range, and without the mark of an escaped name
  std::uint32_t scope = 0;
  std::uint32_t signal = 0;
  std::int64_t msb = 0;  // of the first bit; greater or less than that of the last one
  std::int64_t lsb = 0;
  VCD_INDEX index = NO_INDEX;
  bool is_escaped = false;
  bool is_integer = false;  // its range is implied
  bool is_number = false;   // real, string or event: it has no bits
};

struct VCD_SCOPE {
  std::string name;  // without the mark of an escaped name
  std::string type;
  std::uint32_t parent = 0;  // the root is its own parent
  bool is_escaped = false;
};

/// Finds texts by views of them.
struct TEXT_HASH {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

class VCD_READER {
 public:
  /// Reads the header.
  explicit VCD_READER(const std::string& path);

  const std::vector<VCD_SCOPE>& scopes() const { return m_scopes; }  // scope 0 is the root, above all
  const std::vector<VCD_VARIABLE>& variables() const { return m_variables; }
  std::uint32_t width_of_signal(std::uint32_t signal) const { return m_signals[signal].width; }
  /// The timescale as the dump gives it, "1 ns"; empty when there is none.
  const std::string& timescale() const { return m_timescale; }

  /// Follows the bit of a signal, counted from its first bit, and returns the number of the followed bit.
  std::uint32_t follow(std::uint32_t signal, std::uint32_t bit);
  std::size_t followed() const { return m_values.size(); }

  /// Reads to the end of the next time with changes; false at the end. `changed`
  /// lists the followed bits whose values have changed.
  bool next_step();
  std::uint64_t time() const { return m_step_time; }
  const std::vector<std::uint32_t>& changed() const { return m_changed; }
  /// '0', '1', 'x' or 'z'.
  char value(std::uint32_t followed_bit) const { return m_values[followed_bit]; }

  /// The last line that was read, from 1.
  std::uint64_t line() const { return m_line; }
  std::uint64_t bytes() const { return m_bytes; }
  const std::string& path() const { return m_source.path(); }

 private:
  struct SIGNAL {
    std::uint32_t width = 0;
    std::uint32_t first_followed = NO_BIT;  // the others by m_follow
    bool is_number = false;
  };
  struct FOLLOWED_BIT {
    std::uint32_t from_right;  // its position in the signal, from 0 for the last bit
    std::uint32_t next;        // the next followed bit of the same signal
  };

  std::string_view token();
  std::string_view token_of(const char* what);
  bool refill();
  [[noreturn]] void fail(const std::string& reason) const;

  void read_header();
  bool read_declaration(std::string_view keyword);
  void skip_to_end();
  std::vector<std::string> words_up_to_end();
  void read_scope();
  void leave_scope();
  void read_variable();
  void read_reference(VCD_VARIABLE& variable, std::uint32_t width, std::vector<std::string> words) const;
  std::uint32_t declare_signal(const std::string& code, std::uint32_t width, bool is_number);
  std::uint32_t signal_of(std::string_view code) const;
  void index_codes();

  bool begins_later_time(std::string_view digits);
  void read_change(std::string_view word);
  void read_keyword(std::string_view keyword);
  void change(std::string_view digits, std::uint32_t signal);
  void set_followed(std::uint32_t followed_bit, char value);
  bool end_step();

  BYTE_SOURCE m_source;
  std::vector<char> m_buffer;
  std::size_t m_at = 0;
  std::size_t m_end = 0;
  std::uint64_t m_line = 1;
  std::uint64_t m_bytes = 0;

  std::vector<VCD_SCOPE> m_scopes;
  std::uint32_t m_scope = 0;
  std::vector<VCD_VARIABLE> m_variables;
  std::vector<SIGNAL> m_signals;
  std::string m_timescale;
  boost::unordered_flat_map<std::string, std::uint32_t, TEXT_HASH, std::equal_to<>> m_signal_of_code;
  std::vector<std::uint32_t> m_signal_of_number;  // for codes that are small numbers, as nearly all are

  std::vector<FOLLOWED_BIT> m_follow;
  std::vector<char> m_values;
  std::vector<char> m_before;  // the values before the step, of touched bits; 0 for the others
  std::vector<std::uint32_t> m_touched;
  std::vector<std::uint32_t> m_changed;
  std::string m_digits;
  std::uint64_t m_time = 0;  // of the values to come
  std::uint64_t m_step_time = 0;
  std::uint64_t m_next_time = 0;
  bool m_is_open = false;  // m_time has begun, and no step has reported it yet
};

}  // namespace kptdb

#endif
