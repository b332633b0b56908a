// One element, or one list of elements, of a parsed keypoint database file.
//
// Ownership: a wrapper owns nothing. Every node, and every cursor over children,
// belongs to the parser's document and is destroyed with it. Wrappers are copied
// by value. A copy made after `get_first_child` shares the cursor: a step of one
// wrapper moves the other as well, until either calls `get_first_child` again.
//
// Flags: an operation that takes `bool* ok` does nothing and returns a null
// wrapper when the flag is false. It clears the flag when it fails, and never
// sets it. So a chain of calls needs one check, at its end.
//
// The parser's own tree walker is not used. It allocates memory for every
// element that it visits and a stack frame for every comment that it skips, so a
// file of many comments would crash the process.
#ifndef KPT_XML_ELEMENT_H
#define KPT_XML_ELEMENT_H

#include <string_view>

#include "db/kpt/kpt_types.h"

// The parser's types, declared without its headers, so that ours do not need them.
namespace xercesc_3_2 {
class DOMElement;
class DOMNode;
class DOMNodeList;
}  // namespace xercesc_3_2

class KPT_EXPORT KPT_XML_ELEMENT {
 public:
  KPT_XML_ELEMENT() = default;
  explicit KPT_XML_ELEMENT(xercesc_3_2::DOMElement* element);
  explicit KPT_XML_ELEMENT(xercesc_3_2::DOMNodeList* node_list);

  /// The first child element. Gives this wrapper a new cursor, which
  /// `get_next_sibling` moves:
  ///   for (c = parent.get_first_child(&ok); !c.is_null() && ok; c = parent.get_next_sibling(&ok))
  /// Skips text, comments and the content of entities.
  KPT_XML_ELEMENT get_first_child(bool* ok);
  /// The child after the cursor. Called on the parent, not on the child.
  /// Moves the cursor also when the flag is false.
  KPT_XML_ELEMENT get_next_sibling(bool* ok);
  /// The first child node of that name. Any kind of node counts: the name of a
  /// processing instruction is its target, that of a reference its entity.
  KPT_XML_ELEMENT get_single_child_element(std::string_view name, bool* ok) const;
  /// All descendants of that name, in document order.
  KPT_XML_ELEMENT get_child_elements(std::string_view name, bool* ok) const;

  /// Entry `i`, from 0, of a list. Constant time when the entries are read in order.
  KPT_XML_ELEMENT item(int i, bool* ok) const;
  /// The length of a list. It walks the whole list, so call it once.
  int size() const;

  bool is_null() const;

  /// The name, which is valid as long as the document. Empty for a null wrapper.
  const char* get_node_name() const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute_by_name(std::string_view name) const;
  /// All text below the element, joined.
  KPT_STRING get_text_content() const;

  // The same without a new string for each call. `out` is replaced.
  bool has_name(std::string_view name) const;
  void attribute_into(std::string_view name, KPT_STRING& out) const;
  void text_into(KPT_STRING& out) const;

 private:
  explicit KPT_XML_ELEMENT(xercesc_3_2::DOMNode* node) : m_element(node) {}

  struct CURSOR;
  CURSOR* m_walker = nullptr;                 // null before the first get_first_child
  xercesc_3_2::DOMNode* m_element = nullptr;  // nearly always an element; see get_single_child_element
  xercesc_3_2::DOMNodeList* m_node_list = nullptr;
};

#endif
