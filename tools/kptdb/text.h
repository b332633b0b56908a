// Texts for people: names that are safe to show, tables, close names and patterns.
//
// Ownership: the caller owns everything.
#ifndef KPTDB_TEXT_H
#define KPTDB_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace kptdb {

/// The text with control characters and bytes beyond ASCII as \xNN, so that a
/// name from a file cannot control the terminal.
std::string printable(std::string_view text);

/// Whether the whole of `text` matches `pattern`, in which "*" matches any text and "?"
/// any character. A bracket matches itself, because register names have many brackets.
bool matches(std::string_view pattern, std::string_view text);

/// The number of single-character edits from one text to the other, but at most `limit`.
std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t limit);

/// "1 register", "2 registers".
std::string counted(std::size_t count, std::string_view noun);

/// Columns, each as wide as its widest cell.
class TEXT_TABLE {
 public:
  explicit TEXT_TABLE(std::vector<std::string> header) : m_rows{std::move(header)} {}
  void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }
  bool is_empty() const { return m_rows.size() == 1; }
  /// Every line begins with `indent` and ends with a line end.
  std::string text(std::string_view indent = "") const;

 private:
  std::vector<std::size_t> widths() const;
  std::vector<std::vector<std::string>> m_rows;
};

}  // namespace kptdb

#endif
