// One element, or one list of elements, of a parsed keypoint database file.
//
// Ownership: a wrapper owns nothing: every node belongs to the parser's
// document and dies with it, the cursors over children included. Wrappers are
// copied by value, and a copy made behind `get_first_child` shares the cursor:
// moving on in one moves on in the other, until either starts anew.
//
// Flags: an operation that takes `bool* ok` does nothing and returns a null
// wrapper when the flag is false, lowers it when it fails, and never raises it.
// A chain of calls so needs one check, at its end.
//
// Children are walked by hand rather than with the parser's own tree walker:
// that one takes memory for every element walked and a stack frame for every
// comment skipped, so a file of comments would end the process.
#ifndef KPT_XML_ELEMENT_H
#define KPT_XML_ELEMENT_H

#include <string_view>

#include "db/kpt/kpt_types.h"

// The parser's types, named without its headers so that they stay out of ours.
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

  /// The first child element. Gives this wrapper a new cursor, by which
  /// `get_next_sibling` goes on:
  ///   for (c = parent.get_first_child(&ok); !c.is_null() && ok; c = parent.get_next_sibling(&ok))
  /// Text, comments and what an entity stands for are passed over.
  KPT_XML_ELEMENT get_first_child(bool* ok);
  /// The child behind the cursor. Called on the parent, not on the child.
  /// Moves on whatever the flag holds.
  KPT_XML_ELEMENT get_next_sibling(bool* ok);
  /// The first child node of that name. Any kind of node counts: a processing
  /// instruction is known by its target, a reference by its entity's name.
  KPT_XML_ELEMENT get_single_child_element(std::string_view name, bool* ok) const;
  /// All descendants of that name, in document order.
  KPT_XML_ELEMENT get_child_elements(std::string_view name, bool* ok) const;

  /// Entry `i`, from 0, of a list. Walked in order, each is found at once.
  KPT_XML_ELEMENT item(int i, bool* ok) const;
  /// The length of a list. Walks it: ask once.
  int size() const;

  bool is_null() const;

  /// The name, valid as long as the document. Empty for a null wrapper.
  const char* get_node_name() const;
  /// Empty for an absent attribute.
  KPT_STRING get_attribute_by_name(std::string_view name) const;
  /// All text below, one behind the other.
  KPT_STRING get_text_content() const;

  // The same without a new string for each call. `out` is replaced.
  bool has_name(std::string_view name) const;
  void attribute_into(std::string_view name, KPT_STRING& out) const;
  void text_into(KPT_STRING& out) const;

 private:
  explicit KPT_XML_ELEMENT(xercesc_3_2::DOMNode* node) : m_element(node) {}

  struct CURSOR;
  CURSOR* m_walker = nullptr;                 // none before the first get_first_child
  xercesc_3_2::DOMNode* m_element = nullptr;  // nearly always an element; see get_single_child_element
  xercesc_3_2::DOMNodeList* m_node_list = nullptr;
};

#endif
