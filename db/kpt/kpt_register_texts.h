// The texts with which a pass names a register, and the hash by which a
// keypoint set finds it. The hash is computed once, however often the register
// is looked up, entered and removed.
//
// Ownership: none. The texts are views, whose texts have to outlive this.
#ifndef KPT_REGISTER_TEXTS_H
#define KPT_REGISTER_TEXTS_H

#include <cstdint>
#include <string_view>

#include "db/kpt/kpt_types.h"

struct KPT_REGISTER_TEXTS {
  // Not explicit: a single name is a signal.
  KPT_REGISTER_TEXTS(std::string_view signal) : KPT_REGISTER_TEXTS(signal, hash_of(signal, {})) {}
  KPT_REGISTER_TEXTS(std::string_view instance, std::string_view its_entity, std::string_view its_type)
      : KPT_REGISTER_TEXTS(instance, its_entity, its_type, hash_of(instance, its_type)) {}
  /// With a known hash.
  KPT_REGISTER_TEXTS(std::string_view signal, std::uint32_t its_hash) : is_signal(true), name(signal), hash(its_hash) {}
  KPT_REGISTER_TEXTS(std::string_view instance, std::string_view its_entity, std::string_view its_type,
                     std::uint32_t its_hash)
      : is_signal(false), name(instance), entity(its_entity), register_type(its_type), hash(its_hash) {}

  bool is_signal;
  std::string_view name;
  std::string_view entity;         // of an instance; not a part of its key
  std::string_view register_type;  // of an instance
  std::uint32_t hash;              // of name and register type, salted per process

 private:
  KPT_EXPORT static std::uint32_t hash_of(std::string_view name, std::string_view register_type) noexcept;
};

#endif
