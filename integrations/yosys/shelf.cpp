#include "shelf.h"

#include <algorithm>
#include <stdexcept>

namespace kpt_yosys {

namespace {

std::string option_of(const std::vector<std::string>& args) { return args.size() > 1 ? args[1] : std::string(); }
std::string name_of(const std::vector<std::string>& args) { return args.size() > 2 ? args[2] : std::string(); }

}  // namespace

void SHELF::before(RTLIL::Design* design, const std::vector<std::string>& args, TRACKER* tracker) {
  const std::string option = option_of(args);
  std::optional<TRACKING> kept;
  const bool stack = option == "-push" || option == "-push-copy";
  const bool store = option == "-save" || option == "-stash";
  if (tracker != nullptr && (stack || store)) {
    kept = tracker->put_aside(design);
  }
  if (stack) {
    m_pushed.push_back(std::move(kept));
  } else if (store || option == "-delete") {
    m_saved.erase(name_of(args));
    if (kept.has_value()) {
      m_saved.emplace(name_of(args), std::move(*kept));
    }
  }
}

SHELF::OUTCOME SHELF::after(const std::vector<std::string>& args) {
  const std::string option = option_of(args);
  if (option == "-push" || option == "-stash") {
    return OUTCOME::AWAY;
  }
  if (option == "-load") {
    const auto saved = m_saved.find(name_of(args));
    return bring(saved != m_saved.end() ? std::optional<TRACKING>(saved->second) : std::nullopt, "design -load");
  }
  if (option == "-pop") {
    std::optional<TRACKING> kept;
    if (!m_pushed.empty()) {
      kept = std::move(m_pushed.back());
      m_pushed.pop_back();
    }
    return bring(std::move(kept), "design -pop");
  }
  return option == "-reset" ? replaced("design -reset") : OUTCOME::STAYS;
}

SHELF::OUTCOME SHELF::bring(std::optional<TRACKING> kept, const std::string& what) {
  if (!kept.has_value()) {
    return replaced(what);
  }
  m_back = std::move(kept);
  return OUTCOME::COMES_BACK;
}

SHELF::OUTCOME SHELF::replaced(const std::string& what) const {
  if (is_empty()) {
    throw std::runtime_error(what + " replaced the design that is followed, and no copy of it is saved");
  }
  return OUTCOME::AWAY;
}

bool SHELF::is_empty() const {
  return m_saved.empty() &&
         std::none_of(m_pushed.begin(), m_pushed.end(), [](const auto& kept) { return kept.has_value(); });
}

TRACKING SHELF::take() {
  TRACKING kept = std::move(m_back.value());
  m_back.reset();
  return kept;
}

void SHELF::clear() {
  m_saved.clear();
  m_pushed.clear();
  m_back.reset();
}

}  // namespace kpt_yosys
