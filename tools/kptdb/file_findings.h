// The faults in the text of a database file, which are found while it is loaded.
//
// Ownership: owns its findings.
#ifndef KPTDB_FILE_FINDINGS_H
#define KPTDB_FILE_FINDINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
  const std::vector<FINDING>& all() const { return m_findings; }
  /// The line of the register with that id; 1 when there is none.
  std::size_t line_of(KPT_SET_ENUM side, long id) const;
  /// The lines of the maps, in their order.
  const std::vector<std::size_t>& map_lines() const { return m_map_lines; }

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

  std::vector<FINDING> m_findings;
  REGISTER_LINES m_lines;
  std::vector<std::size_t> m_map_lines;
  NAME_TABLE m_names;
  std::string m_name;
};

}  // namespace kptdb

#endif
