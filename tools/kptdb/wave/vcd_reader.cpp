#include "vcd_reader.h"

#include "../outcome.h"
#include "../text.h"

namespace kptdb {

namespace {

constexpr std::size_t FIRST_BUFFER = 1U << 18;
constexpr std::size_t LONGEST_TOKEN = 1U << 26;
constexpr std::uint32_t NUMBERED_CODE = 4;  // longer codes are found by their text

bool is_blank(char c) { return static_cast<unsigned char>(c) <= ' '; }

// The value of a character of a dump: '0', '1', 'x', 'z', or 0 for none. VHDL
// simulators also write their weak and unknown values.
constexpr char value_of(char c) {
  switch (c) {
    case '0':
    case 'l':
    case 'L':
      return '0';
    case '1':
    case 'h':
    case 'H':
      return '1';
    case 'z':
    case 'Z':
      return 'z';
    case 'x':
    case 'X':
    case 'u':
    case 'U':
    case 'w':
    case 'W':
    case '-':
      return 'x';
    default:
      return 0;
  }
}

// A code as a number that no other code has; NO_BIT for a code that is too long, and for no code.
std::uint32_t number_of(std::string_view code) {
  if (code.size() > NUMBERED_CODE) {
    return NO_BIT;
  }
  std::uint32_t number = 0;
  for (std::size_t k = code.size(); k-- > 0;) {
    if (code[k] < '!' || code[k] > '~') {
      return NO_BIT;
    }
    number = number * 94 + (static_cast<unsigned char>(code[k]) - 33U) + 1;
  }
  return number;
}

}  // namespace

VCD_READER::VCD_READER(const std::string& path) : m_source(path), m_buffer(FIRST_BUFFER), m_scopes(1) {
  read_header();
  index_codes();
}

void VCD_READER::fail(const std::string& reason) const {
  throw FAILURE(EXIT_UNREADABLE, path() + ":" + std::to_string(m_line) + ": " + reason);
}

// Moves what is not read yet to the beginning of the buffer. False at the end of the file.
bool VCD_READER::refill() {
  const std::size_t kept = m_end - m_at;
  std::copy(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_at), m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end),
            m_buffer.begin());
  m_at = 0;
  m_end = kept;
  if (m_end == m_buffer.size()) {
    if (m_end >= LONGEST_TOKEN) {
      fail("a word is longer than " + std::to_string(LONGEST_TOKEN) + " bytes");
    }
    m_buffer.resize(2 * m_buffer.size());
  }
  const std::size_t got = m_source.read(m_buffer.data() + m_end, m_buffer.size() - m_end);
  m_end += got;
  m_bytes += got;
  return got > 0;
}

// The next word, which is valid until the word after it; empty at the end.
std::string_view VCD_READER::token() {
  for (;; ++m_at) {
    if (m_at == m_end && !refill()) {
      return {};
    }
    if (!is_blank(m_buffer[m_at])) {
      break;
    }
    m_line += m_buffer[m_at] == '\n' ? 1U : 0U;
  }
  std::size_t size = 0;
  while (m_at + size < m_end ? !is_blank(m_buffer[m_at + size]) : refill()) {
    size += m_at + size < m_end && !is_blank(m_buffer[m_at + size]) ? 1U : 0U;
  }
  const std::string_view word(m_buffer.data() + m_at, size);
  m_at += size;
  return word;
}

std::string_view VCD_READER::token_of(const char* what) {
  const std::string_view word = token();
  if (word.empty()) {
    fail(std::string("the file ends within ") + what);
  }
  return word;
}

std::uint32_t VCD_READER::follow(std::uint32_t signal, std::uint32_t bit) {
  SIGNAL& followed = m_signals[signal];
  const std::uint32_t from_right = followed.width - 1 - bit;
  for (std::uint32_t k = followed.first_followed; k != NO_BIT; k = m_follow[k].next) {
    if (m_follow[k].from_right == from_right) {
      return k;
    }
  }
  m_follow.push_back({from_right, followed.first_followed});
  m_values.push_back('x');
  m_before.push_back(0);
  followed.first_followed = static_cast<std::uint32_t>(m_values.size() - 1);
  return followed.first_followed;
}

bool VCD_READER::next_step() {
  for (const std::uint32_t bit : m_touched) {
    m_before[bit] = 0;
  }
  m_touched.clear();
  m_changed.clear();
  for (std::string_view word = token(); !word.empty(); word = token()) {
    if (word.front() != '#') {
      read_change(word);
    } else if (begins_later_time(word.substr(1))) {
      return end_step();
    }
  }
  return m_is_open && end_step();
}

bool VCD_READER::end_step() {
  for (const std::uint32_t bit : m_touched) {
    if (m_before[bit] != m_values[bit]) {
      m_changed.push_back(bit);
    }
  }
  m_step_time = m_time;
  m_is_open = m_next_time > m_time;
  m_time = m_next_time;
  return true;
}

// Whether a later time begins, because a time may be given twice.
bool VCD_READER::begins_later_time(std::string_view digits) {
  std::uint64_t time = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9' || time > (~std::uint64_t{0} - 9) / 10) {
      fail("no time: #" + printable(digits));
    }
    time = 10 * time + static_cast<std::uint64_t>(c - '0');
  }
  if (digits.empty()) {
    fail("# without a time");
  }
  if (time < m_time) {
    fail("time runs back from " + std::to_string(m_time) + " to " + std::to_string(time));
  }
  m_next_time = time;
  if (m_is_open) {
    return time > m_time;
  }
  m_time = time;
  m_is_open = true;
  return false;
}

void VCD_READER::read_change(std::string_view word) {
  const char kind = word.front();
  if (value_of(kind) != 0) {
    m_is_open = true;
    change(word.substr(0, 1), signal_of(word.substr(1)));
  } else if (kind == 'b' || kind == 'B') {
    m_is_open = true;
    m_digits = word.substr(1);
    change(m_digits, signal_of(token_of("a value")));
  } else if (kind == 'r' || kind == 'R' || kind == 's' || kind == 'S') {
    signal_of(token_of("a value"));
  } else if (kind == '$') {
    read_keyword(word);
  } else if (kind == 'p') {
    fail("this is an extended dump of ports, not a value-change dump");
  } else {
    fail("no value: " + printable(word.substr(0, 40)));
  }
}

// Between $dumpoff and $dumpon the values are x; the dump itself says so.
void VCD_READER::read_keyword(std::string_view keyword) {
  if (keyword == "$comment") {
    skip_to_end();
  } else if (keyword != "$dumpvars" && keyword != "$dumpall" && keyword != "$dumpon" && keyword != "$dumpoff" &&
             keyword != "$end") {
    fail("no keyword between values: " + printable(keyword.substr(0, 40)));
  }
}

// A value that is shorter than its signal is extended to the left by its first
// bit: x and z are repeated, 0 and 1 are extended by 0.
void VCD_READER::change(std::string_view digits, std::uint32_t signal) {
  const SIGNAL& changed = m_signals[signal];
  if (digits.empty() || (digits.size() > changed.width && !changed.is_number)) {
    fail("a value of " + std::to_string(digits.size()) + " bits for a signal of " + std::to_string(changed.width));
  }
  for (const char c : digits) {
    if (value_of(c) == 0) {
      fail("no bit: " + printable(digits.substr(0, 40)));
    }
  }
  const char first = value_of(digits.front());
  const char extension = first == '1' ? '0' : first;
  for (std::uint32_t k = changed.first_followed; k != NO_BIT; k = m_follow[k].next) {
    const std::size_t from_right = m_follow[k].from_right;
    set_followed(k, from_right < digits.size() ? value_of(digits[digits.size() - 1 - from_right]) : extension);
  }
}

void VCD_READER::set_followed(std::uint32_t followed_bit, char value) {
  if (m_values[followed_bit] == value) {
    return;
  }
  if (m_before[followed_bit] == 0) {
    m_before[followed_bit] = m_values[followed_bit];
    m_touched.push_back(followed_bit);
  }
  m_values[followed_bit] = value;
}

std::uint32_t VCD_READER::signal_of(std::string_view code) const {
  const std::uint32_t number = number_of(code);
  if (number < m_signal_of_number.size() && m_signal_of_number[number] != NO_BIT) {
    return m_signal_of_number[number];
  }
  const auto found = m_signal_of_code.find(code);
  if (found == m_signal_of_code.end()) {
    fail(code.empty() ? "a value without an identifier"
                      : "no variable has the identifier " + printable(code.substr(0, 40)));
  }
  return found->second;
}

// Simulators count their codes up, so a table of numbers is enough for nearly all.
void VCD_READER::index_codes() {
  const std::size_t most = 4 * m_signals.size() + 4096;
  for (const auto& [code, signal] : m_signal_of_code) {
    const std::uint32_t number = number_of(code);
    if (number < most) {
      m_signal_of_number.resize(std::max<std::size_t>(m_signal_of_number.size(), number + 1U), NO_BIT);
      m_signal_of_number[number] = signal;
    }
  }
}

}  // namespace kptdb
