#include "db/kpt/kpt_attributes.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <functional>

#include "db/kpt/containers/kpt_zeroed.h"
#include "db/kpt/kpt_register_texts.h"

namespace {

// Files name attributes, and names of one value of the names' own hash are easily made.
struct SALTED_HASH {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const { return KPT_REGISTER_TEXTS(name).hash; }
};

}  // namespace

struct KPT_ATTRIBUTES::STORE : KPT_ZEROED {
  boost::unordered_flat_map<KPT_STRING, KPT_STRING, SALTED_HASH, std::equal_to<>,
                            MEM_STL_ALLOCATOR<std::pair<const KPT_STRING, KPT_STRING>>>
      texts;
};

KPT_ATTRIBUTES::KPT_ATTRIBUTES() noexcept = default;
KPT_ATTRIBUTES::~KPT_ATTRIBUTES() = default;

bool KPT_ATTRIBUTES::add(std::string_view name, std::string_view value) {
  if (m_store == nullptr) {
    m_store = std::make_unique<STORE>();
  }
  m_store->texts.insert_or_assign(KPT_STRING(name), KPT_STRING(value));
  return true;
}

bool KPT_ATTRIBUTES::remove(std::string_view name) { return m_store != nullptr && m_store->texts.erase(name) > 0; }

KPT_STRING KPT_ATTRIBUTES::get(std::string_view name) const {
  if (m_store == nullptr) {
    return {};
  }
  const auto found = m_store->texts.find(name);
  return found == m_store->texts.end() ? KPT_STRING() : found->second;
}

void KPT_ATTRIBUTES::clear() noexcept { m_store.reset(); }

bool KPT_ATTRIBUTES::empty() const { return m_store == nullptr || m_store->texts.empty(); }

KPT_ATTRIBUTE_LIST KPT_ATTRIBUTES::sorted() const {
  KPT_ATTRIBUTE_LIST all;
  if (m_store != nullptr) {
    all.assign(m_store->texts.begin(), m_store->texts.end());
    std::sort(all.begin(), all.end());
  }
  return all;
}
