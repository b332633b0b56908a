#include "state_table.h"

#include <pybind11/stl.h>

#include <limits>

#include "python_objects.h"
#include "text.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

constexpr std::size_t MOST = std::numeric_limits<unsigned short>::max();

unsigned short narrow(std::size_t value) { return static_cast<unsigned short>(value); }

void check_code(std::string_view code, std::size_t width, const char* side) {
  if (code.size() != width || code.find_first_not_of("01") != std::string_view::npos) {
    throw py::value_error("the code \"" + std::string(code) + "\" is no string of " + std::to_string(width) +
                          " characters 0 and 1 for the " + side + " registers");
  }
}

void check_size(std::size_t size, const char* what) {
  if (size == 0 || size > MOST) {
    throw py::value_error("a table has 1 to 65535 " + std::string(what) + ", not " + std::to_string(size));
  }
}

std::shared_ptr<const KPT_STATE_TABLE> table_of(const CODES& codes) {
  check_size(codes.size(), "states");
  const std::size_t r_width = codes.front().first.size();
  const std::size_t t_width = codes.front().second.size();
  check_size(r_width, "reference registers");
  check_size(t_width, "transformed registers");
  for (const auto& [reference, transformed] : codes) {
    check_code(reference, r_width, "reference");
    check_code(transformed, t_width, "transformed");
  }
  auto table = std::make_shared<KPT_STATE_TABLE>(narrow(codes.size()), narrow(r_width), narrow(t_width));
  for (std::size_t row = 0; row < codes.size(); ++row) {
    for (std::size_t k = 0; k < r_width; ++k) {
      table->set_reference_entry(narrow(row + 1), narrow(k + 1), codes[row].first[k] == '1');
    }
    for (std::size_t k = 0; k < t_width; ++k) {
      table->set_transformed_entry(narrow(row + 1), narrow(k + 1), codes[row].second[k] == '1');
    }
  }
  return table;
}

CODES codes_from(py::handle states) {
  CODES codes;
  for (const py::handle state : py::iter(states)) {
    const py::tuple pair(py::reinterpret_borrow<py::object>(state));
    if (pair.size() != 2) {
      throw py::value_error(
          "a state is a pair of codes: that of the reference registers, that of the transformed ones");
    }
    codes.emplace_back(TEXT(pair[0], "a code").view(), TEXT(pair[1], "a code").view());
  }
  return codes;
}

// A negative number counts from the end, as usual in Python.
std::size_t checked(py::ssize_t index, std::size_t size, const char* what) {
  const py::ssize_t from_begin = index < 0 ? index + static_cast<py::ssize_t>(size) : index;
  if (from_begin < 0 || static_cast<std::size_t>(from_begin) >= size) {
    throw py::index_error(std::string(what) + " " + std::to_string(index) + " of " + std::to_string(size));
  }
  return static_cast<std::size_t>(from_begin);
}

int get_bit(const BITS& bits, const std::pair<py::ssize_t, py::ssize_t>& place) {
  const std::size_t state = checked(place.first, bits.states(), "state");
  return bits.at(state, checked(place.second, bits.columns(), "column")) ? 1 : 0;
}

std::string code_at(const BITS& bits, std::size_t state) {
  std::string code(bits.columns(), '0');
  for (std::size_t column = 0; column < code.size(); ++column) {
    code[column] = bits.at(state, column) ? '1' : '0';
  }
  return code;
}

TABLE* new_table(PyObject* args, PyObject* kwargs) {
  static const char* const NAMES[] = {"codes", nullptr};
  PyObject* codes = nullptr;
  if (PyArg_ParseTupleAndKeywords(args, kwargs, "O:StateTable", const_cast<char**>(NAMES), &codes) == 0) {
    throw py::error_already_set();
  }
  return new TABLE(to_table(codes));
}

std::string sizes(const BITS& bits) {
  return std::to_string(bits.states()) + " states of " + std::to_string(bits.columns()) + " bits";
}

}  // namespace

std::size_t BITS::columns() const {
  return m_side == KPT_REFERENCE_SET ? m_table->get_state_reference_size() : m_table->get_state_transformed_size();
}

bool BITS::at(std::size_t state, std::size_t column) const {
  const unsigned short row = narrow(state + 1);
  const unsigned short k = narrow(column + 1);
  return (m_side == KPT_REFERENCE_SET ? m_table->get_reference_entry(row, k)
                                      : m_table->get_transformed_entry(row, k)) == 1;
}

py::buffer_info BITS::buffer() {
  if (m_bytes.empty()) {
    m_bytes.reserve(states() * columns());
    for (std::size_t state = 0; state < states(); ++state) {
      for (std::size_t column = 0; column < columns(); ++column) {
        m_bytes.push_back(at(state, column) ? 1 : 0);
      }
    }
  }
  const auto rows = static_cast<py::ssize_t>(states());
  const auto width = static_cast<py::ssize_t>(columns());
  const std::vector<py::ssize_t> shape{rows, width};
  const std::vector<py::ssize_t> strides{width, 1};
  return py::buffer_info(m_bytes.data(), 1, py::format_descriptor<unsigned char>::format(), 2, shape, strides, true);
}

TABLE::TABLE(const CODES& codes) : m_table(table_of(codes)) {}

CODES TABLE::codes() const {
  CODES codes;
  const BITS reference = side(KPT_REFERENCE_SET);
  const BITS transformed = side(KPT_TRANSFORMED_SET);
  for (std::size_t state = 0; state < reference.states(); ++state) {
    codes.emplace_back(code_at(reference, state), code_at(transformed, state));
  }
  return codes;
}

TABLE to_table(py::handle states) {
  return py::isinstance<TABLE>(states) ? states.cast<TABLE>() : TABLE(codes_from(states));
}

void bind_state_table(py::module_& module) {
  py::class_<BITS> side(
      module, "Bits", py::buffer_protocol(),
      "One side of a StateTable: a bit for each state and each column.\n\n"
      "`bits[state, column]` is 0 or 1. State and column count from 0, and negative numbers count from the end.\n"
      "Raises IndexError beyond the table. It is a buffer of bytes of the shape (states, columns), so\n"
      "numpy.asarray(bits) reads it without a copy.");
  refuse_new(side);
  side.def("__getitem__", &get_bit)
      .def("__len__", &BITS::states)
      .def_property_readonly(
          "shape", [](const BITS& bits) { return std::pair(bits.states(), bits.columns()); },
          "The number of states and the number of columns.")
      .def_buffer(&BITS::buffer)
      .def("__repr__", [](const BITS& bits) { return "<kpt.Bits: " + sizes(bits) + ">"; });

  py::class_<TABLE> type(
      module, "StateTable",
      "StateTable(codes)\n--\n\n"
      "What a state machine's registers hold, state by state, before and after it was re-encoded.\n\n"
      "A table is made from pairs of codes, or comes from a map. Character k of a code is the bit of index k of\n"
      "that side of the map. A table never changes. Raises ValueError when the codes are not a table. A table\n"
      "has 1 to 65535 states, and 1 to 65535 registers on each side.");
  make_in_new(type, new_table);
  type.def(py::init([](const py::object& codes) { return to_table(codes); }), py::arg("codes"))
      .def_property_readonly("codes", &TABLE::codes,
                             "A list with one pair for each state: the code of the reference registers and the code\n"
                             "of the transformed registers.")
      .def_property_readonly(
          "reference", [](const TABLE& table) { return table.side(KPT_REFERENCE_SET); },
          "The Bits of the reference registers.")
      .def_property_readonly(
          "transformed", [](const TABLE& table) { return table.side(KPT_TRANSFORMED_SET); },
          "The Bits of the transformed registers.")
      .def("__len__", [](const TABLE& table) { return table.get().get_number_of_states(); })
      .def(
          "__eq__", [](const TABLE& a, const TABLE& b) { return a.codes() == b.codes(); }, py::is_operator())
      .def("__repr__", [](const TABLE& table) {
        const BITS reference = table.side(KPT_REFERENCE_SET);
        return "<kpt.StateTable: " + sizes(reference) + " that became " +
               std::to_string(table.side(KPT_TRANSFORMED_SET).columns()) + ">";
      });
}

}  // namespace kpt_python
