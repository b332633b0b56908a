#include "db/kpt/kpt_register_keypoint_impl.h"

#include "db/kpt/files/kpt_format_words.h"
#include "db/kpt/kpt_attributes.h"
#include "db/kpt/kpt_xml_writer.h"
#include "h/gen_sys.h"

static_assert(sizeof(KPT_REGISTER_KEYPOINT_IMPL) <= 64);

struct KPT_REGISTER_KEYPOINT_IMPL::EXTRAS : KPT_ZEROED {
  struct KEY : KPT_ZEROED {
    KPT_STRING name;
    KPT_STRING register_type;
  };
  KIND kind = SIGNAL;
  KPT_STRING entity;
  KPT_STRING register_type;
  KPT_ATTRIBUTES attributes;
  std::unique_ptr<KEY> key;  // set when the keypoint gets texts other than its set's
};

namespace {

// The entity and the register type of a signal. It is made when the library is
// loaded, because a client may ask at process exit.
const KPT_STRING s_no_text;

}  // namespace

KPT_REGISTER_KEYPOINT_IMPL::KPT_REGISTER_KEYPOINT_IMPL(long id, std::string_view name)
    : KPT_KEYPOINT(KPT_REGISTER_TYPE, id, name) {}

KPT_REGISTER_KEYPOINT_IMPL::KPT_REGISTER_KEYPOINT_IMPL(long id, std::string_view name, std::string_view entity,
                                                       std::string_view register_type)
    : KPT_KEYPOINT(KPT_REGISTER_TYPE, id, name) {
  extras().kind = BLOCK_INSTANCE;
  extras().entity = entity;
  extras().register_type = register_type;
}

KPT_REGISTER_KEYPOINT_IMPL::KPT_REGISTER_KEYPOINT_IMPL(const KPT_REGISTER_KEYPOINT_IMPL& other) : KPT_KEYPOINT(other) {
  if (!other.register_is_signal()) {
    extras().kind = BLOCK_INSTANCE;
    extras().entity = other.get_entity_name();
    extras().register_type = other.get_register_type();
  }
}

KPT_REGISTER_KEYPOINT_IMPL::~KPT_REGISTER_KEYPOINT_IMPL() = default;

KPT_REGISTER_KEYPOINT_IMPL::EXTRAS& KPT_REGISTER_KEYPOINT_IMPL::extras() {
  if (m_extras == nullptr) {
    m_extras = std::make_unique<EXTRAS>();
  }
  return *m_extras;
}

KPT_REGISTER_KEYPOINT_IMPL::KIND KPT_REGISTER_KEYPOINT_IMPL::kind_in_extras() const { return m_extras->kind; }

bool KPT_REGISTER_KEYPOINT_IMPL::is_register() const { return true; }

void KPT_REGISTER_KEYPOINT_IMPL::set_element_name(std::string_view name) {
  keep_key();
  KPT_KEYPOINT::set_element_name(name);
}

const KPT_STRING& KPT_REGISTER_KEYPOINT_IMPL::get_entity_name() const {
  return m_extras == nullptr ? s_no_text : m_extras->entity;
}

const KPT_STRING& KPT_REGISTER_KEYPOINT_IMPL::get_register_type() const {
  return m_extras == nullptr ? s_no_text : m_extras->register_type;
}

bool KPT_REGISTER_KEYPOINT_IMPL::substitute_with_signal(std::string_view name) {
  if (!register_is_signal() && !register_is_blockinstance()) {
    return false;
  }
  set_element_name(name);
  if (register_is_blockinstance()) {
    extras().kind = SIGNAL;
    extras().entity.clear();
    extras().register_type.clear();
  }
  return true;
}

// Sets the texts before it checks the kind: a caller that gets false reads back
// the texts that it passed.
bool KPT_REGISTER_KEYPOINT_IMPL::substitute_with_instance(std::string_view name, std::string_view entity,
                                                          std::string_view register_type) {
  // Copies, because the arguments may be texts of this register.
  KPT_STRING new_entity(entity);
  KPT_STRING new_type(register_type);
  set_element_name(name);
  extras().entity.swap(new_entity);
  extras().register_type.swap(new_type);
  if (register_is_signal()) {
    extras().kind = BLOCK_INSTANCE;
    return true;
  }
  return register_is_blockinstance();
}

bool KPT_REGISTER_KEYPOINT_IMPL::add_attribute(std::string_view name, std::string_view value) {
  return extras().attributes.add(name, value);
}

bool KPT_REGISTER_KEYPOINT_IMPL::remove_attribute(std::string_view name) {
  return m_extras != nullptr && m_extras->attributes.remove(name);
}

const KPT_ATTRIBUTES& KPT_REGISTER_KEYPOINT_IMPL::attributes() const {
  static const KPT_ATTRIBUTES s_none;
  return m_extras == nullptr ? s_none : m_extras->attributes;
}

KPT_STRING KPT_REGISTER_KEYPOINT_IMPL::get_attribute(std::string_view name) const {
  return m_extras == nullptr ? KPT_STRING() : m_extras->attributes.get(name);
}

bool KPT_REGISTER_KEYPOINT_IMPL::operator!=(const KPT_REGISTER_KEYPOINT_IMPL& other) const {
  return KPT_KEYPOINT::operator!=(other) || get_entity_name() != other.get_entity_name() ||
         get_register_type() != other.get_register_type();
}

bool KPT_REGISTER_KEYPOINT_IMPL::save_register(KPT_XML_WRITER& writer) const {
  const KPT_STRING id = gen_itoa(static_cast<int>(m_kpid), 10);
  if (writer.keeps_attributes() && !attributes().empty()) {
    writer.set_key_point_attributes(attributes().sorted());
  }
  if (register_is_signal()) {
    return writer.write_keypoint_xml(id, kpt_words::REGISTER, get_element_name());
  }
  return writer.write_keypoint_xml(id, kpt_words::REGISTER, get_element_name(), get_entity_name(), get_register_type());
}

// A set finds a keypoint under the texts with which it was added. They are stored
// here when the keypoint is first renamed. Nearly every keypoint keeps its name
// and needs no such memory.
void KPT_REGISTER_KEYPOINT_IMPL::keep_key() {
  if (!is_in_set() || (m_extras != nullptr && m_extras->key != nullptr)) {
    return;
  }
  auto key = std::make_unique<EXTRAS::KEY>();
  key->name = m_element_name;
  key->register_type = get_register_type();
  extras().key = std::move(key);
}

bool KPT_REGISTER_KEYPOINT_IMPL::has_kept_key() const { return m_extras->key != nullptr; }

KPT_REGISTER_KEYPOINT_IMPL::KEY KPT_REGISTER_KEYPOINT_IMPL::key_in_extras() const {
  if (m_extras->key != nullptr) {
    return {m_extras->key->name, m_extras->key->register_type};
  }
  return {m_element_name, m_extras->register_type};
}

void KPT_REGISTER_KEYPOINT_IMPL::retire() noexcept {
  if (m_extras != nullptr) {
    m_extras->attributes.clear();
  }
}
