// A register of a netlist: a signal with a name, or a block instance with a
// name, an entity and a register type.
//
// Ownership: like KPT_KEYPOINT; owns its texts and attributes. Memory for a
// block instance or for attributes is allocated when it is first needed. So a
// signal takes 64 bytes, one cache line, and the bytes of its name.
#ifndef KPT_REGISTER_KEYPOINT_IMPL_H
#define KPT_REGISTER_KEYPOINT_IMPL_H

#include <cstdint>
#include <memory>
#include <string_view>

#include "db/kpt/kpt_attributes.h"
#include "db/kpt/kpt_keypoint.h"

class KPT_EXPORT KPT_REGISTER_KEYPOINT_IMPL : public KPT_KEYPOINT {
 public:
  /// A signal register: entity and register type are empty.
  KPT_REGISTER_KEYPOINT_IMPL(long id, std::string_view name);
  /// A block-instance register.
  KPT_REGISTER_KEYPOINT_IMPL(long id, std::string_view name, std::string_view entity, std::string_view register_type);
  /// Copies name, id and kind, and the texts of a block instance. Attributes are
  /// not copied: clients annotate the register of one netlist, not its copies.
  KPT_REGISTER_KEYPOINT_IMPL(const KPT_REGISTER_KEYPOINT_IMPL& other);
  KPT_REGISTER_KEYPOINT_IMPL& operator=(const KPT_REGISTER_KEYPOINT_IMPL&) = delete;
  ~KPT_REGISTER_KEYPOINT_IMPL() override;

  bool is_register() const override;
  void set_element_name(std::string_view name) override;

  const KPT_STRING& get_entity_name() const;
  const KPT_STRING& get_register_type() const;
  bool register_is_signal() const { return kind() == SIGNAL; }
  bool register_is_blockinstance() const { return kind() == BLOCK_INSTANCE; }

  /// Renames the register, and makes a block instance a signal with empty entity
  /// and type. A kind that is neither: false, and nothing changes.
  bool substitute_with_signal(std::string_view name);
  /// Sets the three texts of any kind, and then makes a signal a block instance.
  /// A kind that is neither: false, although its texts were replaced.
  /// True otherwise.
  bool substitute_with_instance(std::string_view name, std::string_view entity, std::string_view register_type);

  /// Sets or replaces the attribute. Always true.
  bool add_attribute(std::string_view name, std::string_view value);
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name);
  /// Empty for an absent attribute.
  KPT_STRING get_attribute(std::string_view name) const;
  const KPT_ATTRIBUTES& attributes() const;

  using KPT_KEYPOINT::operator!=;
  /// True when ids, names, entities or register types differ, compared in this
  /// order. Kind and attributes are not compared.
  bool operator!=(const KPT_REGISTER_KEYPOINT_IMPL& other) const;

  /// Writes a "key_point" element of type "register". Attributes are not
  /// written. Always true.
  bool save_register(KPT_XML_WRITER& writer) const;

 private:
  enum KIND : std::int32_t { SIGNAL = 0, BLOCK_INSTANCE = 1 };
  struct EXTRAS;
  friend class KPT_KEYPOINT_SET_IMPL;
  friend class KPT_KEYPOINT_INDEX;

  KIND kind() const { return m_extras == nullptr ? SIGNAL : kind_in_extras(); }
  KIND kind_in_extras() const;
  EXTRAS& extras();
  void keep_key();
  // The texts under which the set entered the keypoint; it may have been renamed since.
  struct KEY {
    std::string_view name;
    std::string_view register_type;
  };
  KEY key() const { return m_extras == nullptr ? KEY{m_element_name, {}} : key_in_extras(); }
  KEY key_in_extras() const;
  // Whether kind and texts are still those under which the set entered the keypoint.
  bool is_as_entered() const { return m_extras == nullptr || !has_kept_key(); }
  bool has_kept_key() const;
  // The keypoint has left its set: keeps the texts and the id, deletes the attributes.
  void retire() noexcept;

  std::unique_ptr<EXTRAS> m_extras;
};

#endif
