// A map as a host describes it: for each index, the registers that hold its
// value and the registers that hold the inverse.
//
// Ownership: plain values.
#ifndef KPT_GROUPS_H
#define KPT_GROUPS_H

#include <string_view>
#include <vector>

#include "db/kpt/kpt_types.h"

/// The texts of a register: a signal has a name, a block instance also has an
/// entity and a register type. The caller owns the texts.
struct KPT_REGISTER_NAME {
  // Only a name: a signal. Not explicit, so that a text can be passed.
  KPT_REGISTER_NAME(std::string_view signal) : is_signal(true), name(signal) {}
  KPT_REGISTER_NAME(std::string_view instance, std::string_view its_entity, std::string_view its_type)
      : is_signal(false), name(instance), entity(its_entity), register_type(its_type) {}

  bool is_signal;
  std::string_view name;
  std::string_view entity;
  std::string_view register_type;
};

/// One index of one side: registers that hold its value, and registers that
/// hold the inverse.
struct KPT_GROUPS {
  std::vector<KPT_REGISTER_NAME, MEM_STL_ALLOCATOR<KPT_REGISTER_NAME>> same;
  std::vector<KPT_REGISTER_NAME, MEM_STL_ALLOCATOR<KPT_REGISTER_NAME>> inverse;
};

/// One side of a map: element k (from 0) is column k + 1 of its table.
using KPT_GROUPS_SIDE = std::vector<KPT_GROUPS, MEM_STL_ALLOCATOR<KPT_GROUPS>>;

#endif
