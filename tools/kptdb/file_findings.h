// The faults in the text of a database file, which are found while it is loaded.
//
// Two registers of one name are the only fault that takes the names of all registers to find. The database
// has fewer registers than the file then, so names are kept only when that is known, or when the
// input cannot be read again.
//
// Ownership: owns its findings.
#ifndef KPTDB_FILE_FINDINGS_H
#define KPTDB_FILE_FINDINGS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "name_table.h"
#include "outline.h"
#include "register_lines.h"

namespace kptdb {

struct FINDING {
  std::size_t line;
  bool is_error;
  std::string_view code;
  std::string text;
};

class FILE_FINDINGS : public OUTLINE {
 public:
  enum NAMES : bool { WITHOUT_NAMES, WITH_NAMES };
  explicit FILE_FINDINGS(NAMES names = WITHOUT_NAMES) {
    if (names == WITH_NAMES) {
      m_names.emplace();
    }
  }

  /// Whether a register of the file took the place of an earlier one, and no finding says which: read the
  /// file again with names.
  bool misses_names(const DATABASE& db) const;
  const std::vector<FINDING>& all() const { return m_findings; }
  /// The line of the register with that id; 1 when there is none.
  std::size_t line_of(KPT_SET_ENUM side, long id) const;
  /// The lines of the maps, in their order.
  const std::vector<std::size_t>& map_lines() const { return m_map_lines; }
  void on_read_once() override { m_names.emplace(); }

 protected:
  void on_unexpected(std::size_t line, std::string_view name) override;
  void on_key_point(const KEY_POINT& key_point) override;
  void on_map(std::size_t line, std::string_view elim_type) override;
  void on_entry(std::size_t line, KPT_SET_ENUM side, std::string_view id) override;
  void on_table(const TABLE& table) override;

 private:
  void error(std::size_t line, std::string_view code, std::string text);
  void warning(std::size_t line, std::string_view code, std::string text);
  void check_id(const KEY_POINT& key_point);
  void check_name(const KEY_POINT& key_point, NAME_TABLE& names);

  std::vector<FINDING> m_findings;
  REGISTER_LINES m_lines;
  std::vector<std::size_t> m_map_lines;
  std::array<std::size_t, 2> m_read{};  // the registers that were read, by side
  std::optional<NAME_TABLE> m_names;
  std::string m_name;
};

}  // namespace kptdb

#endif
