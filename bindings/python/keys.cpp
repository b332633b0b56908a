#include "keys.h"

#include "handles.h"

namespace kpt_python {

namespace py = pybind11;

namespace {

std::string_view view(const KPT_STRING& text) { return text; }

[[noreturn]] void refuse_key(py::handle key) {
  throw py::type_error(
      "a register is named by a str, by a tuple of its name, entity and type, or by a kpt.Register, not by a " +
      std::string(Py_TYPE(key.ptr())->tp_name));
}

}  // namespace

KEY::KEY(py::handle key) : m_name(read(key)) {}

KPT_REGISTER_NAME KEY::read(py::handle key) {
  if (PyUnicode_Check(key.ptr())) {
    return m_text.emplace(key, "a register").view();
  }
  if (PyTuple_Check(key.ptr()) && PyTuple_GET_SIZE(key.ptr()) == 3) {
    m_texts.reserve(3);
    for (const char* const what : {"a register's name", "an entity", "a register type"}) {
      m_texts.emplace_back(PyTuple_GET_ITEM(key.ptr(), static_cast<py::ssize_t>(m_texts.size())), what);
    }
    return {m_texts[0], m_texts[1], m_texts[2]};
  }
  if (!py::isinstance<REGISTER>(key)) {
    refuse_key(key);
  }
  const auto& reg = key.cast<const REGISTER&>();
  reg.db->use();
  const KPT_REGISTER_KEYPOINT& keypoint = reg.keypoint;
  if (keypoint.is_signal()) {
    return view(keypoint.get_name());
  }
  return {view(keypoint.get_name()), view(keypoint.get_entity_name()), view(keypoint.get_type())};
}

std::string KEY::label() const {
  std::string text(m_name.name);
  if (!m_name.is_signal) {
    text.append(" (").append(m_name.entity).append(", ").append(m_name.register_type).append(")");
  }
  return text;
}

KPT_REGISTER_KEYPOINT KEY::find_in(const KPT_KEYPOINT_SET& set) const {
  return m_name.is_signal ? set.get_register(m_name.name)
                          : set.get_register(m_name.name, m_name.entity, m_name.register_type);
}

std::string signal_name(py::handle key) {
  const KEY parsed(key);
  if (!parsed.is_signal()) {
    throw py::type_error("this event names a signal, not the block instance " + parsed.label());
  }
  return std::string(parsed.name().name);
}

}  // namespace kpt_python
