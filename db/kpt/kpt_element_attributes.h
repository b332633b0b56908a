// The attributes of the element that a load has come to.
//
// Ownership: the load owns them; they are good until it goes on.
#ifndef KPT_ELEMENT_ATTRIBUTES_H
#define KPT_ELEMENT_ATTRIBUTES_H

#include <string_view>

class KPT_ELEMENT_ATTRIBUTES {
 public:
  /// The value, with references replaced; empty for an absent attribute. Good
  /// until the next call.
  virtual std::string_view value(std::string_view name) const = 0;

 protected:
  ~KPT_ELEMENT_ATTRIBUTES() = default;
};

#endif
