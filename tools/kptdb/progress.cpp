#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace kptdb {

namespace {

using namespace std::chrono_literals;

constexpr auto PATIENCE = 1s;
constexpr auto STEP = 100ms;

PROGRESS::MODE s_mode = PROGRESS::AUTO;

bool is_wanted() { return s_mode == PROGRESS::ON || (s_mode == PROGRESS::AUTO && ::isatty(STDERR_FILENO) == 1); }

// Goes to the start of the line and clears the line.
void show(const std::string& text) {
  std::fprintf(stderr, "\r\033[K%s", text.c_str());
  std::fflush(stderr);
}

std::string amount(std::uint64_t count, PROGRESS::UNIT unit) {
  return unit == PROGRESS::BYTES ? fmt::format("{:.1f}", static_cast<double>(count) / 1e6) : std::to_string(count);
}

const char* word(PROGRESS::UNIT unit) {
  switch (unit) {
    case PROGRESS::BYTES:
      return "MB";
    case PROGRESS::REGISTERS:
      return "registers";
    case PROGRESS::MAPS:
      return "maps";
    default:
      return "registers and maps";
  }
}

}  // namespace

void PROGRESS::set_mode(MODE mode) { s_mode = mode; }

PROGRESS::PROGRESS(std::string what, std::uint64_t whole, UNIT unit)
    : m_what(std::move(what)),
      m_whole(whole),
      m_unit(unit),
      m_is_wanted(is_wanted()),
      m_next(CLOCK::now() + (s_mode == ON ? 0s : PATIENCE)) {}

PROGRESS::~PROGRESS() {
  if (m_is_shown) {
    show("");
  }
}

// Reads the clock only for every 64 KB, or 1,000 registers or maps.
void PROGRESS::look(std::uint64_t done) {
  m_next_look = done + (m_unit == BYTES ? 65536 : 1000);
  const auto now = CLOCK::now();
  if (now >= m_next) {
    m_next = now + STEP;
    m_is_shown = true;
    show(text(done));
  }
}

std::string PROGRESS::text(std::uint64_t done) const {
  const char* const unit = word(m_unit);
  if (m_whole == 0) {
    return fmt::format("{}: {} {}", m_what, amount(done, m_unit), unit);
  }
  const std::uint64_t part = std::min(done, m_whole);
  return fmt::format("{}: {} of {} {}, {}%", m_what, amount(part, m_unit), amount(m_whole, m_unit), unit,
                     part * 100 / m_whole);
}

}  // namespace kptdb
