// Values in 64 runs at once. Each is 0, 1 or unknown.
//
// Ownership: plain values.
#ifndef TERNARY_H
#define TERNARY_H

#include <cstdint>

namespace kpt_yosys {

/// One bit for each run. A bit that is set in neither word is unknown.
struct TERNARY {
  std::uint64_t m_one = 0;
  std::uint64_t m_zero = 0;

  std::uint64_t known() const { return m_one | m_zero; }
  bool operator==(const TERNARY&) const = default;
};

constexpr TERNARY ALL_ZERO{0, ~std::uint64_t{0}};
constexpr TERNARY ALL_ONE{~std::uint64_t{0}, 0};

inline TERNARY operator~(TERNARY a) { return {a.m_zero, a.m_one}; }
inline TERNARY operator&(TERNARY a, TERNARY b) { return {a.m_one & b.m_one, a.m_zero | b.m_zero}; }
inline TERNARY operator|(TERNARY a, TERNARY b) { return {a.m_one | b.m_one, a.m_zero & b.m_zero}; }
inline TERNARY operator^(TERNARY a, TERNARY b) {
  return {(a.m_one & b.m_zero) | (a.m_zero & b.m_one), (a.m_one & b.m_one) | (a.m_zero & b.m_zero)};
}
/// `a` where both agree, otherwise unknown.
inline TERNARY agreed(TERNARY a, TERNARY b) { return {a.m_one & b.m_one, a.m_zero & b.m_zero}; }
/// `one` where `select` is 1, `zero` where it is 0.
inline TERNARY chosen(TERNARY select, TERNARY one, TERNARY zero) {
  const TERNARY either = agreed(one, zero);
  return {(select.m_one & one.m_one) | (select.m_zero & zero.m_one) | either.m_one,
          (select.m_one & one.m_zero) | (select.m_zero & zero.m_zero) | either.m_zero};
}
/// `a` in the runs of the mask, otherwise `b`.
inline TERNARY in_runs(std::uint64_t mask, TERNARY a, TERNARY b) {
  return {(a.m_one & mask) | (b.m_one & ~mask), (a.m_zero & mask) | (b.m_zero & ~mask)};
}

}  // namespace kpt_yosys

#endif
