// A JSON value as text without line breaks, written part by part: for what a command
// writes for each register of a netlist.
//
// Ownership: owns its text.
#ifndef KPTDB_JSON_LINE_H
#define KPTDB_JSON_LINE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kptdb {

class JSON_LINE {
 public:
  /// What becomes of bytes that are not UTF-8: they are replaced, or an exception
  /// of the JSON library tells of them.
  enum INVALID { REPLACED, REFUSED };

  explicit JSON_LINE(INVALID invalid = REPLACED) : m_invalid(invalid) {}

  void clear();
  const std::string& text() const { return m_text; }
  /// Ends the value and its line.
  void end_line() { m_text += '\n'; }

  // The caller closes what it opens, and gives each value of an object a key.
  void open_object() { open('{'); }
  void close_object() { close('}'); }
  void open_list() { open('['); }
  void close_list() { close(']'); }
  /// `name` needs no escapes.
  void key(std::string_view name);
  void add(std::string_view text);
  /// Any name and its text.
  void add_named(std::string_view name, std::string_view text);
  void add(const char* text) { add(std::string_view(text)); }
  void add(long number);
  void add(bool value) { put(value ? "true" : "false"); }
  void add(std::nullptr_t) { put("null"); }
  template <class VALUE>
  void add(std::string_view name, const VALUE& value) {
    key(name);
    add(value);
  }

 private:
  void open(char bracket);
  void close(char bracket);
  void separate();
  void put(std::string_view value);
  void put_escaped(std::string_view text);

  INVALID m_invalid;
  std::string m_text;
  bool m_has_before = false;  // a value before the next one in the same list or object
};

}  // namespace kptdb

#endif
