// How Python names a register: a signal by its name, a block instance by a tuple
// of its name, entity and register type, and both by a Register of any database.
//
// Ownership: a KEY keeps the objects that hold its texts, as long as the Python
// object exists from which it was read.
#ifndef KPT_PYTHON_KEYS_H
#define KPT_PYTHON_KEYS_H

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "text.h"

namespace kpt_python {

class KEY {
 public:
  /// TypeError when the object names no register.
  explicit KEY(pybind11::handle key);

  const KPT_REGISTER_NAME& name() const { return m_name; }
  bool is_signal() const { return m_name.is_signal; }
  std::string label() const;
  /// The register of that name in a set, or a null handle. A signal is never
  /// taken for an instance of its name. An instance is found by name and type.
  KPT_REGISTER_KEYPOINT find_in(const KPT_KEYPOINT_SET& set) const;

 private:
  KPT_REGISTER_NAME read(pybind11::handle key);
  std::string_view keep(pybind11::handle text, const char* what);

  std::vector<TEXT> m_texts;  // of a tuple's; a name alone needs none
  std::optional<TEXT> m_text;
  KPT_REGISTER_NAME m_name;
};

/// The name of a transformed signal for an event: from a str, or from a Register that is a signal.
std::string signal_name(pybind11::handle key);

}  // namespace kpt_python

#endif
