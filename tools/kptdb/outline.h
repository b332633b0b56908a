// The content of a database file with its lines, also what a loaded database does not show:
// two registers of one id, or the line of a map. A load passes it the elements one after
// the other. It keeps the few facts that explain a refusal. A derived class can keep more.
//
// Ownership: owns its texts. The arguments of a hook are valid only during the call.
#ifndef KPTDB_OUTLINE_H
#define KPTDB_OUTLINE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "db/kpt/kpt.h"

namespace kptdb {

class OUTLINE : public KPT_FILE_VISITOR {
 public:
  struct KEY_POINT {
    std::size_t line = 0;
    KPT_SET_ENUM side = KPT_REFERENCE_SET;
    std::string id, type;
    std::optional<std::string> name, entity, reg_type;
    /// Whether a load makes a register from it.
    bool is_read() const { return type == "register" && entity.has_value() == reg_type.has_value(); }
  };
  struct TABLE {
    std::size_t line = 0;
    std::string states, r_columns, t_columns;  // as claimed
    std::size_t states_listed = 0;
    std::size_t values_listed = 0;
  };

  /// Whether the file is not a database. A database whose root has another name is read
  /// like any other. A file is something else when it also has no set of registers.
  bool is_something_else() const { return !m_root.empty() && m_root != "kpt_db" && !m_has_register_set; }
  /// The line to report when an element follows the transformations: that of an
  /// unexpected element, because every element that is not a set of registers ends them.
  std::size_t line_behind_transformations() const;
  /// The line of the table that claims the most entries.
  std::size_t line_of_largest_table() const { return m_line_of_largest_table; }

  void start(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line) final;
  void end(std::size_t line) final;
  void text(std::string_view piece) final;
  void start_reference() final { ++m_references; }
  void end_reference() final { --m_references; }

  /// Called before a load whose input can be read only once, so that no second reading can tell more.
  virtual void on_read_once() {}

 protected:
  /// An element where it does not belong.
  virtual void on_unexpected(std::size_t line, std::string_view name);
  virtual void on_key_point(const KEY_POINT& key_point);
  virtual void on_map(std::size_t line, std::string_view elim_type);
  /// A register that a map lists.
  virtual void on_entry(std::size_t line, KPT_SET_ENUM side, std::string_view id);
  virtual void on_table(const TABLE& table);

 private:
  void expect(bool expected, std::string_view name, std::size_t line);
  void start_part(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);
  void start_key_point(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);
  void start_field(std::string_view name);
  void start_map(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);
  void start_part_of_map(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);
  void start_table(const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);
  void start_below(std::string_view name, const KPT_ELEMENT_ATTRIBUTES& attributes, std::size_t line);

  std::string m_root;
  bool m_has_register_set = false;
  std::size_t m_end_of_maps = 0;         // the line on which the first transformations end
  std::size_t m_line_of_unexpected = 0;  // the first such line
  std::size_t m_line_of_largest_table = 1;
  std::uint64_t m_largest_table = 0;

  int m_depth = 0;
  int m_references = 0;  // open
  bool m_in_registers = false;
  bool m_in_maps = false;
  bool m_has_table = false;  // the map
  bool m_in_table = false;
  KPT_SET_ENUM m_side = KPT_REFERENCE_SET;
  KEY_POINT m_key_point;
  TABLE m_table;
  std::string* m_field = nullptr;  // the text that is being read
};

}  // namespace kptdb

#endif
