// Memories: the words that something writes are registers, and memory_map turns them into flip-flops.
#include <algorithm>
#include <set>

#include "pass_kinds.h"
#include "tracker.h"

namespace kpt_yosys {

namespace {

constexpr int MOST_BITS = 65536;  // a larger memory never becomes flip-flops, and would be most of a database

std::string word_name(const std::string& path, const MEMORY& memory, int address) {
  return path + memory.m_name + "[" + std::to_string(address) + "]";
}

// Finds the memory, which flattening moves to another module.
bool find_held(HELD_MEMORY& held, const NETLIST_VIEW& view) {
  const std::string name = held.m_path + held.m_memory.m_name;
  for (const NETLIST_VIEW::INSTANCE& instance : view.instances()) {
    for (const MEMORY& memory : instance.m_module->memories()) {
      MEMORY as_before = held.m_memory;
      as_before.m_name = memory.m_name;
      if (memory == as_before && instance.m_path + memory.m_name == name) {
        held.m_path = instance.m_path;
        held.m_memory = memory;
        return true;
      }
    }
  }
  return false;
}

// The word in memory_map's name for a cell: "$memory", the word, and a number.
std::string word_of_cell(const FLOP& flop) {
  constexpr std::string_view MARK = "$memory";
  const std::string& name = flop.m_cell_name;
  const std::size_t end = name.rfind('$');
  if (!name.starts_with(MARK) || end < MARK.size()) {
    return {};
  }
  return text_of_spelling(name.substr(MARK.size(), end - MARK.size()));
}

}  // namespace

// After the other registers: a word with the name of one of them is left out.
void TRACKER::begin_words() {
  std::set<std::string> names;
  for (const POINT& point : m_now.m_points) {
    names.insert(point.m_name);
  }
  for (const NETLIST_VIEW::INSTANCE& instance : m_now.m_view->instances()) {
    for (const MEMORY& memory : instance.m_module->memories()) {
      if (memory.m_width > 0 && memory.m_size > 0 && memory.m_size <= MOST_BITS / memory.m_width) {
        add_words(instance.m_path, memory, names);
      }
    }
  }
}

void TRACKER::add_words(const std::string& path, const MEMORY& memory, std::set<std::string>& names) {
  for (int word = 0; word < memory.m_size; ++word) {
    for (int bit = 0; bit < memory.m_width; ++bit) {
      POINT point;
      point.m_fate = FATE::IN_MEMORY;
      point.m_memory = static_cast<int>(m_now.m_memories.size());
      point.m_address = memory.m_offset + word;
      point.m_bit = bit;
      point.m_name = word_name(path, memory, point.m_address);
      if (memory.m_width > 1) {
        point.m_name += "[" + std::to_string(bit) + "]";
      }
      if (names.insert(point.m_name).second) {
        m_now.m_points.push_back(std::move(point));
      }
    }
  }
  m_now.m_memories.push_back({path, memory});
}

void TRACKER::follow_memories(const STEP& step) {
  for (std::size_t i = 0; i < m_now.m_memories.size(); ++i) {
    HELD_MEMORY& held = m_now.m_memories[i];
    if (!held.m_gone && !find_held(held, step.m_after)) {
      held.m_gone = true;
      leave_memory(step, static_cast<int>(i));
    }
  }
}

// The words have become registers, or are gone.
void TRACKER::leave_memory(const STEP& step, int index) {
  const HELD_MEMORY& held = m_now.m_memories[static_cast<std::size_t>(index)];
  const int instance = step.m_pass == "memory_map" ? step.m_after.instance(held.m_path) : -1;
  std::map<std::pair<std::string, int>, int> registers;  // by word and bit
  for (std::size_t i = 0; instance >= 0 && i < step.m_after.module(instance).flops().size(); ++i) {
    const FLOP& flop = step.m_after.module(instance).flops()[i];
    if (const std::string word = word_of_cell(flop); !word.empty()) {
      registers.emplace(std::pair(held.m_path + word, flop.m_index), static_cast<int>(i));
    }
  }
  for (POINT& point : m_now.m_points) {
    if (point.m_fate != FATE::IN_MEMORY || point.m_memory != index) {
      continue;
    }
    const auto found = registers.find({word_name(held.m_path, held.m_memory, point.m_address), point.m_bit});
    if (found != registers.end()) {
      move(step, point, {instance, found->second}, false);
    } else {
      point.m_fate = removes_unused(step.m_pass) ? FATE::NO_FANOUT : FATE::UNKNOWN;
      point.m_pass = step.m_pass;
    }
  }
}

}  // namespace kpt_yosys
