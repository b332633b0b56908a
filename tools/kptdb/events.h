// One event of an event file: what an optimisation pass did to a register. docs/events.md
// describes the format.
//
// Ownership: an event owns its texts.
#ifndef KPTDB_EVENTS_H
#define KPTDB_EVENTS_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "db/kpt/kpt.h"

namespace kptdb {

/// A signal, or a block instance if `instance` is set.
struct EVENT_REGISTER {
  struct INSTANCE {
    std::string entity;
    std::string type;
  };
  std::string name;
  std::optional<INSTANCE> instance;
};

struct ASSOCIATE {
  EVENT_REGISTER reference;
  EVENT_REGISTER transformed;
};

/// Character k of a code is the bit of the k-th name of its side.
struct ASSOCIATE_FSM {
  std::vector<std::string> reference;
  std::vector<std::string> transformed;
  std::vector<std::pair<std::string, std::string>> states;
};

struct REPLICATE {
  std::string name;
  std::string replica;
};

struct MERGE {
  std::string kept;
  std::string merged;
};

struct RETIME_INVERTER {
  std::string name;
};

/// `value`: the value of the transformed register itself, instead of a reason.
struct ELIMINATE {
  std::string name;
  KPT_ELIM_ENUM reason;
  std::optional<bool> value;
};

using ATTRIBUTES = std::vector<std::pair<std::string, std::string>>;

/// One index of one side of a map.
struct EVENT_GROUPS {
  using GROUP = std::vector<EVENT_REGISTER>;
  GROUP same;
  GROUP inverse;
};

/// A map of any shape. `as_it_is`: it comes from another database, and nothing is checked.
struct MAP {
  struct TABLE {
    std::size_t reference = 0;  // columns
    std::size_t transformed = 0;
    std::vector<std::pair<std::string, std::string>> states;
  };
  std::vector<EVENT_GROUPS> reference;
  std::vector<EVENT_GROUPS> transformed;
  std::optional<TABLE> table;
  KPT_ELIM_ENUM status = KPT_NOT_ELIMINATED;
  ATTRIBUTES attributes;
  bool as_it_is = false;
};

/// A register that exists, whether or not a map lists it, and its attributes.
struct KNOWN_REGISTER {
  KPT_SET_ENUM side;
  EVENT_REGISTER reg;
  ATTRIBUTES attributes;
};

/// The last line of a file: the number of events before it.
struct END {
  std::uint64_t events;
};

struct EVENT {
  std::variant<ASSOCIATE, ASSOCIATE_FSM, REPLICATE, MERGE, RETIME_INVERTER, ELIMINATE, MAP, KNOWN_REGISTER, END> what;
  // Empty when there is none. They become attributes of the map that the event makes or changes.
  std::string pass;
  std::string note;
};

/// A line that is not an event. The text says why.
class EVENT_ERROR : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

EVENT parse_event(std::string_view line);

/// A short text of the event, on one line.
std::string describe(const EVENT& event);
std::string describe(const EVENT_REGISTER& reg);

}  // namespace kptdb

#endif
