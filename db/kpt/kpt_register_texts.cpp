#include "db/kpt/kpt_register_texts.h"

#include <sys/random.h>

#include <bit>
#include <boost/container_hash/hash.hpp>
#include <chrono>
#include <cstring>

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

std::uint64_t word_at(const char* p) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The bytes from `p` to `end`, fewer than eight, of a text that begins at `begin`. A long text gives
// them with one read, which ends with them and drops the bytes before them.
std::uint64_t rest_of(const char* begin, const char* p, const char* end) noexcept {
  const auto count = static_cast<unsigned>(end - p);
  if (std::endian::native == std::endian::little && end - begin >= 8) {
    return word_at(end - 8) >> 8U >> (56U - 8U * count);
  }
  std::uint64_t rest = 0;
  while (end != p) {
    rest = rest << 8U | static_cast<unsigned char>(*--end);
  }
  return rest;
}

// Boost's hash of characters mixes four bytes a step, and this one eight. The number of bytes that
// remain is mixed with them, so that a text and its continuation by zeros differ.
std::size_t mixed(std::size_t hash, std::string_view text) noexcept {
  const char* p = text.data();
  const char* const end = p + text.size();
  for (; end - p >= 8; p += 8) {
    boost::hash_combine(hash, word_at(p));
  }
  boost::hash_combine(hash, rest_of(text.data(), p, end) | static_cast<std::uint64_t>(end - p) << 56U);
  return hash;
}

std::uint32_t upper_half(std::size_t hash) noexcept { return static_cast<std::uint32_t>(hash >> 32U); }

}  // namespace

// The public hash of names is not used here: names that differ only in their last
// bytes get close values, and names with equal values are easy to make.
std::uint32_t KPT_REGISTER_TEXTS::hash_of(std::string_view name, std::string_view register_type) noexcept {
  static const std::size_t s_salt = make_salt();
  const std::size_t hash = mixed(s_salt, name);
  return upper_half(register_type.empty() ? hash : mixed(hash, register_type));
}
