#include "buses.h"

#include <algorithm>
#include <tuple>

#include "indexed_name.h"

namespace kptdb {

namespace {

BUS single(std::string_view name, std::uint32_t position, char divider) {
  BUS bus;
  bus.bits.push_back(position);
  const std::size_t mark = name.rfind(divider);
  const std::size_t start = mark == std::string_view::npos ? 0 : mark + 1;
  bus.path = name.substr(0, start);
  bus.base = name.substr(start);
  if (const auto split = split_index(bus.base)) {
    bus.base = split->base;
    bus.msb = bus.lsb = split->index;
    bus.has_index = true;
  }
  return bus;
}

bool comes_before(const BUS& a, const BUS& b) {
  return std::tie(a.path, a.base, a.has_index, b.msb) < std::tie(b.path, b.base, b.has_index, a.msb);
}

bool goes_on(const BUS& left, const BUS& right) {
  return left.has_index && right.has_index && left.path == right.path && left.base == right.base &&
         left.lsb == right.msb + 1;
}

}  // namespace

std::string BUS::range() const {
  if (!has_index) {
    return "";
  }
  return "[" + std::to_string(msb) + (bits.size() > 1 ? ":" + std::to_string(lsb) : "") + "]";
}

std::vector<BUS> join_buses(const std::vector<std::string_view>& names, char divider) {
  std::vector<BUS> singles;
  singles.reserve(names.size());
  for (std::uint32_t k = 0; k < names.size(); ++k) {
    singles.push_back(single(names[k], k, divider));
  }
  std::stable_sort(singles.begin(), singles.end(), comes_before);
  std::vector<BUS> buses;
  for (BUS& bus : singles) {
    if (!buses.empty() && goes_on(buses.back(), bus)) {
      buses.back().lsb = bus.lsb;
      buses.back().bits.push_back(bus.bits.front());
    } else {
      buses.push_back(std::move(bus));
    }
  }
  return buses;
}

}  // namespace kptdb
