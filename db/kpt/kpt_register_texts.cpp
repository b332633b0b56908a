#include "db/kpt/kpt_register_texts.h"

#include <sys/random.h>

#include <boost/container_hash/hash.hpp>
#include <chrono>

namespace {

// Differs in each process, so that nobody can make a file or a netlist whose
// names all collide in the index. Clients see no effect: sets are walked in order
// of creation.
std::size_t make_salt() noexcept {
  std::size_t salt = 0;
  if (::getrandom(&salt, sizeof salt, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof salt)) {
    salt = static_cast<std::size_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  }
  return salt;
}

}  // namespace

// The public hash of names is not used here: names that differ only in their last
// bytes get close values, and names with equal values are easy to make.
std::uint32_t KPT_REGISTER_TEXTS::hash_of(std::string_view name, std::string_view register_type) noexcept {
  static const std::size_t s_salt = make_salt();
  std::size_t hash = s_salt;
  boost::hash_range(hash, name.begin(), name.end());
  if (!register_type.empty()) {
    boost::hash_range(hash, register_type.begin(), register_type.end());
  }
  return static_cast<std::uint32_t>(hash >> 32U);
}
