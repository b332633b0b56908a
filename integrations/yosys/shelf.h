// Designs that `design` puts aside, with what is known of their registers.
//
// Ownership: the shelf owns copies of what is known; designs are Yosys' own.
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
  /// To be called before `design` is carried out with these arguments. `tracker` is null while the
  /// followed design is away.
  void before(RTLIL::Design* design, const std::vector<std::string>& args, TRACKER* tracker);

  enum class OUTCOME {
    STAYS,      // the followed design is where it was
    AWAY,       // it is on the shelf only
    COMES_BACK  // a copy is the design again: see take()
  };
  /// To be called after it. Throws when the followed design is gone and not on the shelf.
  OUTCOME after(const std::vector<std::string>& args);

  /// What is known of the design that came back; once.
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
