#include "module_view.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "yosys_version.h"

namespace kpt_yosys {

namespace {

enum class CELL_KIND { OTHER, STORAGE, MEMORY, MEMORY_PORT, TECHNOLOGY, NOT, BUFFER, XOR, XNOR, LUT };

bool is_storage(std::string_view type) {
  constexpr std::array COARSE{"$ff",     "$dff",  "$dffe",  "$dffsr",  "$dffsre", "$adff",    "$adffe",    "$aldff",
                              "$aldffe", "$sdff", "$sdffe", "$sdffce", "$dlatch", "$adlatch", "$dlatchsr", "$sr"};
  constexpr std::array FINE{"$_FF_", "$_DFF", "$_ALDFF", "$_SDFF", "$_DLATCH", "$_SR_"};
  if (type.starts_with("$_")) {
    return std::any_of(FINE.begin(), FINE.end(), [type](const char* prefix) { return type.starts_with(prefix); });
  }
  return std::find(COARSE.begin(), COARSE.end(), type) != COARSE.end();
}

CELL_KIND kind_of(std::string_view type) {
  if (type.starts_with('\\')) {
    return CELL_KIND::TECHNOLOGY;
  }
  if (type == "$not" || type == "$_NOT_") {
    return CELL_KIND::NOT;
  }
  if (type == "$pos" || type == "$_BUF_") {
    return CELL_KIND::BUFFER;
  }
  if (type == "$xor" || type == "$_XOR_") {
    return CELL_KIND::XOR;
  }
  if (type == "$xnor" || type == "$_XNOR_") {
    return CELL_KIND::XNOR;
  }
  if (type == "$mem_v2" || type == "$mem") {
    return CELL_KIND::MEMORY;
  }
  if (type == "$memrd_v2" || type == "$memrd") {
    return CELL_KIND::MEMORY_PORT;
  }
  if (type == "$lut") {
    return CELL_KIND::LUT;
  }
  return is_storage(type) ? CELL_KIND::STORAGE : CELL_KIND::OTHER;
}

SOURCE constant(RTLIL::State value, bool inverted) {
  if (value != RTLIL::State::S0 && value != RTLIL::State::S1) {
    return {SOURCE_KIND::UNDEFINED, -1, false};
  }
  return {(value == RTLIL::State::S1) != inverted ? SOURCE_KIND::ONE : SOURCE_KIND::ZERO, -1, false};
}

}  // namespace

MODULE_VIEW::MODULE_VIEW(RTLIL::Module* module, const TECHNOLOGY& technology, const WIRE_NUMBERS& asked)
    : m_module(module), m_sigmap(module) {
  for (const auto& [name, wire] : module->wires_) {
    if (asked.contains(wire->hashidx_)) {
      m_wires.emplace(wire->hashidx_, wire);
    }
  }
  read_cells(technology);
  read_memories();
  collect_nets();
  name_flops();
  find_inverted_data();
}

NET MODULE_VIEW::net_of(RTLIL::SigBit bit) {
  if (bit.wire == nullptr) {
    return {};
  }
  m_wires.emplace(bit.wire->hashidx_, bit.wire);
  return {bit.wire->hashidx_, bit.offset};
}

void MODULE_VIEW::read_cells(const TECHNOLOGY& technology) {
  for (const auto& [name, cell] : m_module->cells_) {
    switch (kind_of(cell->type.c_str())) {
      case CELL_KIND::STORAGE:
        add_flops(cell);
        break;
      case CELL_KIND::MEMORY:
        if (cell->getParam(Yosys::ID::WR_PORTS).as_int() > 0) {
          m_memories.push_back({text_of_spelling(cell->getParam(Yosys::ID::MEMID).decode_string()),
                                cell->getParam(Yosys::ID::WIDTH).as_int(), cell->getParam(Yosys::ID::SIZE).as_int(),
                                cell->getParam(Yosys::ID::OFFSET).as_int()});
        }
        add_memory_flops(cell, cell->getPort(Yosys::ID::RD_DATA), cell->getParam(Yosys::ID::RD_CLK_ENABLE));
        break;
      case CELL_KIND::MEMORY_PORT:
        add_memory_flops(cell, cell->getPort(Yosys::ID::DATA),
                         RTLIL::Const(cell->getParam(Yosys::ID::CLK_ENABLE).as_bool(), 1));
        break;
      case CELL_KIND::TECHNOLOGY:
        add_technology_flops(cell, technology);
        break;
      case CELL_KIND::NOT:
      case CELL_KIND::BUFFER:
        add_unary(cell, kind_of(cell->type.c_str()) == CELL_KIND::NOT);
        break;
      case CELL_KIND::XOR:
      case CELL_KIND::XNOR:
        add_xor(cell, kind_of(cell->type.c_str()) == CELL_KIND::XNOR);
        break;
      case CELL_KIND::LUT:
        add_lut(cell);
        break;
      case CELL_KIND::OTHER:
        break;
    }
  }
}

// Memories whose ports are cells of their own.
void MODULE_VIEW::read_memories() {
  if (m_module->memories.empty()) {
    return;
  }
  std::set<std::string> written;
  for (const auto& [name, cell] : m_module->cells_) {
    if (const std::string_view type = cell->type.c_str(); type == "$memwr_v2" || type == "$memwr") {
      written.insert(text_of_spelling(cell->getParam(Yosys::ID::MEMID).decode_string()));
    }
  }
  for (const auto& [name, memory] : m_module->memories) {
    if (const std::string text = text_of(name); written.contains(text)) {
      m_memories.push_back({text, memory->width, memory->size, memory->start_offset});
    }
  }
}

void MODULE_VIEW::add_flops(RTLIL::Cell* cell) {
  const RTLIL::SigSpec output = cell->getPort(Yosys::ID::Q);
  const RTLIL::SigSpec data = cell->hasPort(Yosys::ID::D) ? cell->getPort(Yosys::ID::D) : RTLIL::SigSpec();
  for (int i = 0; i < output.size(); ++i) {
    add_flop(cell, i, output[i], i < data.size() ? data[i] : RTLIL::SigBit());
  }
}

// A port that is read at a clock edge holds the value that was read: it is the register that became part of it.
void MODULE_VIEW::add_memory_flops(RTLIL::Cell* cell, const RTLIL::SigSpec& data, const RTLIL::Const& clocked) {
  // A constant of Yosys has no `empty` in all versions. NOLINTNEXTLINE(readability-container-size-empty)
  const int width = clocked.size() == 0 ? 0 : data.size() / clocked.size();
  for (int i = 0; i < data.size() && width > 0; ++i) {
    if (bit_of(clocked, i / width) == RTLIL::State::S1) {
      add_flop(cell, i, data[i], RTLIL::SigBit());
    }
  }
}

void MODULE_VIEW::add_technology_flops(RTLIL::Cell* cell, const TECHNOLOGY& technology) {
  if (technology.empty()) {
    return;
  }
  const std::string type = cell->type.c_str();
  for (const auto& [port, signal] : cell->connections_) {
    if (!technology.contains(type + "/" + port.c_str())) {
      continue;
    }
    int index = 0;
    for (const RTLIL::SigBit& bit : signal) {
      add_flop(cell, index++, bit, RTLIL::SigBit());
      m_flops.back().m_type = text_of(cell->type);
      m_flops.back().m_port = text_of(port);
    }
  }
}

void MODULE_VIEW::add_flop(RTLIL::Cell* cell, int index, RTLIL::SigBit output, RTLIL::SigBit data) {
  FLOP flop;
  flop.m_cell = cell->hashidx_;
  flop.m_index = index;
  flop.m_cell_name = cell->name.c_str();
  flop.m_output = m_sigmap(output);
  flop.m_data = data;
  if (flop.m_output.wire != nullptr) {
    m_by_output[flop.m_output] = static_cast<int>(m_flops.size());
  }
  m_flops.push_back(std::move(flop));
}

void MODULE_VIEW::add_unary(RTLIL::Cell* cell, bool inverts) {
  const RTLIL::SigSpec& input = cell->getPort(Yosys::ID::A);
  const RTLIL::SigSpec& output = cell->getPort(Yosys::ID::Y);
  for (int i = 0; i < output.size() && i < input.size(); ++i) {
    m_inverters[m_sigmap(output[i])] = {input[i], inverts};
  }
}

void MODULE_VIEW::add_xor(RTLIL::Cell* cell, bool inverts) {
  const RTLIL::SigSpec& a = cell->getPort(Yosys::ID::A);
  const RTLIL::SigSpec& b = cell->getPort(Yosys::ID::B);
  const RTLIL::SigSpec& output = cell->getPort(Yosys::ID::Y);
  for (int i = 0; i < output.size() && i < a.size() && i < b.size(); ++i) {
    RTLIL::SigBit value = a[i];
    RTLIL::SigBit with = b[i];
    if (m_sigmap(value).wire == nullptr) {
      std::swap(value, with);
    }
    with = m_sigmap(with);
    if (with == RTLIL::State::S0 || with == RTLIL::State::S1) {
      m_inverters[m_sigmap(output[i])] = {value, inverts != (with == RTLIL::State::S1)};
    }
  }
}

void MODULE_VIEW::add_lut(RTLIL::Cell* cell) {
  const RTLIL::SigSpec& input = cell->getPort(Yosys::ID::A);
  if (input.size() != 1) {
    return;
  }
  const RTLIL::Const& table = cell->getParam(Yosys::ID::LUT);
  if (table.size() == 2 && table[0] != table[1]) {
    m_inverters[m_sigmap(cell->getPort(Yosys::ID::Y)[0])] = {input[0], table[0] == RTLIL::State::S1};
  }
}

// A register or an inverter drives one net itself. All other nets get its value
// through connections of the module, so these are all.
void MODULE_VIEW::collect_nets() {
  for (const auto& [output, inverter] : m_inverters) {
    const auto flop = m_by_output.find(m_sigmap(inverter.m_input));
    if (inverter.m_inverts && flop != m_by_output.end()) {
      m_by_inverted_output[output] = flop->second;
      m_flops[static_cast<std::size_t>(flop->second)].m_inverted.push_back(net_of(output));
    }
  }
  for (FLOP& flop : m_flops) {
    flop.m_nets.push_back(net_of(flop.m_output));
  }
  for (const auto& [left, right] : m_module->connections()) {
    for (int i = 0; i < left.size(); ++i) {
      collect_net(left[i]);
      collect_net(right[i]);
    }
  }
}

void MODULE_VIEW::collect_net(RTLIL::SigBit bit) {
  const RTLIL::SigBit stands_for_all = m_sigmap(bit);
  if (bit.wire == nullptr || bit == stands_for_all) {
    return;
  }
  if (const auto flop = m_by_output.find(stands_for_all); flop != m_by_output.end()) {
    m_flops[static_cast<std::size_t>(flop->second)].m_nets.push_back(net_of(bit));
  } else if (const auto inverse = m_by_inverted_output.find(stands_for_all); inverse != m_by_inverted_output.end()) {
    m_flops[static_cast<std::size_t>(inverse->second)].m_inverted.push_back(net_of(bit));
  }
}

void MODULE_VIEW::name_flops() {
  for (FLOP& flop : m_flops) {
    NET best;
    const RTLIL::Wire* best_wire = nullptr;
    for (const NET& net : flop.m_nets) {
      const RTLIL::Wire* const candidate = wire(net.m_wire);
      if (candidate != nullptr && (best_wire == nullptr || names_better(*candidate, *best_wire))) {
        best = net;
        best_wire = candidate;
      }
    }
    flop.m_name = best_wire != nullptr ? text_of(*best_wire, best.m_bit) : std::string();
  }
}

void MODULE_VIEW::find_inverted_data() {
  for (FLOP& flop : m_flops) {
    flop.m_data_net = net_of(flop.m_data);
    const auto inverter = m_inverters.find(m_sigmap(flop.m_data));
    if (inverter != m_inverters.end() && inverter->second.m_inverts) {
      flop.m_uninverted_data = net_of(inverter->second.m_input);
    }
  }
}

SOURCE MODULE_VIEW::source(const NET& net) const {
  const RTLIL::Wire* const found = wire(net.m_wire);
  return found != nullptr && net.m_bit < found->width ? source(canonical(net)) : SOURCE{};
}

SOURCE MODULE_VIEW::source(RTLIL::SigBit bit) const {
  constexpr int LONGEST_CHAIN = 64;  // a chain of inverters may be a loop
  bool inverted = false;
  RTLIL::SigBit at = m_sigmap(bit);
  for (int step = 0; step < LONGEST_CHAIN; ++step) {
    if (at.wire == nullptr) {
      return constant(at.data, inverted);
    }
    if (const auto flop = m_by_output.find(at); flop != m_by_output.end()) {
      return {SOURCE_KIND::FLOP, flop->second, inverted};
    }
    const auto inverter = m_inverters.find(at);
    if (inverter == m_inverters.end()) {
      return {};
    }
    inverted = inverted != inverter->second.m_inverts;
    at = m_sigmap(inverter->second.m_input);
  }
  return {};
}

void MODULE_VIEW::note_readers() {
  m_readers.assign(m_flops.size(), 0);
  m_readers_noted = true;
  const auto count = [this](RTLIL::SigBit bit) {
    if (const auto flop = m_by_output.find(m_sigmap(bit)); flop != m_by_output.end()) {
      ++m_readers[static_cast<std::size_t>(flop->second)];
    }
  };
  for (const auto& [name, cell] : m_module->cells_) {
    for (const auto& [port, signal] : cell->connections_) {
      if (cell->input(port) || !cell->output(port)) {
        std::for_each(signal.begin(), signal.end(), count);
      }
    }
  }
  for (const auto& [name, wire] : m_module->wires_) {
    for (int bit = 0; wire->port_output && bit < wire->width; ++bit) {
      count(RTLIL::SigBit(wire, bit));
    }
  }
}

std::string MODULE_VIEW::technology_driver(const FLOP& before) const {
  for (const NET& net : before.m_nets) {
    RTLIL::SigBit bit = canonical(net);
    if (bit.wire == nullptr || m_by_output.count(bit) != 0) {
      continue;
    }
    std::string pin = technology_pin(bit, before.m_cell_name);
    if (const auto inverter = m_inverters.find(bit); pin.empty() && inverter != m_inverters.end()) {
      pin = technology_pin(m_sigmap(inverter->second.m_input), before.m_cell_name);
    }
    if (!pin.empty()) {
      return pin;
    }
  }
  return {};
}

// When the direction of a pin is not known, the cell has to have the name of the flip-flop.
std::string MODULE_VIEW::technology_pin(RTLIL::SigBit bit, const std::string& cell_name) const {
  for (const auto& [name, cell] : m_module->cells_) {
    if (!is_public(cell->type) || m_by_output.count(bit) != 0) {
      continue;
    }
    const RTLIL::Module* const type = m_module->design->module(cell->type);
    if (type == nullptr ? cell_name != name.c_str() : !type->get_blackbox_attribute()) {
      continue;
    }
    for (const auto& [port, signal] : cell->connections_) {
      const RTLIL::Wire* const pin = type != nullptr ? type->wire(port) : nullptr;
      const bool may_drive = type == nullptr || (pin != nullptr && pin->port_output);
      if (may_drive && !m_sigmap(signal).extract(bit).empty()) {
        return std::string(cell->type.c_str()) + "/" + port.c_str();
      }
    }
  }
  return {};
}

RTLIL::Wire* MODULE_VIEW::wire(unsigned int number) const {
  const auto found = m_wires.find(number);
  return found != m_wires.end() ? found->second : nullptr;
}

RTLIL::SigBit MODULE_VIEW::canonical(const NET& net) const {
  RTLIL::Wire* const found = wire(net.m_wire);
  return found != nullptr && net.m_bit < found->width ? m_sigmap(RTLIL::SigBit(found, net.m_bit)) : RTLIL::SigBit();
}

}  // namespace kpt_yosys
