// Many registers in one call.
#include <array>
#include <boost/unordered/unordered_flat_map.hpp>

#include "answers.h"
#include "bindings.h"
#include "errors.h"
#include "keys.h"
#include "library_use.h"
#include "text.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

// ---- associate_many ----

// Names that can be read without Python's lock.
struct NAMES {
  explicit NAMES(const py::object& given) : objects(given) {
    texts.reserve(objects.size());
    for (const py::handle name : objects) {
      texts.emplace_back(name, "a signal's name");
    }
  }
  py::tuple objects;  // keeps the strings, whatever becomes of the list
  std::vector<TEXT> texts;
};

std::size_t associate_many(const OWNER& db, const py::object& reference, const py::object& transformed) {
  const NAMES r(reference);
  const NAMES t(transformed);
  if (r.texts.size() != t.texts.size()) {
    throw py::value_error(std::to_string(r.texts.size()) + " reference names and " + std::to_string(t.texts.size()) +
                          " transformed ones");
  }
  const KPT_KEYPOINTS_DB& handle = db->use();
  std::size_t done = 0;
  {
    const LONG_CALL call;
    while (done < r.texts.size() && handle.associate_registers_signal_to_signal(r.texts[done], t.texts[done])) {
      ++done;
    }
  }
  if (done < r.texts.size()) {
    raise("Refused",
          "pair " + std::to_string(done) + ", " + std::string(r.texts[done].view()) + " and " +
              std::string(t.texts[done].view()) + ": one of them exists already",
          py::arg("index") = done);
  }
  return done;
}

// ---- to_records ----

struct ROW {
  KPT_REGISTER_KEYPOINT keypoint;
  KPT_REGISTER_KEYPOINT counterpart;
  KPT_FATE_ENUM fate = KPT_FATE_UNKNOWN;
  std::uint32_t map = 0;
  signed char inverted = -1;
  signed char constant = -1;
};
using ROWS = std::vector<ROW>;

signed char number_of(const std::optional<bool>& value) {
  return static_cast<signed char>(value ? static_cast<int>(*value) : -1);
}

// What the map says of the register at this position.
void fill(ROW& row, const KPT_REGISTER_TRANSFORMATION& map, const PLACE& place) {
  row.map = map.get_number();
  row.fate = fate_of(map, place);
  row.counterpart = counterpart(map, place);
  row.inverted = number_of(is_inverted(map, place));
  row.constant = number_of(constant_of(map, place));
}

// One walk over the registers and one over the maps, so no register is searched for in a large map.
ROWS rows_of(const KPT_KEYPOINTS_DB& db, KPT_SET_ENUM side) {
  const KPT_KEYPOINT_SET set = db.get_set(side);
  ROWS rows;
  rows.reserve(set.size());
  boost::unordered_flat_map<KPT_REGISTER_KEYPOINT, std::size_t, std::hash<KPT_REGISTER_KEYPOINT>> numbers;
  numbers.reserve(set.size());
  for (const KPT_REGISTER_KEYPOINT& keypoint : set) {
    numbers.try_emplace(keypoint, rows.size());
    rows.emplace_back().keypoint = keypoint;
  }
  for (const KPT_REGISTER_TRANSFORMATION& map : db.get_transformation_set()) {
    const std::size_t end = map.get_number_of_indices(side);
    for (std::size_t index = 0; index < end; ++index) {
      for (const bool inverted : {false, true}) {
        for (const KPT_REGISTER_KEYPOINT& keypoint : map.get_group(side, index, inverted)) {
          const auto row = numbers.find(keypoint);
          if (row != numbers.end() && db.get_register_transformation(keypoint) == map) {
            fill(rows[row->second], map, {side, index, inverted});
          }
        }
      }
    }
  }
  return rows;
}

template <class GET>
py::list column(const ROWS& rows, GET get) {
  py::list list(rows.size());
  for (std::size_t k = 0; k < rows.size(); ++k) {
    list[k] = get(rows[k]);
  }
  return list;
}

py::str text_or_empty(const KPT_REGISTER_KEYPOINT& keypoint) {
  return to_python(keypoint.is_null() ? std::string_view() : std::string_view(keypoint.get_name()));
}

py::dict records_of(const ROWS& rows) {
  py::dict records;
  std::array<py::str, 5> words;
  for (int fate = 0; fate < 5; ++fate) {
    words.at(static_cast<std::size_t>(fate)) = py::str(fate_word(static_cast<KPT_FATE_ENUM>(fate)));
  }
  records["name"] = column(rows, [](const ROW& row) { return to_python(row.keypoint.get_name()); });
  records["entity"] = column(rows, [](const ROW& row) { return to_python(row.keypoint.get_entity_name()); });
  records["type"] = column(rows, [](const ROW& row) { return to_python(row.keypoint.get_type()); });
  records["id"] = column(rows, [](const ROW& row) { return py::int_(row.keypoint.get_id()); });
  records["fate"] = column(rows, [&](const ROW& row) { return words.at(static_cast<std::size_t>(row.fate)); });
  records["map"] = column(rows, [](const ROW& row) { return py::int_(row.map); });
  records["counterpart"] = column(rows, [](const ROW& row) { return text_or_empty(row.counterpart); });
  records["inverted"] = column(rows, [](const ROW& row) { return py::int_(static_cast<int>(row.inverted)); });
  records["constant"] = column(rows, [](const ROW& row) { return py::int_(static_cast<int>(row.constant)); });
  return records;
}

KPT_SET_ENUM side_named(const std::string& side) {
  if (side != "reference" && side != "transformed") {
    throw py::value_error("a side is \"reference\" or \"transformed\", not \"" + side + "\"");
  }
  return side == "reference" ? KPT_REFERENCE_SET : KPT_TRANSFORMED_SET;
}

py::dict records(const OWNER& db, const std::string& side) {
  const KPT_SET_ENUM wanted = side_named(side);
  const KPT_KEYPOINTS_DB& handle = db->use();
  ROWS rows;
  {
    const LONG_CALL call;
    rows = rows_of(handle, wanted);
  }
  return records_of(rows);
}

}  // namespace

void bind_bulk(DATABASE_CLASS& database) {
  database
      .def("associate_many", &associate_many, py::arg("reference"), py::arg("transformed"),
           "associate_many($self, reference, transformed)\n--\n\n"
           "Associates the signals of two sequences, name by name, while other threads run.\n\n"
           "Returns the number of pairs. The first pair that is refused raises Refused. The pairs before it stay\n"
           "recorded, and `index` of the exception is their number. Raises ValueError, and records nothing, when the\n"
           "lengths differ.")
      .def("_records", &records, py::arg("side"));
}

}  // namespace kpt_python
