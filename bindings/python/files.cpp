// Loading, saving, uniting, composing, and event files: the calls that take long.
#include <pybind11/stl.h>

#include <utility>

#include "bindings.h"
#include "errors.h"
#include "host/kpt_host.h"
#include "library_use.h"
#include "python_bytes.h"
#include "python_objects.h"
#include "text.h"
#include "tools/kptdb/events.h"
#include "tools/kptdb/host_lines.h"
#include "tools/kptdb/outline.h"
#include "tools/kptdb/replay.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

// ---- load ----

struct LOADED {
  KPT_UNREGISTERED_DB db;
  KPT_LOAD_PROBLEM problem;
  std::size_t unexpected = 0;  // elements that the library reads as transformations
};

// The library reports elements that do not belong as internal errors, and continues.
class UNEXPECTED_ELEMENTS {
 public:
  explicit UNEXPECTED_ELEMENTS(std::size_t& count) {
    kpt_host::set_internal_error_sink([&count](const char*, const char*, const char*, int) { ++count; });
  }
  ~UNEXPECTED_ELEMENTS() { kpt_host::set_internal_error_sink({}); }
  UNEXPECTED_ELEMENTS(const UNEXPECTED_ELEMENTS&) = delete;
  UNEXPECTED_ELEMENTS& operator=(const UNEXPECTED_ELEMENTS&) = delete;
};

template <class LOAD>
LOADED load_quietly(LOAD load) {
  LOADED result;
  const LONG_CALL call;
  const kptdb::HOST_LINES lines;
  const UNEXPECTED_ELEMENTS unexpected(result.unexpected);
  result.db = load(&result.problem);
  return result;
}

[[noreturn]] void raise_format_error(std::string_view file, const KPT_LOAD_PROBLEM& problem) {
  if (problem.kind == KPT_LOAD_PROBLEM::OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  raise("FormatError", to_python(file), problem.line, problem.column, to_python(problem.message));
}

// A database, and the number of elements that did not belong.
py::tuple taken_over(LOADED loaded, std::string_view file) {
  if (loaded.db.is_null()) {
    raise_format_error(file, loaded.problem);
  }
  loaded.db->move_id_counters_past_own_ids();
  return py::make_tuple(OWNER(std::make_shared<DATABASE>(std::move(loaded.db))), loaded.unexpected);
}

py::tuple load_file(const std::string& path, const py::object& shown) {
  const TEXT file(shown, "a path");
  return taken_over(load_quietly([&](KPT_LOAD_PROBLEM* problem) { return KPT_UNREGISTERED_DB::load(path, problem); }),
                    file);
}

py::tuple load_stream(const py::object& stream, const py::object& rewind, const py::object& shown) {
  const TEXT file(shown, "a name");
  PYTHON_BYTES bytes(stream, rewind);
  LOADED loaded =
      load_quietly([&](KPT_LOAD_PROBLEM* problem) { return KPT_UNREGISTERED_DB::load(bytes, file.view(), problem); });
  bytes.rethrow();
  return taken_over(std::move(loaded), file);
}

// The name of the root element of a file that is not a keypoint database; empty when it may be one.
std::string foreign_root(const py::bytes& text) {
  const kptdb::OUTLINE outline = kptdb::outline_of(text);
  return outline.root == "kpt_db" || outline.has_register_set ? std::string() : outline.root;
}

// ---- save ----

void save(const OWNER& db, const std::string& path) {
  const KPT_KEYPOINTS_DB& handle = db->use();
  bool saved = false;
  std::string reason;
  {
    const LONG_CALL call;
    const kptdb::HOST_LINES lines;
    saved = handle.save_atomically(path);
    reason = lines.reason();
  }
  if (!saved) {
    raise("NotSaved", to_python(reason));
  }
}

// ---- unite, compose ----

void unite(const OWNER& db, const OWNER& other) {
  const KPT_KEYPOINTS_DB& first = db->use();
  const KPT_KEYPOINTS_DB& next = other->use();
  bool united = false;
  std::string reason;
  {
    const LONG_CALL call;
    const kptdb::HOST_LINES lines;
    united = first.unite(next);
    reason = lines.reason();
  }
  if (!united) {
    raise_refused(reason.empty() ? "the databases cannot be united" : reason);
  }
}

py::list texts_of(const KPT_STRING_VECTOR& lines) {
  py::list result;
  for (const KPT_STRING& line : lines) {
    result.append(to_python(line));
  }
  return result;
}

// The composition, how well the stages fit, and what the stages say and the composition leaves out.
py::tuple compose(const std::vector<OWNER>& stages, const py::object& name, double least_share, bool keeps_unrecorded) {
  const TEXT text(name, "a database's name");
  OWNER result;
  result.init(text.view());
  KPT_KEYPOINTS_DB_LIST handles;
  for (const OWNER& stage : stages) {
    handles.push_back(stage->use());
  }
  const KPT_KEYPOINTS_DB& into = result->use();
  KPT_COMPOSITION_REPORT report;
  bool composed = false;
  {
    const LONG_CALL call;
    const kptdb::HOST_LINES lines;
    composed = into.compose(handles, {least_share, keeps_unrecorded}, &report);
  }
  if (!composed) {
    raise_refused(report.errors.empty() ? "the stages cannot be composed" : std::string(report.errors.front()));
  }
  return py::make_tuple(result, texts_of(report.fits), texts_of(report.warnings));
}

// ---- event files ----

// Why the line was not recorded. When `event` is empty, the line is not an event.
struct REFUSAL {
  std::size_t line;
  std::string event;
  std::string reason;
};

std::optional<REFUSAL> replay_line(const KPT_KEYPOINTS_DB& db, std::size_t number, const std::string& line,
                                   kptdb::HOST_LINES& lines) {
  try {
    const kptdb::EVENT event = kptdb::parse_event(line);
    const std::string reason = kptdb::replay(db, event, lines);
    return reason.empty() ? std::nullopt : std::optional(REFUSAL{number, kptdb::describe(event), reason});
  } catch (const kptdb::EVENT_ERROR& problem) {
    return REFUSAL{number, "", problem.what()};
  }
}

// The number of lines that were recorded before the first that was not, and then
// the position, the event and the reason of that line, or None.
py::tuple record_lines(const OWNER& db, const py::list& given) {
  std::vector<std::string> events;
  events.reserve(given.size());
  for (const py::handle line : given) {
    events.emplace_back(TEXT(line, "a line").view());
  }
  const KPT_KEYPOINTS_DB& handle = db->use();
  std::optional<REFUSAL> refusal;
  std::size_t number = 0;
  {
    const LONG_CALL call;
    kptdb::HOST_LINES lines;
    for (; number < events.size() && !refusal; ++number) {
      refusal = replay_line(handle, number, events[number], lines);
    }
  }
  if (!refusal) {
    return py::make_tuple(number, py::none());
  }
  return py::make_tuple(refusal->line, py::make_tuple(to_python(refusal->event), to_python(refusal->reason)));
}

}  // namespace

void bind_files(py::module_& module, DATABASE_CLASS& database) {
  module.def("_load_file", &load_file)
      .def("_load_stream", &load_stream)
      .def("_foreign_root", &foreign_root)
      .def("_compose", &compose);
  database.def("_save", &save)
      .def("_record_lines", &record_lines)
      .def("unite", &unite, py::arg("other"),
           "unite($self, other)\n--\n\n"
           "Appends the database of the next stage, which is left as it was: afterwards the maps run from this\n"
           "one's reference registers to the transformed ones of `other`.\n\n"
           "This is the union that flows are built on, with its approximations; kpt.compose is exact. Other threads\n"
           "run meanwhile. Handles to absorbed maps raise Gone. Refused, with the database changed in part, where\n"
           "the library gives up.");
}

}  // namespace kpt_python
