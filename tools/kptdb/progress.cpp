#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

namespace kptdb {

namespace {
constexpr std::uint64_t LONG_WORK = std::uint64_t{8} << 20;
}

PROGRESS::PROGRESS(std::string what, std::uint64_t bytes)
    : m_what(std::move(what)), m_bytes(bytes), m_shown(bytes >= LONG_WORK && ::isatty(STDERR_FILENO) == 1) {
  if (m_shown) {
    show(fmt::format("{} ({} MB)", m_what, m_bytes >> 20));
  }
}

PROGRESS::~PROGRESS() {
  if (m_shown) {
    show("");
  }
}

void PROGRESS::at(std::uint64_t bytes) {
  const auto percent = m_bytes == 0 ? 0U : static_cast<unsigned>(bytes * 100 / m_bytes);
  if (m_shown && percent != m_percent) {
    m_percent = percent;
    show(fmt::format("{} {}%", m_what, percent));
  }
}

// To the start of the line, and away with what stood there.
void PROGRESS::show(const std::string& text) const {
  std::fprintf(stderr, "\r\033[K%s", text.c_str());
  std::fflush(stderr);
}

}  // namespace kptdb
