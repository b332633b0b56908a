// Counts the lines of a text that is read from beginning to end. A line ends with
// a line feed, a carriage return, or both.
//
// Ownership: none.
#ifndef KPT_LINE_COUNTER_H
#define KPT_LINE_COUNTER_H

#include <cstddef>
#include <string_view>

class KPT_LINE_COUNTER {
 public:
  /// The number of the line after the text that was passed, from 1.
  std::size_t line() const { return m_line; }

  // Most texts are the short ones between two tags.
  void pass(std::string_view text) {
    std::size_t returns = 0;
    for (const char c : text) {
      m_line += c == '\n' ? 1U : 0U;
      returns += c == '\r' ? 1U : 0U;
    }
    if (returns != 0 || m_has_passed_return) {
      pass_returns(text);
    }
  }

 private:
  void pass_returns(std::string_view text) {
    if (text.empty()) {
      return;
    }
    if (m_has_passed_return && text.front() == '\n') {
      --m_line;
    }
    for (std::size_t at = text.find('\r'); at != std::string_view::npos; at = text.find('\r', at + 1)) {
      m_line += at + 1 == text.size() || text[at + 1] != '\n' ? 1U : 0U;
    }
    m_has_passed_return = text.back() == '\r';
  }

  std::size_t m_line = 1;
  bool m_has_passed_return = false;
};

#endif
