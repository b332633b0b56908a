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
#include "tools/kptdb/event_lines.h"
#include "tools/kptdb/event_replay.h"
#include "tools/kptdb/host_lines.h"
#include "tools/kptdb/outcome.h"
#include "tools/kptdb/outline.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

// ---- load ----

struct LOADED {
  KPT_UNREGISTERED_DB db;
  KPT_LOAD_PROBLEM problem;
  kptdb::OUTLINE outline;
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
void load_quietly(LOADED& result, LOAD load) {
  const LONG_CALL call;
  const kptdb::HOST_LINES lines;
  const UNEXPECTED_ELEMENTS unexpected(result.unexpected);
  result.db = load();
}

[[noreturn]] void raise_format_error(std::string_view file, const KPT_LOAD_PROBLEM& problem) {
  if (problem.kind == KPT_LOAD_PROBLEM::OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  raise("FormatError", to_python(file), problem.line, problem.column, to_python(problem.message));
}

bool is_empty(const KPT_KEYPOINTS_DB& db) {
  return db.get_reference_set().size() + db.get_transformed_set().size() == 0;
}

// A database, and the number of elements that did not belong.
py::tuple taken_over(LOADED& loaded, std::string_view file, bool is_something_else) {
  const bool is_database = !loaded.db.is_null();
  if (is_something_else &&
      (is_database ? is_empty(*loaded.db) : loaded.problem.kind != KPT_LOAD_PROBLEM::NOT_WELL_FORMED)) {
    raise("FormatError", to_python(file), 1, 0, "not a keypoint database: its root element is not kpt_db");
  }
  if (!is_database) {
    raise_format_error(file, loaded.problem);
  }
  loaded.db->move_id_counters_past_own_ids();
  return py::make_tuple(OWNER(std::make_shared<DATABASE>(std::move(loaded.db))), loaded.unexpected);
}

// A plain file. An outline gets its elements only when there is something to report.
py::tuple load_file(const std::string& path, const py::object& shown, const py::object& stream,
                    const py::object& rewind) {
  const TEXT file(shown, "a path");
  LOADED loaded;
  load_quietly(loaded, [&] { return KPT_UNREGISTERED_DB::load(path, &loaded.problem); });
  LOADED again;
  if (loaded.db.is_null() || is_empty(*loaded.db)) {
    PYTHON_BYTES bytes(stream, rewind);
    load_quietly(again, [&] { return KPT_UNREGISTERED_DB::load(bytes, file.view(), &again.problem, &again.outline); });
  }
  return taken_over(loaded, file, again.outline.is_something_else());
}

py::tuple load_stream(const py::object& stream, const py::object& rewind, const py::object& shown) {
  const TEXT file(shown, "a name");
  PYTHON_BYTES bytes(stream, rewind);
  LOADED loaded;
  load_quietly(loaded, [&] { return KPT_UNREGISTERED_DB::load(bytes, file.view(), &loaded.problem, &loaded.outline); });
  bytes.rethrow();
  return taken_over(loaded, file, loaded.outline.is_something_else());
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

// An event file on its way into a database.
struct RECORDER {
  explicit RECORDER(const SHARED_DATABASE& into) : db(into), replay(into->use()) {}

  SHARED_DATABASE db;
  kptdb::EVENT_REPLAY replay;
};

// None, or the position, the event and the reason of the first line that was not recorded.
py::object take(RECORDER& recorder, const py::list& given) {
  std::vector<std::string> lines;
  lines.reserve(given.size());
  for (const py::handle line : given) {
    lines.emplace_back(TEXT(line, "a line").view());
  }
  recorder.db->use();
  std::optional<kptdb::EVENT_REPLAY::REFUSAL> refusal;
  std::size_t at = 0;
  {
    const LONG_CALL call;
    kptdb::HOST_LINES host_lines;
    for (; at < lines.size() && !refusal; ++at) {
      refusal = recorder.replay.take(lines[at], host_lines);
    }
  }
  return refusal ? py::object(py::make_tuple(at - 1, to_python(refusal->event), to_python(refusal->reason)))
                 : py::none();
}

py::list event_lines(const OWNER& db) {
  const KPT_KEYPOINTS_DB& handle = db->use();
  std::vector<std::string> lines;
  std::string reason;
  {
    const LONG_CALL call;
    try {
      kptdb::write_event_lines(handle, [&](std::string_view line) { lines.emplace_back(line); });
    } catch (const kptdb::FAILURE& failure) {
      reason = failure.what();
    }
  }
  if (!reason.empty()) {
    raise_refused(reason);
  }
  py::list result(lines.size());
  for (std::size_t k = 0; k < lines.size(); ++k) {
    result[k] = to_python(std::string_view(lines[k]).substr(0, lines[k].size() - 1));
  }
  return result;
}

}  // namespace

void bind_files(py::module_& module, DATABASE_CLASS& database) {
  py::class_<RECORDER> recorder(module, "_Recorder");
  refuse_new(recorder);
  recorder.def("take", &take).def_property_readonly("recorded", [](const RECORDER& r) { return r.replay.recorded(); });
  database.def("_recorder", [](const OWNER& db) { return std::make_unique<RECORDER>(db); });
  module.def("_load_file", &load_file).def("_load_stream", &load_stream).def("_compose", &compose);
  database.def("_save", &save)
      .def("_event_lines", &event_lines)
      .def("unite", &unite, py::arg("other"),
           "unite($self, other)\n--\n\n"
           "Appends the database of the next stage, which does not change. The maps then lead from the reference\n"
           "registers of this database to the transformed registers of `other`.\n\n"
           "The answers of a united database can be false; kpt.compose is exact. Other Python threads run during the\n"
           "call. Handles to absorbed maps raise Gone. Raises Refused when the library cannot unite the databases;\n"
           "this database may then have changed in part.");
}

}  // namespace kpt_python
