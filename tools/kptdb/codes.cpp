#include "codes.h"

#include <fmt/format.h>

#include <algorithm>

namespace kptdb {

namespace {

// The pairs are sorted and distinct, so two neighbours with the same first code have different second codes.
std::string contradiction(const STATE_CODES& codes, const char* side, const char* other) {
  const auto found = std::adjacent_find(
      codes.begin(), codes.end(), [](const auto& a, const auto& b) { return a.first == b.first && !a.first.empty(); });
  return found == codes.end() ? std::string()
                              : fmt::format("the {} code {} faces the {} codes {} and {}", side, found->first, other,
                                            found->second, std::next(found)->second);
}

}  // namespace

std::string contradiction_in(STATE_CODES codes) {
  std::sort(codes.begin(), codes.end());
  codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
  std::string of_reference = contradiction(codes, "reference", "transformed");
  if (!of_reference.empty()) {
    return of_reference;
  }
  for (auto& [reference, transformed] : codes) {
    reference.swap(transformed);
  }
  std::sort(codes.begin(), codes.end());
  return contradiction(codes, "transformed", "reference");
}

}  // namespace kptdb
