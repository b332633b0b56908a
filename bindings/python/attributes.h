// The attributes of a register or a map, from which kpt.Attributes makes a mapping.
//
// Ownership: none.
#ifndef KPT_PYTHON_ATTRIBUTES_H
#define KPT_PYTHON_ATTRIBUTES_H

#include <pybind11/pybind11.h>

#include "db/kpt/kpt.h"
#include "text.h"

namespace kpt_python {

/// A list of pairs of str.
inline pybind11::list to_pairs(const KPT_ATTRIBUTE_LIST& attributes) {
  pybind11::list result;
  for (const auto& [name, value] : attributes) {
    result.append(pybind11::make_tuple(to_python(name), to_python(value)));
  }
  return result;
}

/// `get(held)` is the library's handle, which is valid until the database changes.
template <class HELD, class... OPTIONS, class GET>
void bind_attributes(pybind11::class_<HELD, OPTIONS...>& type, GET get) {
  type.def("_get_attributes", [get](const HELD& held) { return to_pairs(get(held).get_attributes()); })
      .def("_set_attribute",
           [get](const HELD& held, const pybind11::object& name, const pybind11::object& value) {
             const TEXT name_text(name, "an attribute's name");
             const TEXT value_text(value, "an attribute's value");
             get(held).add_attribute(name_text, value_text);
           })
      .def("_remove_attribute", [get](const HELD& held, const pybind11::object& name) {
        const TEXT text(name, "an attribute's name");
        return get(held).remove_attribute(text);
      });
}

}  // namespace kpt_python

#endif
