// The designs that `design` saves, with what is known of their registers.
//
// Ownership: the shelf owns copies of what is known; Yosys owns the designs.
#ifndef SHELF_H
#define SHELF_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tracker.h"

namespace kpt_yosys {

class SHELF {
 public:
  /// Call it before `design` runs with these arguments. `tracker` is null while
  /// the followed design is away.
  void before(RTLIL::Design* design, const std::vector<std::string>& args, TRACKER* tracker);

  enum class OUTCOME {
    STAYS,      // the followed design is the present design
    AWAY,       // it is only on the shelf
    COMES_BACK  // a copy is the design again: see take()
  };
  /// Call it after `design`. Throws when the followed design is gone and not on the shelf.
  OUTCOME after(const std::vector<std::string>& args);

  /// What is known of the design that came back. Only the first call returns it.
  TRACKING take();

  void clear();

 private:
  OUTCOME bring(std::optional<TRACKING> kept, const std::string& what);
  OUTCOME replaced(const std::string& what) const;
  bool is_empty() const;

  std::map<std::string, TRACKING> m_saved;
  std::vector<std::optional<TRACKING>> m_pushed;  // empty for a design that is not followed
  std::optional<TRACKING> m_back;
};

}  // namespace kpt_yosys

#endif
