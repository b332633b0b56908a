// Free-form attributes of a keypoint or a map: texts by name.
//
// Ownership: owns its store, which the first `add` makes. Until then it takes
// one pointer. A copied keypoint or map starts without attributes, so this
// class cannot be copied.
#ifndef KPT_ATTRIBUTES_H
#define KPT_ATTRIBUTES_H

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "db/kpt/kpt_types.h"

/// The attribute of a map that does not show everything that its registers
/// became, and the value that means that its table is not to be read.
inline constexpr std::string_view KPT_PARTIAL = "partial";
inline constexpr std::string_view KPT_PARTIAL_TABLE = "table";

class KPT_EXPORT KPT_ATTRIBUTES {
 public:
  KPT_ATTRIBUTES() noexcept;
  ~KPT_ATTRIBUTES();
  KPT_ATTRIBUTES(const KPT_ATTRIBUTES&) = delete;
  KPT_ATTRIBUTES& operator=(const KPT_ATTRIBUTES&) = delete;

  /// Sets the value of `name`, and replaces an earlier value. Always true.
  bool add(std::string_view name, std::string_view value);
  /// False when there is no such attribute.
  bool remove(std::string_view name);
  /// The value, or an empty text for an absent attribute, which is not created.
  KPT_STRING get(std::string_view name) const;
  void clear() noexcept;
  bool empty() const;
  /// Every attribute, sorted by name.
  KPT_ATTRIBUTE_LIST sorted() const;

 private:
  struct STORE;
  std::unique_ptr<STORE> m_store;
};

#endif
