#include "db/kpt/kpt_register_keypoint.h"

#include <cassert>

#include "db/kpt/kpt_register_keypoint_impl.h"

namespace {

KPT_REGISTER_KEYPOINT_IMPL& checked(KPT_REGISTER_KEYPOINT_IMPL* keypoint) {
  assert(keypoint != nullptr);
  return *keypoint;
}

}  // namespace

const KPT_STRING& KPT_REGISTER_KEYPOINT::get_name() const { return checked(m_impl).get_element_name(); }

long KPT_REGISTER_KEYPOINT::get_id() const { return checked(m_impl).get_kpid(); }

std::optional<KPT_SET_ENUM> KPT_REGISTER_KEYPOINT::get_side() const { return checked(m_impl).get_side(); }

const KPT_STRING& KPT_REGISTER_KEYPOINT::get_entity_name() const { return checked(m_impl).get_entity_name(); }

const KPT_STRING& KPT_REGISTER_KEYPOINT::get_type() const { return checked(m_impl).get_register_type(); }

bool KPT_REGISTER_KEYPOINT::is_signal() const { return checked(m_impl).register_is_signal(); }

bool KPT_REGISTER_KEYPOINT::is_block_instance() const { return checked(m_impl).register_is_blockinstance(); }

bool KPT_REGISTER_KEYPOINT::substitute_with_signal(std::string_view name) const {
  return checked(m_impl).substitute_with_signal(name);
}

bool KPT_REGISTER_KEYPOINT::substitute_with_instance(std::string_view name, std::string_view entity,
                                                     std::string_view register_type) const {
  return checked(m_impl).substitute_with_instance(name, entity, register_type);
}

bool KPT_REGISTER_KEYPOINT::add_attribute(std::string_view name, std::string_view value) const {
  return checked(m_impl).add_attribute(name, value);
}

bool KPT_REGISTER_KEYPOINT::remove_attribute(std::string_view name) const {
  return checked(m_impl).remove_attribute(name);
}

KPT_STRING KPT_REGISTER_KEYPOINT::get_attribute(std::string_view name) const {
  return checked(m_impl).get_attribute(name);
}

KPT_ATTRIBUTE_LIST KPT_REGISTER_KEYPOINT::get_attributes() const { return checked(m_impl).attributes().sorted(); }
