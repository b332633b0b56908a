// A register of a netlist: a signal, known by its name, or a block instance,
// known by its name, its entity and its register type.
//
// Ownership: as KPT_KEYPOINT. Owns its texts and attributes. What only a block
// instance or an attribute needs is allocated when it is first needed, so a
// signal costs 64 bytes, one line of the cache, beside its name.
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
  /// Takes name, id and kind, and the texts of a block instance. Attributes
  /// stay behind: clients annotate one netlist's register, not its copies.
  KPT_REGISTER_KEYPOINT_IMPL(const KPT_REGISTER_KEYPOINT_IMPL& other);
  KPT_REGISTER_KEYPOINT_IMPL& operator=(const KPT_REGISTER_KEYPOINT_IMPL&) = delete;
  ~KPT_REGISTER_KEYPOINT_IMPL() override;

  bool is_register() const override;
  void set_element_name(std::string_view name) override;

  const KPT_STRING& get_entity_name() const;
  const KPT_STRING& get_register_type() const;
  bool register_is_signal() const { return kind() == SIGNAL; }
  bool register_is_blockinstance() const { return kind() == BLOCK_INSTANCE; }

  /// Renames and, for a block instance, makes it a signal with empty entity
  /// and type. True; false, changing nothing, only for a kind that is neither.
  bool substitute_with_signal(std::string_view name);
  /// Sets the three texts first, whatever the kind; then makes a signal a
  /// block instance. True; false only for a kind that is neither, whose texts
  /// are replaced all the same.
  bool substitute_with_instance(std::string_view name, std::string_view entity, std::string_view register_type);

  /// Sets the attribute, new or not. Always true.
  bool add_attribute(std::string_view name, std::string_view value);
  /// False when there is no such attribute.
  bool remove_attribute(std::string_view name);
  /// Empty for an absent attribute, as for one whose value is empty.
  KPT_STRING get_attribute(std::string_view name) const;
  const KPT_ATTRIBUTES& attributes() const;

  using KPT_KEYPOINT::operator!=;
  /// Unequal when ids, names, entities or register types differ, asked in
  /// this order. Kind and attributes take no part.
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
  // The texts under which the set entered the keypoint, whatever it is called now.
  struct KEY {
    std::string_view name;
    std::string_view register_type;
  };
  KEY key() const { return m_extras == nullptr ? KEY{m_element_name, {}} : key_in_extras(); }
  KEY key_in_extras() const;
  // Kind and texts are those that the set entered.
  bool is_as_entered() const { return m_extras == nullptr || !has_kept_key(); }
  bool has_kept_key() const;
  // The keypoint has left its set: its texts and id stay, its attributes go.
  void retire() noexcept;

  std::unique_ptr<EXTRAS> m_extras;
};

#endif
