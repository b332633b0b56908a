// The texts by which a pass names a register. Views: nothing is owned.
#ifndef KPT_REGISTER_TEXTS_H
#define KPT_REGISTER_TEXTS_H

#include <string_view>

#include "db/kpt/kpt_keypoints_db_impl.h"

struct KPT_KEYPOINTS_DB_IMPL::REGISTER_TEXTS {
  // NOLINTNEXTLINE(google-explicit-constructor): a name alone is a signal
  REGISTER_TEXTS(std::string_view signal) : is_signal(true), name(signal) {}
  REGISTER_TEXTS(std::string_view instance, std::string_view its_entity, std::string_view its_type)
      : is_signal(false), name(instance), entity(its_entity), register_type(its_type) {}

  bool is_signal;
  std::string_view name;
  std::string_view entity;
  std::string_view register_type;
};

#endif
