#include "db/kpt/files/kpt_state_values.h"

#include <algorithm>

#include "h/gen_sys.h"

namespace {

// The numbers of a file are taken modulo 65,536.
bool is_one(int number) { return static_cast<unsigned short>(number) == 1; }

bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Walks a text from its end to its beginning. At each position it knows the
// number with which the text from there begins: blanks, a sign, digits.
class NUMBERS {
 public:
  explicit NUMBERS(const KPT_STRING& text) : m_text(text), m_at(text.size()) { become(m_at, '+', m_at); }

  /// The number of the text from `from` to `to`. Each call begins at or before the previous call.
  int between(std::size_t from, std::size_t to) {
    while (m_at > from) {
      step();
    }
    const std::size_t end = std::min(m_digits_end, to);
    if (m_digits >= end) {
      return 0;
    }
    // A number with more digits than an int is cut, and still has more.
    constexpr std::size_t LONGER_THAN_AN_INT = 12;
    KPT_STRING number(1, m_sign);
    number.append(m_text, m_digits, std::min(end - m_digits, LONGER_THAN_AN_INT));
    return gen_atoi(number);
  }

 private:
  void step() {
    const std::size_t behind = m_at--;
    const char c = m_text[m_at];
    const bool before_digits = behind < m_text.size() && is_digit(m_text[behind]);
    if (is_digit(c)) {
      m_run_end = before_digits ? m_run_end : behind;
      m_run = before_digits && c == '0' ? m_run : m_at;
      become(m_run, '+', m_run_end);
    } else if (c == '+' || c == '-') {
      become(before_digits ? m_run : behind, c, before_digits ? m_run_end : behind);
    } else if (!is_blank(c)) {
      become(m_at, '+', m_at);
    }
  }
  void become(std::size_t digits, char sign, std::size_t digits_end) {
    m_digits = digits;
    m_sign = sign;
    m_digits_end = digits_end;
  }

  const KPT_STRING& m_text;
  std::size_t m_at;
  std::size_t m_run = 0;      // the digits at the present place, without leading zeros,
  std::size_t m_run_end = 0;  // to here
  std::size_t m_digits = 0;   // those of the number
  std::size_t m_digits_end = 0;
  char m_sign = '+';
};

}  // namespace

void KPT_STATE_VALUES::start(unsigned short column) {
  m_open.push_back(m_nest.size());
  m_nest.push_back({m_values.size(), m_text.size(), 0});
  m_values.push_back({column, false});
}

void KPT_STATE_VALUES::text(std::string_view piece) {
  if (!m_open.empty()) {
    m_text += piece;
  }
}

void KPT_STATE_VALUES::end() {
  m_nest[m_open.back()].end = m_text.size();
  m_open.pop_back();
  if (!m_open.empty()) {
    return;
  }
  if (m_nest.size() == 1) {
    m_values.back().entry = is_one(gen_atoi(m_text));
  } else {
    read_nest();
  }
  m_nest.clear();
  m_text.clear();
}

// From the value that began last to the value that began first.
void KPT_STATE_VALUES::read_nest() {
  NUMBERS numbers(m_text);
  std::for_each(m_nest.rbegin(), m_nest.rend(), [&](const NESTED& value) {
    m_values[value.value].entry = is_one(numbers.between(value.text, value.end));
  });
}

void KPT_STATE_VALUES::clear() {
  m_values.clear();
  m_nest.clear();
  m_open.clear();
  m_text.clear();
}
