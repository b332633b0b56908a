#include "recognition.h"

#include "apart.h"
#include "gates.h"
#include "register_pairs.h"

namespace kpt_yosys {

namespace {

// Finds the register that drives the net of that name; -1 when none does.
class BY_NAME {
 public:
  explicit BY_NAME(const SIMULATION& netlist) : m_netlist(netlist) {
    for (std::size_t i = 0; i < netlist.storage().size(); ++i) {
      m_by_net.emplace(netlist.storage()[i].m_q, static_cast<int>(i));
    }
  }
  int operator()(const std::string& name) const {
    const auto found = m_by_net.find(m_netlist.net(name));
    return found != m_by_net.end() ? found->second : -1;
  }

 private:
  const SIMULATION& m_netlist;
  std::unordered_map<int, int> m_by_net;
};

int number_of(const REGISTER_PAIRS::PAIR& pair, const std::unordered_map<int, int>& after) {
  constexpr int FIRST_REGISTER = 3;  // after unknown, zero and one
  if (pair.m_after < 0) {
    return pair.m_inverted ? 2 : 1;
  }
  const auto found = after.find(pair.m_after);
  return found == after.end() ? 0 : FIRST_REGISTER + 2 * found->second + (pair.m_inverted ? 1 : 0);
}

RECOGNITION::FOUND found_by(int number) {
  constexpr int FIRST_REGISTER = 3;
  if (number < FIRST_REGISTER) {
    constexpr RECOGNITION::ANSWER ANSWERS[] = {RECOGNITION::ANSWER::UNKNOWN, RECOGNITION::ANSWER::ZERO,
                                               RECOGNITION::ANSWER::ONE};
    return {ANSWERS[number], -1, false};
  }
  number -= FIRST_REGISTER;
  return {RECOGNITION::ANSWER::REGISTER, number / 2, number % 2 != 0};
}

std::vector<int> found_numbers(REGISTER_PAIRS& pairs, const std::vector<RECOGNITION::KNOWN>& known,
                               const std::vector<std::string>& lost, const std::vector<std::string>& after) {
  const BY_NAME before_of(pairs.before());
  const BY_NAME after_of(pairs.after());
  for (const RECOGNITION::KNOWN& pair : known) {
    pairs.add_known({before_of(pair.m_before), after_of(pair.m_after), pair.m_inverted});
  }
  std::unordered_map<int, int> numbers;
  for (std::size_t i = 0; i < after.size(); ++i) {
    numbers.emplace(after_of(after[i]), static_cast<int>(i));
  }
  numbers.erase(-1);
  std::unordered_map<int, int> found;
  for (const REGISTER_PAIRS::PAIR& pair : pairs.proven()) {
    found.emplace(pair.m_before, number_of(pair, numbers));
  }
  std::vector<int> result;
  for (const std::string& name : lost) {
    const auto at = found.find(before_of(name));
    result.push_back(at != found.end() ? at->second : 0);
  }
  return result;
}

}  // namespace

RECOGNITION::RECOGNITION(const NETLIST_VIEW& before)
    : m_before(text_of_modules(before.module(0).module())), m_top(before.module(0).module()->name.c_str()) {}

std::vector<RECOGNITION::FOUND> RECOGNITION::find(const std::vector<KNOWN>& known, const std::vector<std::string>& lost,
                                                  const std::vector<std::string>& after, RTLIL::Module* top) const {
  const std::vector<int> numbers = done_apart("the search for registers", [&] {
    REGISTER_PAIRS pairs(gates_of(m_before, m_top), gates_of(text_of_modules(top), top->name.c_str()));
    return found_numbers(pairs, known, lost, after);
  });
  std::vector<FOUND> all;
  all.reserve(numbers.size());
  for (const int number : numbers) {
    all.push_back(found_by(number));
  }
  return all;
}

}  // namespace kpt_yosys
