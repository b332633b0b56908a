// The values of the nets and registers of a netlist, and the next values of the registers, as
// functions of its inputs and of the present values of its registers, in any algebra of bits.
//
// Ownership: the caller owns the algebra and the netlist, which outlive the frame.
#ifndef FRAME_H
#define FRAME_H

#include <string>
#include <unordered_map>
#include <vector>

#include "simulation.h"

namespace kpt_yosys {

/// ALGEBRA has a type VALUE and zero(), one(), any(), inverse(a), both(a, b), differ(a, b) and
/// chosen(select, one, zero). any() is a value of which nothing is known, another one each time.
template <class ALGEBRA>
class FRAME {
 public:
  using VALUE = typename ALGEBRA::VALUE;

  /// `held` has the value of each register of storage(). An input that is not among `inputs` is any().
  FRAME(ALGEBRA& algebra, const SIMULATION& netlist, const std::vector<VALUE>& held,
        const std::unordered_map<std::string, VALUE>& inputs)
      : m_algebra(algebra),
        m_netlist(netlist),
        m_held(held),
        m_values(netlist.count_nets(), algebra.zero()),
        m_known(netlist.count_nets(), 0) {
    set(0, algebra.zero());
    set(1, algebra.one());
    for (const auto& [name, net] : netlist.inputs()) {
      const auto input = inputs.find(name);
      set(net, input != inputs.end() ? input->second : algebra.any());
    }
    for (std::size_t i = 0; i < held.size(); ++i) {
      set(netlist.storage()[i].m_q, held[i]);
    }
    for (const SIMULATION::NODE& node : netlist.nodes()) {
      set(node.m_output, evaluated(node));
    }
  }

  VALUE net(int net) { return value(net); }
  /// The register's clock.
  VALUE clock(std::size_t i) { return value(m_netlist.storage()[i].m_clock); }
  VALUE output(std::size_t i) { return kept(m_netlist.storage()[i], m_held[i]); }

  /// The register's value after the next edge of its clock.
  VALUE next(std::size_t i) {
    const SIMULATION::STORAGE& storage = m_netlist.storage()[i];
    const VALUE now = output(i);
    if (!storage.m_clocked) {
      return now;
    }
    const VALUE data = m_algebra.chosen(value(storage.m_enable), value(storage.m_d), now);
    const VALUE reset = constant(storage.m_reset_value);
    const VALUE loaded =
        storage.m_enable_first
            ? m_algebra.chosen(value(storage.m_enable),
                               m_algebra.chosen(value(storage.m_reset), reset, value(storage.m_d)), now)
            : m_algebra.chosen(value(storage.m_reset), reset, data);
    return kept(storage, loaded);
  }

 private:
  void set(int net, VALUE value) {
    m_values[static_cast<std::size_t>(net)] = value;
    m_known[static_cast<std::size_t>(net)] = 1;
  }
  VALUE value(int net) {
    return m_known[static_cast<std::size_t>(net)] != 0 ? m_values[static_cast<std::size_t>(net)] : m_algebra.any();
  }
  VALUE constant(TERNARY value) {
    return value.m_one != 0 ? m_algebra.one() : value.m_zero != 0 ? m_algebra.zero() : m_algebra.any();
  }
  // The value of a register after its asynchronous inputs.
  VALUE kept(const SIMULATION::STORAGE& storage, VALUE held) {
    if (storage.m_load != 0) {
      held = m_algebra.chosen(value(storage.m_load), value(storage.m_load_data), held);
    }
    held = storage.m_set != 0 ? m_algebra.chosen(value(storage.m_set), m_algebra.one(), held) : held;
    return storage.m_clear != 0 ? m_algebra.chosen(value(storage.m_clear), m_algebra.zero(), held) : held;
  }
  VALUE evaluated(const SIMULATION::NODE& node) {
    if (node.m_kind == SIMULATION::KIND::STORAGE) {
      const auto i = static_cast<std::size_t>(node.m_storage);
      return kept(m_netlist.storage()[i], m_held[i]);
    }
    const VALUE a = value(node.m_inputs[0]);
    if (node.m_kind == SIMULATION::KIND::NOT) {
      return m_algebra.inverse(a);
    }
    const VALUE b = value(node.m_inputs[1]);
    if (node.m_kind == SIMULATION::KIND::MUX) {
      return m_algebra.chosen(value(node.m_inputs[2]), b, a);
    }
    return node.m_kind == SIMULATION::KIND::AND ? m_algebra.both(a, b) : m_algebra.differ(a, b);
  }

  ALGEBRA& m_algebra;
  const SIMULATION& m_netlist;
  const std::vector<VALUE>& m_held;
  std::vector<VALUE> m_values;
  std::vector<char> m_known;  // a net that nothing drives is any()
};

}  // namespace kpt_yosys

#endif
