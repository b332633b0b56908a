// The attributes of an element, while a load reads the element.
//
// Ownership: the load owns them; they are valid until it continues.
#ifndef KPT_ELEMENT_ATTRIBUTES_H
#define KPT_ELEMENT_ATTRIBUTES_H

#include <string_view>

class KPT_ELEMENT_ATTRIBUTES {
 public:
  /// The value, with references replaced; empty for an absent attribute. Valid
  /// until the next call.
  virtual std::string_view value(std::string_view name) const = 0;

 protected:
  ~KPT_ELEMENT_ATTRIBUTES() = default;
};

#endif
