// A database file as its text has it: what stands on which line, also what a loaded database no
// longer knows, like two registers of one id.
//
// Ownership: an outline owns its texts. It is made from files that the library has parsed, so it
// need not tell good from bad syntax; a file in an encoding that does not contain ASCII gives an
// outline without elements.
#ifndef KPTDB_OUTLINE_H
#define KPTDB_OUTLINE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/kpt/kpt.h"

namespace kptdb {

struct OUTLINE {
  struct KEY_POINT {
    std::size_t line = 0;
    KPT_SET_ENUM side = KPT_REFERENCE_SET;
    std::string id;
    std::string type;
    std::optional<std::string> name, entity, reg_type;  // as written, references included
    /// Whether a load makes a register of it.
    bool is_read() const { return type == "register" && entity.has_value() == reg_type.has_value(); }
  };
  struct ENTRY {
    std::size_t line;
    KPT_SET_ENUM side;
    std::string id;
  };
  struct TABLE {
    std::size_t line = 0;
    std::string states, r_columns, t_columns;  // as claimed
    std::size_t states_listed = 0;
    std::size_t values_listed = 0;
  };
  struct MAP {
    std::size_t line = 0;
    std::string elim_type;
    std::vector<ENTRY> entries;
    std::optional<TABLE> table;
  };
  struct ELEMENT {
    std::size_t line;
    std::string name;
  };

  std::string root;
  bool has_register_set = false;
  std::size_t end_of_maps = 0;  // the line on which the first transformations end
  std::vector<KEY_POINT> key_points;
  std::vector<MAP> maps;
  std::vector<ELEMENT> unexpected;
};

OUTLINE outline_of(const std::string& text);

/// What the state tables of a file claim to hold, by the numbers that the library goes by.
struct TABLE_CLAIMS {
  std::uint64_t entries = 0;
  std::size_t line_of_largest = 1;
};
TABLE_CLAIMS table_claims(std::string_view text);

}  // namespace kptdb

#endif
