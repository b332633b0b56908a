// One event of an event file: what an optimisation pass did to a register. docs/events.md
// describes the format.
//
// Ownership: an event owns its texts.
#ifndef KPTDB_EVENTS_H
#define KPTDB_EVENTS_H

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "db/kpt/kpt.h"

namespace kptdb {

/// A signal, or with `instance` a block instance.
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

struct ELIMINATE {
  std::string name;
  KPT_ELIM_ENUM reason;
};

using EVENT = std::variant<ASSOCIATE, ASSOCIATE_FSM, REPLICATE, MERGE, RETIME_INVERTER, ELIMINATE>;

/// A line that is no event. The text says why.
class EVENT_ERROR : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

EVENT parse_event(std::string_view line);

/// The event in a few words, on one line.
std::string describe(const EVENT& event);
std::string describe(const EVENT_REGISTER& reg);

}  // namespace kptdb

#endif
