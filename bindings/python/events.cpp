// The events, as methods of a database.
#include <unordered_set>

#include "bindings.h"
#include "errors.h"
#include "handles.h"
#include "keys.h"
#include "state_table.h"
#include "text.h"
#include "tools/kptdb/event_replay.h"
#include "tools/kptdb/events.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

// The pass that reports an event, and a note.
struct ORIGIN {
  std::string pass;
  std::string note;

  bool is_empty() const { return pass.empty() && note.empty(); }
};

ORIGIN origin_of(const py::object& pass, const py::object& note) {
  return {std::string(TEXT(pass, "a pass").view()), std::string(TEXT(note, "a note").view())};
}

// Raises Refused with the library's own line or, when there is none, with a reason that can be seen from outside.
template <class WHAT>
void record(const OWNER& db, const WHAT& what, const ORIGIN& origin) {
  const kptdb::EVENT event{what, origin.pass, origin.note};
  const KPT_KEYPOINTS_DB& handle = db->use();
  std::string reason;
  {
    kptdb::HOST_LINES lines;
    reason = kptdb::record_event(handle, event, lines);
  }
  if (!reason.empty()) {
    raise_refused(reason);
  }
}

kptdb::EVENT_REGISTER event_register(const KPT_REGISTER_NAME& name) {
  kptdb::EVENT_REGISTER reg{std::string(name.name), {}};
  if (!name.is_signal) {
    reg.instance = {std::string(name.entity), std::string(name.register_type)};
  }
  return reg;
}

// Two signals, the common case, without an event: allocates only what it records.
void associate(const OWNER& db, const py::object& reference, const py::object& transformed, const py::object& pass,
               const py::object& note) {
  const ORIGIN origin = origin_of(pass, note);
  const KEY r(reference);
  const KEY t(transformed);
  const bool recorded = origin.is_empty() && r.is_signal() && t.is_signal() &&
                        db->use().associate_registers_signal_to_signal(r.name().name, t.name().name);
  if (!recorded) {
    record(db, kptdb::ASSOCIATE{event_register(r.name()), event_register(t.name())}, origin);
  }
}

std::vector<std::string> signal_names(const py::object& names, const char* side) {
  std::vector<std::string> result;
  std::unordered_set<std::string> seen;
  for (const py::handle name : py::iter(names)) {
    result.push_back(signal_name(name));
    if (!seen.insert(result.back()).second) {
      throw py::value_error(std::string(side) + " names " + result.back() + " twice");
    }
  }
  return result;
}

void associate_fsm(const OWNER& db, const py::object& reference, const py::object& transformed,
                   const py::object& states, const py::object& pass, const py::object& note) {
  kptdb::ASSOCIATE_FSM event{signal_names(reference, "reference"), signal_names(transformed, "transformed"),
                             to_table(states).codes()};
  const auto& [r_code, t_code] = event.states.front();
  if (r_code.size() != event.reference.size() || t_code.size() != event.transformed.size()) {
    throw py::value_error("the table has " + std::to_string(r_code.size()) + " and " + std::to_string(t_code.size()) +
                          " columns for " + std::to_string(event.reference.size()) + " and " +
                          std::to_string(event.transformed.size()) + " registers");
  }
  record(db, event, origin_of(pass, note));
}

// The groups of a map as Python gives them, with the objects that hold their texts.
class GROUPS {
 public:
  explicit GROUPS(const py::object& groups) {
    for (const py::handle group : py::iter(groups)) {
      const py::tuple pair(py::reinterpret_borrow<py::object>(group));
      if (pair.size() != 2) {
        throw py::value_error("an index of a map is a pair of lists: registers with its value, and with its inverse");
      }
      m_side.emplace_back();
      append(m_side.back().same, pair[0]);
      append(m_side.back().inverse, pair[1]);
    }
  }
  const KPT_GROUPS_SIDE& side() const { return m_side; }

 private:
  template <class LIST>
  void append(LIST& list, const py::object& keys) {
    if (PyUnicode_Check(keys.ptr())) {
      throw py::type_error("a group is a list of registers, not a str");
    }
    for (const py::handle key : py::iter(keys)) {
      m_objects.append(key);
      m_keys.push_back(std::make_unique<KEY>(key));
      list.push_back(m_keys.back()->name());
    }
  }

  py::list m_objects;
  std::vector<std::unique_ptr<KEY>> m_keys;
  KPT_GROUPS_SIDE m_side;
};

KPT_ELIM_ENUM status_of(const py::object& constant, bool no_fanout) {
  if (constant.is_none()) {
    return no_fanout ? KPT_NO_FANOUT : KPT_NOT_ELIMINATED;
  }
  const long value = PyLong_Check(constant.ptr()) ? constant.cast<long>() : -1;
  if (no_fanout || (value != 0 && value != 1)) {
    throw py::value_error("a value is 0 or 1, and what has one is not without fanout");
  }
  return value == 1 ? KPT_STUCK_AT_ONE : KPT_STUCK_AT_ZERO;
}

MAP associate_map(const OWNER& db, const py::object& reference, const py::object& transformed, const py::object& states,
                  const py::object& constant, bool no_fanout, const py::object& pass, const py::object& note) {
  const ORIGIN origin = origin_of(pass, note);
  const GROUPS r(reference);
  const GROUPS t(transformed);
  const KPT_ELIM_ENUM status = status_of(constant, no_fanout);
  const std::unique_ptr<TABLE> table = states.is_none() ? nullptr : std::make_unique<TABLE>(to_table(states));
  const KPT_KEYPOINTS_DB& handle = db->use();
  const kptdb::HOST_LINES lines;
  const KPT_REGISTER_TRANSFORMATION map = table ? handle.associate_groups(r.side(), t.side(), table->get(), status)
                                                : handle.associate_groups(r.side(), t.side(), status);
  if (map.is_null()) {
    raise_refused(lines.reason());
  }
  if (!origin.pass.empty()) {
    map.add_attribute("pass", origin.pass);
  }
  if (!origin.note.empty()) {
    map.add_attribute("note", origin.note);
  }
  return seen_from_first(db, map);
}

void replicate(const OWNER& db, const py::object& name, const py::object& replica, const py::object& pass,
               const py::object& note) {
  record(db, kptdb::REPLICATE{signal_name(name), signal_name(replica)}, origin_of(pass, note));
}

void merge(const OWNER& db, const py::object& kept, const py::object& merged, const py::object& pass,
           const py::object& note) {
  record(db, kptdb::MERGE{signal_name(kept), signal_name(merged)}, origin_of(pass, note));
}

void retime_inverter(const OWNER& db, const py::object& name, const py::object& pass, const py::object& note) {
  record(db, kptdb::RETIME_INVERTER{signal_name(name)}, origin_of(pass, note));
}

KPT_ELIM_ENUM reason_of(const py::object& reason) {
  const std::string word(TEXT(reason, "a reason").view());
  const KPT_ELIM_ENUM status = kpt_elim_status(word);
  if (status == KPT_NOT_ELIMINATED) {
    throw py::value_error("a register is eliminated as stuck_at_zero, stuck_at_one or no_fanout, not as " + word);
  }
  return status;
}

void eliminate(const OWNER& db, const py::object& name, const py::object& reason, const py::object& value,
               const py::object& pass, const py::object& note) {
  if (reason.is_none() == value.is_none()) {
    throw py::type_error("a register is eliminated with a reason or with its value");
  }
  kptdb::ELIMINATE event{signal_name(name), KPT_ELIMINATED, std::nullopt};
  if (value.is_none()) {
    event.reason = reason_of(reason);
  } else {
    event.value = status_of(value, false) == KPT_STUCK_AT_ONE;
  }
  record(db, event, origin_of(pass, note));
}

// Not constants, because those would outlive the interpreter.
py::arg_v pass_argument() { return py::arg("pass_") = ""; }
py::arg_v note_argument() { return py::arg("note") = ""; }

void bind_associations(DATABASE_CLASS& database) {
  database
      .def("associate", &associate, py::arg("reference"), py::arg("transformed"), py::kw_only(), pass_argument(),
           note_argument(),
           "associate($self, reference, transformed, *, pass_=\"\", note=\"\")\n--\n\n"
           "A reference register became a transformed register.\n\n"
           "Neither register may exist; otherwise it raises Refused and changes nothing. A register is given by the\n"
           "name of a signal, by a tuple of the name, entity and type of a block instance, or by a Register of any\n"
           "database, which stands for its name.\n\n"
           "Every event takes `pass_`, the pass that caused it, and `note`, a text for people. They become attributes\n"
           "of the map.")
      .def("associate_fsm", &associate_fsm, py::arg("reference"), py::arg("transformed"), py::arg("states"),
           py::kw_only(), pass_argument(), note_argument(),
           "associate_fsm($self, reference, transformed, states, *, pass_=\"\", note=\"\")\n--\n\n"
           "A state machine was re-encoded.\n\n"
           "`reference` and `transformed` list the signals before and after. None of them may exist. `states` is a\n"
           "StateTable, or pairs of codes such as (\"00\", \"100\"): character k is the bit of the k-th name. Raises\n"
           "ValueError when the codes do not fit the registers. Raises Refused, and changes nothing, when a register\n"
           "exists.")
      .def("associate_map", &associate_map, py::arg("reference"), py::arg("transformed"), py::kw_only(),
           py::arg("states") = py::none(), py::arg("constant") = py::none(), py::arg("no_fanout") = false,
           pass_argument(), note_argument(),
           "associate_map($self, reference, transformed, *, states=None, constant=None, no_fanout=False, "
           "pass_=\"\", note=\"\")\n--\n\n"
           "Records a map of any shape. It lists signals and block instances, none of which may exist.\n\n"
           "Each side is a list of indices. Each index is a pair of lists: the registers that hold its value, and\n"
           "those that hold the inverse. With `states` the map is a state machine, and index k is column k. Without\n"
           "`states`, a side has at most one index. `constant` is the value, 0 or 1, of the first reference register.\n"
           "`no_fanout` says that the reference registers drive nothing. Returns the Map. Raises Refused with the\n"
           "library's reason, and then changes nothing.");
}

}  // namespace

void bind_events(DATABASE_CLASS& database) {
  bind_associations(database);
  database
      .def("replicate", &replicate, py::arg("register"), py::arg("replica"), py::kw_only(), pass_argument(),
           note_argument(),
           "replicate($self, register, replica, *, pass_=\"\", note=\"\")\n--\n\n"
           "A transformed register was duplicated. The replica must not exist yet.\n\n"
           "This event, `merge`, `retime_inverter` and `eliminate` name transformed signals, by a str or a Register.\n"
           "An event that the library refuses raises Refused with the library's line.")
      .def("merge", &merge, py::arg("kept"), py::arg("merged"), py::kw_only(), pass_argument(), note_argument(),
           "merge($self, kept, merged, *, pass_=\"\", note=\"\")\n--\n\n"
           "Two transformed registers were found equivalent, and `merged` is gone.\n\n"
           "The map of `kept` absorbs the map of `merged`. Handles to the absorbed map then raise Gone.")
      .def("retime_inverter", &retime_inverter, py::arg("register"), py::kw_only(), pass_argument(), note_argument(),
           "retime_inverter($self, register, *, pass_=\"\", note=\"\")\n--\n\n"
           "An inverter moved across a transformed register, which now holds the inverse.")
      .def("eliminate", &eliminate, py::arg("register"), py::arg("reason") = py::none(), py::kw_only(),
           py::arg("value") = py::none(), pass_argument(), note_argument(),
           "eliminate($self, register, reason=None, *, value=None, pass_=\"\", note=\"\")\n--\n\n"
           "A transformed register is gone: it is \"stuck_at_zero\", \"stuck_at_one\", or has \"no_fanout\".\n\n"
           "The reason is recorded unchanged, and is about the reference register. Instead of a reason, `value`, 0\n"
           "or 1, gives the value of the transformed register itself, which may be the inverse of the reference\n"
           "register. Then the map of the reference register says what became of it. Raises ValueError for any other\n"
           "word. The library refuses \"eliminated\", which gives no reason.");
}

}  // namespace kpt_python
