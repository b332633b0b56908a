#include "tracker.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <stdexcept>

#include "pass_kinds.h"
#include "yosys_version.h"

namespace kpt_yosys {

namespace {

// Reading Verilog makes these for writes to memories and to selected bits. They are not registers of the source.
bool is_made_by_front_end(const std::string& name) {
  constexpr std::array MARKS{"$memwr$", "$bitselwrite$", "$lookahead"};
  return std::any_of(MARKS.begin(), MARKS.end(),
                     [&name](const char* mark) { return name.find(mark) != std::string::npos; });
}

std::size_t mixed(std::size_t a, std::size_t b) { return (a ^ b) * 0x9E3779B97F4A7C15ULL; }

// Changes when an object of the module is added, removed or renamed.
std::size_t fingerprint_of(const RTLIL::Module& module) {
  std::size_t objects = 0;
  for (const auto& [name, wire] : module.wires_) {
    objects += mixed(wire->hashidx_, static_cast<std::size_t>(wire->name.index_));
  }
  for (const auto& [name, cell] : module.cells_) {
    objects += mixed(cell->hashidx_, static_cast<std::size_t>(cell->type.index_));
  }
  return mixed(objects + module.connections_.size(), module.hashidx_ + module.processes.size());
}

RTLIL::Module* the_only_top(RTLIL::Design* design) {
  std::set<const RTLIL::Module*> used;
  for (const auto& [name, module] : design->modules_) {
    for (const auto& [cell_name, cell] : module->cells_) {
      used.insert(design->module(cell->type));
    }
  }
  RTLIL::Module* top = nullptr;
  for (const auto& [name, module] : design->modules_) {
    if (module->get_bool_attribute(Yosys::ID::top)) {
      return module;
    }
    if (!used.contains(module) && !module->get_blackbox_attribute()) {
      if (top != nullptr) {
        return nullptr;
      }
      top = module;
    }
  }
  return top;
}

}  // namespace

// Notes that a connection changed, which the fingerprint does not show.
struct TRACKER::CHANGES : RTLIL::Monitor {
  explicit CHANGES(RTLIL::Design* design) : m_design(design) { m_design->monitors.insert(this); }
  ~CHANGES() override { m_design->monitors.erase(this); }
  CHANGES(const CHANGES&) = delete;
  CHANGES& operator=(const CHANGES&) = delete;

  void notify_connect(RTLIL::Cell*, CONNECTED_PORT, const RTLIL::SigSpec&, const RTLIL::SigSpec&) override {
    m_any = true;
  }
  void notify_connect(RTLIL::Module*, const RTLIL::SigSig&) override { m_any = true; }
  void notify_connect(RTLIL::Module*, const std::vector<RTLIL::SigSig>&) override { m_any = true; }
  void notify_blackout(RTLIL::Module*) override { m_any = true; }

  RTLIL::Design* m_design;
  bool m_any = true;
};

TRACKER::TRACKER(RTLIL::Design* design, std::string top) : m_changes(std::make_unique<CHANGES>(design)) {
  m_now.m_top = std::move(top);
  boundary(design, "");
}

TRACKER::~TRACKER() = default;

// Another module of the same name is another design, except after passes that make a module anew.
RTLIL::Module* TRACKER::find_top(RTLIL::Design* design, const std::string& pass) const {
  RTLIL::Module* by_name = nullptr;
  for (const auto& [name, module] : design->modules_) {
    if (module->hashidx_ == m_top_number) {
      return module;
    }
    if (text_of(module->name) == m_now.m_top) {
      by_name = module;
    }
  }
  if (!started()) {
    return by_name == nullptr && m_now.m_top.empty() ? the_only_top(design) : by_name;
  }
  return keeps_names(pass) ? by_name : nullptr;
}

bool TRACKER::changed(RTLIL::Design* design, const std::string& pass) {
  std::size_t fingerprint = 0;
  for (const auto& [name, module] : design->modules_) {
    fingerprint += fingerprint_of(*module);
  }
  // State machines are re-encoded inside their cells, unused nets are removed
  // without notice to monitors, and a cell may be renamed.
  const bool unseen = removes_unused(pass) || pass.starts_with("fsm") || pass == "rename";
  const bool any = unseen || m_changes->m_any || fingerprint != m_fingerprint;
  m_fingerprint = fingerprint;
  m_changes->m_any = false;
  return any;
}

void TRACKER::boundary(RTLIL::Design* design, const std::string& pass) {
  if (!changed(design, pass)) {
    return;
  }
  RTLIL::Module* const top = find_top(design, pass);
  if (top == nullptr && started()) {
    throw std::runtime_error("the top module " + m_now.m_top + " is gone");
  }
  if (started()) {
    follow(top, pass);
  } else if (top != nullptr && !has_processes(top)) {
    begin(top);
  }
}

std::string TRACKER::why_not_started(RTLIL::Design* design) const {
  if (find_top(design, "") != nullptr) {
    return "the design still has processes";
  }
  return m_now.m_top.empty() ? "the design has no top module" : "there is no module " + m_now.m_top;
}

void TRACKER::prepare(const std::string& pass, const std::vector<std::string>& args) {
  m_recognition.reset();
  if (!started()) {
    return;
  }
  if (keeps_names(pass)) {
    m_now.m_view->index_names();
  }
  if (!only_simplifies(pass)) {
    m_now.m_view->note_readers();
  }
  if (makes_registers_anew(pass, args)) {
    m_recognition = std::make_unique<RECOGNITION>(*m_now.m_view);
  }
}

TRACKING TRACKER::put_aside(RTLIL::Design* design) {
  if (started()) {
    m_now.m_view->index_names();
    if (const RTLIL::Module* const top = find_top(design, ""); top != nullptr) {
      m_now.m_top = text_of(top->name);  // it may have been renamed
    }
  }
  return m_now;
}

void TRACKER::take_up(RTLIL::Design* design, TRACKING kept) {
  m_now = std::move(kept);
  m_top_number = 0;
  m_changes->m_any = true;
  boundary(design, "design");
}

void TRACKER::begin(RTLIL::Module* top) {
  m_now.m_top = text_of(top->name);
  m_top_number = top->hashidx_;
  m_now.m_view = std::make_shared<NETLIST_VIEW>(top, m_now.m_technology, WIRE_NUMBERS());
  begin_points(current_names());
}

void TRACKER::begin_points(const NAMES& names) {
  m_now.m_points.clear();
  m_now.m_machines.clear();
  m_now.m_memories.clear();
  m_now.m_made_by_front_end = 0;
  for (const auto& [location, name] : names) {
    if (is_made_by_front_end(name)) {
      ++m_now.m_made_by_front_end;
      continue;
    }
    POINT point;
    point.m_location = location;
    point.m_cell = m_now.m_view->flop(location).m_cell;
    point.m_name = name;
    if (const FLOP& flop = m_now.m_view->flop(location); !flop.m_type.empty()) {
      point.m_instance = m_now.m_view->path(location.m_instance) + text_of_spelling(flop.m_cell_name);
      point.m_entity = flop.m_type;
      point.m_pin = flop.m_port;
    }
    m_now.m_points.push_back(std::move(point));
  }
  begin_words();
  std::stable_sort(m_now.m_points.begin(), m_now.m_points.end(),
                   [](const POINT& a, const POINT& b) { return a.m_name < b.m_name; });
}

void TRACKER::restart() {
  if (started()) {
    begin_points(current_names());
  }
}

TRACKER::NAMES TRACKER::current_names() const {
  NAMES names;
  for (std::size_t i = 0; i < m_now.m_view->instances().size(); ++i) {
    const int instance = static_cast<int>(i);
    for (std::size_t k = 0; k < m_now.m_view->module(instance).flops().size(); ++k) {
      const LOCATION location{instance, static_cast<int>(k)};
      names.emplace(location, m_now.m_view->name(location));
    }
  }
  std::set<LOCATION> settled;
  for (const POINT& point : m_now.m_points) {
    if (point.m_fate == FATE::LIVE && m_now.m_view->bears(point.m_location, point.m_name) &&
        settled.insert(point.m_location).second) {
      names[point.m_location] = point.m_name;
    }
  }
  return names;
}

void TRACKER::follow(RTLIL::Module* top, const std::string& pass) {
  m_now.m_top = text_of(top->name);
  m_top_number = top->hashidx_;
  WIRE_NUMBERS asked = m_now.m_view->wires();
  for (const POINT& point : m_now.m_points) {
    for (const NET& net : point.m_nets) {
      asked.insert(net.m_wire);
    }
  }
  auto after = std::make_shared<NETLIST_VIEW>(top, m_now.m_technology, asked);
  if (maps_to_technology(pass) && find_technology({*m_now.m_view, *after, pass})) {
    after = std::make_shared<NETLIST_VIEW>(top, m_now.m_technology, asked);
  }
  if (!only_simplifies(pass)) {
    after->note_readers();
  }
  const STEP step{*m_now.m_view, *after, pass};
  const std::vector<POINT> before = m_recognition != nullptr ? m_now.m_points : std::vector<POINT>();
  for (POINT& point : m_now.m_points) {
    follow_point(step, point);
  }
  if (m_recognition != nullptr) {
    recognise(step, before);
    m_recognition.reset();
  }
  follow_memories(step);
  find_machines(step);
  for (std::size_t i = 0; i < m_now.m_machines.size(); ++i) {
    follow_machine(step, static_cast<int>(i));
  }
  m_now.m_view = std::move(after);
}

void TRACKER::follow_point(const STEP& step, POINT& point) {
  if (point.m_fate == FATE::UNKNOWN) {
    find_again(step, point);
    return;
  }
  if (point.m_fate != FATE::LIVE) {
    return;
  }
  const FLOP& flop = step.m_before.flop(point.m_location);
  const int readers = step.m_before.count_readers(point.m_location);
  const int instance = step.m_after.instance(step.m_before.path(point.m_location.m_instance));
  if (find_by_moved_inverter(step, point, flop, instance) || find_by_net(step, point, flop, instance) ||
      find_by_name(step, point, flop) || find_by_cell(step, point, flop, instance)) {
    note_absorbed(step, point, readers);
  } else {
    lose(step, point);
  }
}

// Such a register may vanish without readers although it drives something: it is part of that.
void TRACKER::note_absorbed(const STEP& step, POINT& point, int readers) {
  const bool counted = !only_simplifies(step.m_pass);
  if (counted && point.m_fate == FATE::LIVE && step.m_after.count_readers(point.m_location) < readers) {
    point.m_absorbed = step.m_pass;
  }
}

// The pass moves an inverter from the data input of a register to its readers, and the
// register keeps its net. The nets that had the inverse keep their meaning. Without such a
// net, the data input decides: it is now on the net of the inverter's input. (That net may
// have been joined with others, because the inverter of the register before moved as well.)
bool TRACKER::find_by_moved_inverter(const STEP& step, POINT& point, const FLOP& flop, int instance) {
  if (step.m_pass != "opt_ffinv" || instance < 0) {
    return false;
  }
  const MODULE_VIEW& module = step.m_after.module(instance);
  for (const NET& net : flop.m_inverted) {
    if (settle(step, point, module.source(net), instance, true)) {
      return true;
    }
  }
  for (const NET& net : flop.m_nets) {
    const SOURCE source = module.source(net);
    if (source.m_kind == SOURCE_KIND::FLOP) {
      const NET& data = module.flops()[static_cast<std::size_t>(source.m_flop)].m_data_net;
      const bool moved = data == flop.m_uninverted_data && data != flop.m_data_net && data.m_wire != 0;
      return settle(step, point, source, instance, moved);
    }
  }
  return false;
}

bool TRACKER::find_by_net(const STEP& step, POINT& point, const FLOP& flop, int instance) {
  if (instance < 0) {
    return false;
  }
  const MODULE_VIEW& module = step.m_after.module(instance);
  const auto settles = [&](const NET& net, bool inverted) {
    return settle(step, point, module.source(net), instance, inverted);
  };
  return std::any_of(flop.m_nets.begin(), flop.m_nets.end(), [&](const NET& net) { return settles(net, false); }) ||
         std::any_of(flop.m_inverted.begin(), flop.m_inverted.end(),
                     [&](const NET& net) { return settles(net, true); });
}

// The net that has the name now is the same as before only if no other net had it.
bool TRACKER::find_by_name(const STEP& step, POINT& point, const FLOP& flop) {
  if (!keeps_names(step.m_pass)) {
    return false;
  }
  const std::string name = step.m_before.path(point.m_location.m_instance) + flop.m_name;
  const NETLIST_VIEW::PLACE place = step.m_after.find(name);
  if (place.m_instance < 0 || step.m_before.find(name).m_instance < 0) {
    return false;
  }
  const SOURCE source = step.m_after.module(place.m_instance).source(place.m_bit);
  return settle(step, point, source, place.m_instance, false);
}

// By its cell only after the pass that keeps all cells and replaces their nets.
bool TRACKER::find_by_cell(const STEP& step, POINT& point, const FLOP& flop, int instance) {
  if (step.m_pass != "splitnets" || instance < 0) {
    return false;
  }
  const std::vector<FLOP>& flops = step.m_after.module(instance).flops();
  const auto same = std::find_if(flops.begin(), flops.end(), [&flop](const FLOP& other) {
    return other.m_cell == flop.m_cell && other.m_index == flop.m_index && other.m_port == flop.m_port;
  });
  if (same == flops.end()) {
    return false;
  }
  move(step, point, {instance, static_cast<int>(same - flops.begin())}, point.m_inverted);
  return true;
}

// A cell that Yosys does not know now drives the net of a register. From now on,
// that pin of cells of this type is a register.
bool TRACKER::find_technology(const STEP& step) {
  const std::size_t known = m_now.m_technology.size();
  for (const POINT& point : m_now.m_points) {
    if (point.m_fate != FATE::LIVE) {
      continue;
    }
    const int instance = step.m_after.instance(step.m_before.path(point.m_location.m_instance));
    if (instance >= 0) {
      const std::string pin = step.m_after.module(instance).technology_driver(step.m_before.flop(point.m_location));
      if (!pin.empty()) {
        m_now.m_technology.insert(pin);
      }
    }
  }
  return m_now.m_technology.size() != known;
}

bool TRACKER::settle(const STEP& step, POINT& point, const SOURCE& source, int instance, bool inverted) {
  const bool turned = point.m_inverted != inverted;
  switch (source.m_kind) {
    case SOURCE_KIND::LOGIC:
      return false;
    case SOURCE_KIND::UNDEFINED:
      point.m_fate = FATE::UNDEFINED;
      break;
    case SOURCE_KIND::ZERO:
    case SOURCE_KIND::ONE:
      point.m_fate = (source.m_kind == SOURCE_KIND::ONE) != turned ? FATE::ONE : FATE::ZERO;
      break;
    case SOURCE_KIND::FLOP:
      move(step, point, {instance, source.m_flop}, turned != source.m_inverted);
      return true;
  }
  point.m_pass = step.m_pass;
  return true;
}

void TRACKER::move(const STEP& step, POINT& point, const LOCATION& location, bool inverted) {
  const unsigned int cell = step.m_after.flop(location).m_cell;
  if (point.m_fate != FATE::LIVE || point.m_cell != cell || point.m_inverted != inverted) {
    point.m_pass = step.m_pass;
  }
  point.m_fate = FATE::LIVE;
  point.m_location = location;
  point.m_cell = cell;
  point.m_inverted = inverted;
}

std::string TRACKER::refuse(int point) {
  POINT& refused = m_now.m_points[static_cast<std::size_t>(point)];
  refused.m_fate = FATE::UNKNOWN;
  refused.m_nets.clear();  // it does not come back
  refused.m_last_name.clear();
  return refused.m_pass;
}

void TRACKER::lose(const STEP& step, POINT& point) {
  const FLOP& flop = step.m_before.flop(point.m_location);
  const bool unread = removes_unused(step.m_pass) || step.m_before.count_readers(point.m_location) == 0;
  point.m_pass = step.m_pass;
  point.m_path = step.m_before.path(point.m_location.m_instance);
  if (point.m_machine >= 0) {
    point.m_fate = FATE::IN_MACHINE;
  } else if (unread && point.m_absorbed.empty()) {
    point.m_fate = FATE::NO_FANOUT;
  } else {
    point.m_fate = FATE::UNKNOWN;
    point.m_nets = flop.m_nets;
    point.m_last_name = point.m_path + flop.m_name;
    point.m_pass = unread ? point.m_absorbed : step.m_pass;
  }
}

// A register may become part of something else, like the output register of a
// memory, and come back on its net.
void TRACKER::find_again(const STEP& step, POINT& point) {
  if (keeps_names(step.m_pass)) {
    take_new_net(step, point);
  }
  const int instance = step.m_after.instance(point.m_path);
  for (const NET& net : point.m_nets) {
    if (instance >= 0 && come_back(step, point, step.m_after.module(instance).source(net), instance)) {
      return;
    }
  }
}

// When all nets were made anew, the register comes back on the net of that name.
void TRACKER::take_new_net(const STEP& step, POINT& point) {
  const NETLIST_VIEW::PLACE place = step.m_after.find(point.m_last_name);
  if (place.m_instance < 0 || place.m_bit.wire == nullptr || step.m_before.find(point.m_last_name).m_instance < 0) {
    return;
  }
  point.m_path = step.m_after.path(place.m_instance);
  point.m_nets.push_back({place.m_bit.wire->hashidx_, place.m_bit.offset});
}

bool TRACKER::come_back(const STEP& step, POINT& point, const SOURCE& source, int instance) {
  return source.m_kind == SOURCE_KIND::FLOP && settle(step, point, source, instance, false);
}

std::size_t TRACKER::count_new_registers() const {
  std::set<LOCATION> explained;
  for (const POINT& point : m_now.m_points) {
    if (point.m_fate == FATE::LIVE) {
      explained.insert(point.m_location);
    }
  }
  std::size_t all = 0;
  for (std::size_t i = 0; i < m_now.m_view->instances().size(); ++i) {
    all += m_now.m_view->module(static_cast<int>(i)).flops().size();
  }
  return all - explained.size();
}

}  // namespace kpt_yosys
