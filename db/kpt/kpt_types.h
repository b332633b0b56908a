// The types that every header of the library shares: sides, elimination
// words, names, and lists of keypoints and maps.
//
// Ownership: the containers own their cells, not the keypoints or maps that the
// cells point to. The host's trackers count the memory of the containers.
#ifndef KPT_TYPES_H
#define KPT_TYPES_H

#include <string_view>
#include <utility>
#include <vector>

#include "db/kpt/containers/kpt_small_vector.h"
#include "h/mem_alloc_sys.h"
#include "kpt_export.h"

class KPT_KEYPOINT;
class KPT_KEYPOINT_SET_IMPL;
class KPT_KEYPOINTS_DB;
class KPT_KEYPOINTS_DB_IMPL;
class KPT_REGISTER_KEYPOINT;
class KPT_REGISTER_KEYPOINT_IMPL;
class KPT_REGISTER_TRANSFORMATION;
class KPT_STATE_TABLE;
class KPT_STATE_TABLE_IMPL;
class KPT_TRANSFORMATION_IMPL;
class KPT_TRANSFORMATION_LIST;
class KPT_TRANSFORMATION_SET_IMPL;
class KPT_XML_ELEMENT;
class KPT_XML_WRITER;

// The enums are ints, so a caller may pass a value outside the list. Operations
// say what they do with such a value where it is possible.

/// Which netlist: the design as written, or the design after optimisation.
enum KPT_SET_ENUM : int { KPT_REFERENCE_SET = 0, KPT_TRANSFORMED_SET = 1 };

/// Whether and why the registers of a map were eliminated.
enum KPT_ELIM_ENUM : int {
  KPT_NOT_ELIMINATED = 0,
  KPT_STUCK_AT_ZERO = 1,
  KPT_STUCK_AT_ONE = 2,
  KPT_NO_FANOUT = 3,
  KPT_ELIMINATED = 4
};

enum KPT_UNATE_ENUM : int { KPT_POSITIVE_UNATE = 0, KPT_NEGATIVE_UNATE = 1 };

/// The kind of keypoint. Registers are the only kind in use.
enum KPT_TYPE_ENUM : int { KPT_REGISTER_TYPE = 0 };

using KPT_STRING = MEM_STRING;
using KPT_STRING_VECTOR = std::vector<KPT_STRING, MEM_STL_ALLOCATOR<KPT_STRING>>;

/// An ordered list of keypoints, not owned. A null cell is allowed.
using KPT_KEYPOINT_LIST = KPT_SMALL_VECTOR<KPT_KEYPOINT*>;
/// One index of one side of a map: the registers of `first` hold its value, those of `second` the inverse.
using NI_PAIR = std::pair<KPT_KEYPOINT_LIST, KPT_KEYPOINT_LIST>;
/// One side of a map: the NI pair at position k (from 0) is column k + 1 of that side's state table.
using NI_PAIR_VECTOR = KPT_SMALL_VECTOR<NI_PAIR>;

/// Attributes: names and their values.
using KPT_ATTRIBUTE_LIST =
    std::vector<std::pair<KPT_STRING, KPT_STRING>, MEM_STL_ALLOCATOR<std::pair<KPT_STRING, KPT_STRING>>>;

using KPT_ID_LIST = std::vector<long, MEM_STL_ALLOCATOR<long>>;
using KPT_ROW_LIST = std::vector<unsigned short, MEM_STL_ALLOCATOR<unsigned short>>;
using KPT_REGISTER_KEYPOINT_LIST = std::vector<KPT_REGISTER_KEYPOINT, MEM_STL_ALLOCATOR<KPT_REGISTER_KEYPOINT>>;
using KPT_REGISTER_TRANSFORMATION_LIST =
    std::vector<KPT_REGISTER_TRANSFORMATION, MEM_STL_ALLOCATOR<KPT_REGISTER_TRANSFORMATION>>;

/// Continues the library's string hash with the bytes of a text:
/// h = h * 17 + each byte as a signed char, modulo 2^64.
KPT_EXPORT std::size_t kpt_hash_bytes(std::size_t h, std::string_view text) noexcept;

/// Hash and equality of names: the library's string hash, starting with 0, and
/// case-sensitive equality of the bytes. Takes any text without a copy.
struct STL_CASE_SENSITIVE_HASH_COMPARE {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept { return kpt_hash_bytes(0, text); }
  bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
};

/// The same for a pair of texts. The hash is that of the second text appended to
/// the first. Equality compares the first texts, then the second ones.
struct KPT_STRINGPAIR_HASH_COMPARE {
  using is_transparent = void;
  using TEXTS = std::pair<std::string_view, std::string_view>;
  std::size_t operator()(const TEXTS& texts) const noexcept {
    const std::size_t first = kpt_hash_bytes(0, texts.first);
    return texts.second.empty() ? first : kpt_hash_bytes(first, texts.second);
  }
  bool operator()(const TEXTS& a, const TEXTS& b) const noexcept { return a == b; }
};

#endif
