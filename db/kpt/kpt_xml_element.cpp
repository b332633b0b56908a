#include "db/kpt/kpt_xml_element.h"

#include <algorithm>
#include <array>
#include <new>
#include <xercesc/dom/DOM.hpp>
// After the definitions it needs.
#include <xercesc/dom/DOMMemoryManager.hpp>

#include "db/kpt/files/kpt_xml_text.h"
#include "h/gen_sys.h"

using namespace XERCES_CPP_NAMESPACE;

namespace {

constexpr XMLCh NAME_KEY[] = u"kpt narrow name";

DOMElement* as_element(DOMNode* node) {
  return node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE ? static_cast<DOMElement*>(node) : nullptr;
}

// The first element among `node` and its later siblings.
DOMNode* element_from(DOMNode* node) {
  while (node != nullptr && node->getNodeType() != DOMNode::ELEMENT_NODE) {
    node = node->getNextSibling();
  }
  return node;
}

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A name in the parser's characters. The names of this file format are short and
// ASCII, so they need no allocation.
class WIDE_NAME {
 public:
  explicit WIDE_NAME(std::string_view name) {
    if (name.find('\0') != std::string_view::npos) {
      name = {};  // a document's names have no null
    }
    if (name.size() < m_short.size() && is_ascii(name)) {
      *std::copy(name.begin(), name.end(), m_short.begin()) = 0;
      return;
    }
    m_long = kpt_widen(name);
    m_text = m_long.c_str();
  }
  WIDE_NAME(const WIDE_NAME&) = delete;
  WIDE_NAME& operator=(const WIDE_NAME&) = delete;

  const XMLCh* text() const { return m_text; }

 private:
  std::array<XMLCh, 32> m_short;
  KPT_WIDE_STRING m_long;
  const XMLCh* m_text = m_short.data();
};

bool is_named(const DOMNode* node, std::string_view name) {
  const XMLCh* const own = node->getNodeName();
  std::size_t k = 0;
  for (; own[k] != 0; ++k) {
    if (own[k] >= 0x80) {
      KPT_STRING narrow;
      kpt_narrow(own, narrow);
      return gen_strcmp(narrow.c_str(), KPT_STRING(name).c_str()) == 0;
    }
    if (k >= name.size() || own[k] != static_cast<unsigned char>(name[k])) {
      return false;
    }
  }
  return k == name.size();
}

bool holds_text(const DOMNode* node) {
  const auto type = node->getNodeType();
  return type == DOMNode::TEXT_NODE || type == DOMNode::CDATA_SECTION_NODE;
}

// Whether text may be below the node.
bool is_branch(const DOMNode* node) {
  const auto type = node->getNodeType();
  return type == DOMNode::ELEMENT_NODE || type == DOMNode::ENTITY_REFERENCE_NODE;
}

// The first node after `node` in document order that is not below `node`, within `root`.
const DOMNode* next_outside(const DOMNode* node, const DOMNode* root) {
  while (node != root) {
    if (const DOMNode* const next = node->getNextSibling()) {
      return next;
    }
    node = node->getParentNode();
  }
  return nullptr;
}

// Without recursion, because a document may be nested deeper than the stack allows.
void append_text_below(const DOMNode* root, KPT_STRING& out) {
  const DOMNode* node = root->getFirstChild();
  while (node != nullptr) {
    if (holds_text(node)) {
      kpt_append_narrow(node->getNodeValue(), out);
    }
    const DOMNode* const child = is_branch(node) ? node->getFirstChild() : nullptr;
    node = child != nullptr ? child : next_outside(node, root);
  }
}

// Memory that is freed with the document of `node`.
void* memory_of(const DOMNode* node, std::size_t size) {
  const DOMDocument* const document = node->getOwnerDocument();
  void* const manager = document->getFeature(XMLUni::fgXercescInterfaceDOMMemoryManager, nullptr);
  return static_cast<DOMMemoryManager*>(manager)->allocate(size);
}

std::string_view kept_with(const DOMNode* node, std::string_view text) {
  auto* const copy = static_cast<char*>(memory_of(node, text.size() + 1));
  *std::copy(text.begin(), text.end(), copy) = 0;
  return {copy, text.size()};
}

// The descendants of one name in document order, each found from the one
// before. The parser's own lists are in a table of fixed size, with which a
// state table of many rows takes minutes. Both match in the same way: "*" is
// every name.
//
// Ownership: is in the document's memory and is never destroyed, so its members
// must not need a destructor.
class DESCENDANTS : public DOMNodeList {
 public:
  DESCENDANTS(const DOMNode* root, std::string_view name) : m_root(root), m_name(name) {}

  DOMNode* item(XMLSize_t index) const override {
    if (m_current == nullptr || index < m_index) {
      m_current = behind(m_root);
      m_index = 0;
    }
    while (m_current != nullptr && m_index < index) {
      const DOMNode* const next = behind(m_current);
      if (next == nullptr) {
        return nullptr;
      }
      m_current = next;
      ++m_index;
    }
    return const_cast<DOMNode*>(m_current);
  }

  XMLSize_t getLength() const override {
    if (!m_counted) {
      for (const DOMNode* node = behind(m_root); node != nullptr; node = behind(node)) {
        ++m_length;
      }
      m_counted = true;
    }
    return m_length;
  }

 private:
  const DOMNode* behind(const DOMNode* node) const {
    do {
      const DOMNode* const child = is_branch(node) ? node->getFirstChild() : nullptr;
      node = child != nullptr ? child : next_outside(node, m_root);
    } while (node != nullptr && !matches(node));
    return node;
  }
  bool matches(const DOMNode* node) const {
    return node->getNodeType() == DOMNode::ELEMENT_NODE && (m_name == "*" || is_named(node, m_name));
  }

  const DOMNode* m_root;
  std::string_view m_name;
  mutable const DOMNode* m_current = nullptr;  // entry m_index; null before the first
  mutable XMLSize_t m_index = 0;
  mutable XMLSize_t m_length = 0;
  mutable bool m_counted = false;
};

}  // namespace

// Ownership: is in the document's memory and is never destroyed.
struct KPT_XML_ELEMENT::CURSOR {
  DOMNode* m_child;  // the child last returned
};

KPT_XML_ELEMENT::KPT_XML_ELEMENT(DOMElement* element) : m_element(element) {}

KPT_XML_ELEMENT::KPT_XML_ELEMENT(DOMNodeList* node_list) : m_node_list(node_list) {}

KPT_XML_ELEMENT KPT_XML_ELEMENT::get_first_child(bool* ok) {
  if (!*ok) {
    return {};
  }
  m_walker = nullptr;
  DOMNode* const child = as_element(m_element) == nullptr ? nullptr : element_from(m_element->getFirstChild());
  if (child == nullptr) {
    *ok = false;
    return {};
  }
  m_walker = new (memory_of(m_element, sizeof(CURSOR))) CURSOR{child};
  return KPT_XML_ELEMENT(child);
}

KPT_XML_ELEMENT KPT_XML_ELEMENT::get_next_sibling(bool* ok) {
  DOMNode* const next = m_walker == nullptr ? nullptr : element_from(m_walker->m_child->getNextSibling());
  if (next == nullptr) {
    *ok = false;
    return {};
  }
  m_walker->m_child = next;
  return KPT_XML_ELEMENT(next);
}

KPT_XML_ELEMENT KPT_XML_ELEMENT::get_single_child_element(std::string_view name, bool* ok) const {
  if (!*ok) {
    return {};
  }
  DOMNode* child = m_element == nullptr ? nullptr : m_element->getFirstChild();
  while (child != nullptr && !is_named(child, name)) {
    child = child->getNextSibling();
  }
  *ok = child != nullptr;
  return KPT_XML_ELEMENT(child);
}

KPT_XML_ELEMENT KPT_XML_ELEMENT::get_child_elements(std::string_view name, bool* ok) const {
  if (!*ok) {
    return {};
  }
  if (as_element(m_element) == nullptr || DESCENDANTS(m_element, name).item(0) == nullptr) {
    *ok = false;
    return {};
  }
  void* const place = memory_of(m_element, sizeof(DESCENDANTS));
  DOMNodeList* const list = new (place) DESCENDANTS(m_element, kept_with(m_element, name));
  return KPT_XML_ELEMENT(list);
}

KPT_XML_ELEMENT KPT_XML_ELEMENT::item(int i, bool* ok) const {
  if (!*ok) {
    return {};
  }
  DOMNode* const node = m_node_list == nullptr || i < 0 ? nullptr : m_node_list->item(static_cast<XMLSize_t>(i));
  *ok = node != nullptr;
  return KPT_XML_ELEMENT(node);
}

int KPT_XML_ELEMENT::size() const { return m_node_list == nullptr ? 0 : static_cast<int>(m_node_list->getLength()); }

bool KPT_XML_ELEMENT::is_null() const {
  return m_element == nullptr && (m_node_list == nullptr || m_node_list->item(0) == nullptr);
}

// The narrow name is kept with the node, in the document's memory.
const char* KPT_XML_ELEMENT::get_node_name() const {
  if (m_element == nullptr) {
    return "";
  }
  if (const void* const kept = m_element->getUserData(NAME_KEY)) {
    return static_cast<const char*>(kept);
  }
  KPT_STRING name;
  kpt_narrow(m_element->getNodeName(), name);
  const char* const kept = kept_with(m_element, name).data();
  m_element->setUserData(NAME_KEY, const_cast<char*>(kept), nullptr);
  return kept;
}

bool KPT_XML_ELEMENT::has_name(std::string_view name) const {
  return m_element != nullptr && is_named(m_element, name);
}

KPT_STRING KPT_XML_ELEMENT::get_attribute_by_name(std::string_view name) const {
  KPT_STRING value;
  attribute_into(name, value);
  return value;
}

void KPT_XML_ELEMENT::attribute_into(std::string_view name, KPT_STRING& out) const {
  const DOMElement* const element = as_element(m_element);
  if (element == nullptr) {
    out.clear();
    return;
  }
  kpt_narrow(element->getAttribute(WIDE_NAME(name).text()), out);
}

KPT_STRING KPT_XML_ELEMENT::get_text_content() const {
  KPT_STRING text;
  text_into(text);
  return text;
}

void KPT_XML_ELEMENT::text_into(KPT_STRING& out) const {
  out.clear();
  if (m_element == nullptr) {
    return;
  }
  if (is_branch(m_element)) {
    append_text_below(m_element, out);
  } else {
    kpt_append_narrow(m_element->getNodeValue(), out);
  }
}
