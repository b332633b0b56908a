// A map as a host says it: which registers carry one value, and which its
// inverse, index by index.
//
// Ownership: plain values.
#ifndef KPT_GROUPS_H
#define KPT_GROUPS_H

#include <string_view>
#include <vector>

#include "db/kpt/kpt_types.h"

/// A register by its texts: a signal, or a block instance with its entity and
/// register type. The texts are the caller's.
struct KPT_REGISTER_NAME {
  // A name alone is a signal.
  KPT_REGISTER_NAME(std::string_view signal) : is_signal(true), name(signal) {}
  KPT_REGISTER_NAME(std::string_view instance, std::string_view its_entity, std::string_view its_type)
      : is_signal(false), name(instance), entity(its_entity), register_type(its_type) {}

  bool is_signal;
  std::string_view name;
  std::string_view entity;
  std::string_view register_type;
};

/// One index of one side: registers that carry its value, and registers that
/// carry the inverse.
struct KPT_GROUPS {
  std::vector<KPT_REGISTER_NAME, MEM_STL_ALLOCATOR<KPT_REGISTER_NAME>> same;
  std::vector<KPT_REGISTER_NAME, MEM_STL_ALLOCATOR<KPT_REGISTER_NAME>> inverse;
};

/// One side of a map: the k-th groups are column k (from 1) of its table.
using KPT_GROUPS_SIDE = std::vector<KPT_GROUPS, MEM_STL_ALLOCATOR<KPT_GROUPS>>;

#endif
