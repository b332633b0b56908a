#include "bench/names.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <utility>

namespace bench {

namespace {

constexpr unsigned BITS = 32;
constexpr unsigned QUEUES = 100;

std::string name_of(char netlist, unsigned k) {
  return "u_core_" + std::to_string(k / (BITS * QUEUES)) + "/u_lsu/u_q" + std::to_string(k / BITS % QUEUES) +
         "/data_q_reg_" + netlist + "[" + std::to_string(k % BITS) + "]";
}

}  // namespace

NAMES names(char netlist, unsigned count) {
  static std::map<std::pair<char, unsigned>, NAMES> s_made;
  NAMES& made = s_made[{netlist, count}];
  if (made == nullptr) {
    std::vector<std::string> list(count);
    for (unsigned k = 0; k < count; ++k) {
      list[k] = name_of(netlist, k);
    }
    made = std::make_shared<const std::vector<std::string>>(std::move(list));
  }
  return made;
}

ORDER in_order(unsigned count) {
  std::vector<unsigned> order(count);
  std::iota(order.begin(), order.end(), 0U);
  return std::make_shared<const std::vector<unsigned>>(std::move(order));
}

ORDER shuffled(unsigned count) {
  std::vector<unsigned> order = *in_order(count);
  std::shuffle(order.begin(), order.end(), std::mt19937(count));
  return std::make_shared<const std::vector<unsigned>>(std::move(order));
}

}  // namespace bench
