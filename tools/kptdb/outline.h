// A database file as its text has it: what stands on which line, also what a loaded database no
// longer knows, like two registers of one id.
//
// Ownership: an outline owns its texts. It is made from files that the library has parsed, so it
// need not tell good from bad syntax; a file in an encoding that does not contain ASCII gives an
// outline without elements.
#ifndef KPTDB_OUTLINE_H
#define KPTDB_OUTLINE_H

#include <optional>
#include <string>
#include <vector>

#include "db/kpt/kpt_types.h"

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

  std::vector<KEY_POINT> key_points;
  std::vector<MAP> maps;
  std::vector<ELEMENT> unexpected;
};

OUTLINE outline_of(const std::string& text);

}  // namespace kptdb

#endif
