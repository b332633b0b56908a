#include "register_copies.h"

#include <map>
#include <unordered_map>

#include "frame.h"
#include "netlist_names.h"
#include "simulation.h"
#include "words.h"

namespace kpt_yosys {

namespace {

constexpr int MOST_ROUNDS = 1000;
constexpr int ROUNDS_WITHOUT_CHANGE = 16;

using CLASSES = std::vector<std::size_t>;  // of each register of the simulation: the number of its class

// Splits the classes by what their registers hold, load and are clocked by, from one random state in which
// the registers of each class hold the same. Returns the number of classes.
std::size_t split(const SIMULATION& netlist, WORDS& words, CLASSES& classes) {
  std::unordered_map<std::size_t, std::uint64_t> of_class;
  std::vector<std::uint64_t> held;
  for (const std::size_t number : classes) {
    const auto [at, is_new] = of_class.emplace(number, 0);
    if (is_new) {
      at->second = words.any();
    }
    held.push_back(at->second);
  }
  FRAME<WORDS> frame(words, netlist, held, {});
  std::map<std::vector<std::uint64_t>, std::size_t> found;
  for (std::size_t i = 0; i < classes.size(); ++i) {
    classes[i] = found
                     .emplace(std::vector<std::uint64_t>{classes[i], frame.output(i), frame.next(i), frame.clock(i)},
                              found.size())
                     .first->second;
  }
  return found.size();
}

CLASSES classes_of(const SIMULATION& netlist) {
  CLASSES classes(netlist.storage().size(), 0);
  WORDS words{std::mt19937_64(1)};
  std::size_t count = 1;
  for (int round = 0, same = 0; round < MOST_ROUNDS && same < ROUNDS_WITHOUT_CHANGE; ++round) {
    const std::size_t now = split(netlist, words, classes);
    same = now == count ? same + 1 : 0;
    count = now;
  }
  return classes;
}

}  // namespace

std::vector<std::vector<REGISTER_BIT>> registers_alike(Yosys::RTLIL::Module* module) {
  const SIMULATION netlist(module);
  if (netlist.has_loops()) {
    return {};
  }
  std::unordered_map<int, std::size_t> by_net;
  for (std::size_t i = 0; i < netlist.storage().size(); ++i) {
    if (netlist.storage()[i].m_clocked) {
      by_net.emplace(netlist.storage()[i].m_q, i);
    }
  }
  const CLASSES classes = classes_of(netlist);
  std::map<std::size_t, std::vector<REGISTER_BIT>> members;
  for (RTLIL::Cell* const cell : module->cells().to_vector()) {
    if (RTLIL::builtin_ff_cell_types().count(cell->type) == 0) {
      continue;
    }
    int index = 0;
    for (const RTLIL::SigBit& bit : cell->getPort(Yosys::ID::Q)) {
      const int net = bit.wire != nullptr ? netlist.net(text_of(*bit.wire, bit.offset)) : -1;
      if (const auto found = by_net.find(net); found != by_net.end()) {
        members[classes[found->second]].emplace_back(cell, index);
      }
      ++index;
    }
  }
  std::vector<std::vector<REGISTER_BIT>> alike;
  for (auto& [number, registers] : members) {
    if (registers.size() > 1) {
      alike.push_back(std::move(registers));
    }
  }
  return alike;
}

}  // namespace kpt_yosys
