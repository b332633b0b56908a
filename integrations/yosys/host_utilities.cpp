// The general utilities, switches and paths that the library asks of its host. A switch is set by
// the environment: KPT_SWITCH_<key> is 1 or 0.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "h/cfg_sys.h"
#include "h/fio_path.h"
#include "h/gen_sys.h"
#include "yosys_host.h"

MEM_STRING kpt_yosys::printed(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  MEM_STRING text(static_cast<std::size_t>(std::max(length, 0)), '\0');
  if (!text.empty()) {
    std::vsnprintf(text.data(), text.size() + 1, format, args);
  }
  return text;
}

bool cfg_is_on(const char* key, bool default_value) {
  const char* const word = key != nullptr ? std::getenv((std::string("KPT_SWITCH_") + key).c_str()) : nullptr;
  return word != nullptr ? std::string_view(word) == "1" : default_value;
}

int gen_atoi(const MEM_STRING& text) {
  const long value = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

MEM_STRING gen_itoa(int value, int base) {
  constexpr int HIGHEST_BASE = 36;
  constexpr int DECIMAL = 10;
  std::array<char, std::numeric_limits<unsigned int>::digits + 1> digits{};
  const int used = base >= 2 && base <= HIGHEST_BASE ? base : DECIMAL;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value, used);
  return {digits.data(), end};
}

void gen_itoa(int value, MEM_STRING& out, int base) { out = gen_itoa(value, base); }

void gen_sprintf(MEM_STRING* out, const char* format, ...) {
  va_list args;
  va_start(args, format);
  MEM_STRING text = kpt_yosys::printed(format, args);  // apart first: an argument may point into `out`
  va_end(args);
  out->swap(text);
}

int gen_strcmp(const char* a, const char* b) { return std::strcmp(a, b); }

MEM_STRING gen_get_current_time() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, sizeof("YYYYY-MM-DD hh:mm:ss")> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

unsigned long gen_get_tick_count() {
  using std::chrono::milliseconds;
  const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<unsigned long>(std::chrono::duration_cast<milliseconds>(since_start).count());
}

FIO_PATH::FIO_PATH(const char* path) : m_path(path != nullptr ? path : "") {}

MEM_STRING FIO_PATH::fullpath() const {
  if (is_unc_path(m_path.c_str())) {
    MEM_STRING local = m_path;
    std::replace(local.begin(), local.end(), '\\', '/');
    return local;
  }
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(std::string_view(m_path), error);
  return error ? m_path : MEM_STRING(full.native());
}

bool FIO_PATH::is_unc_path(const char* path) {
  const std::string_view start = path != nullptr ? path : "";
  const bool has_server = start.size() > 2 && start[2] != '/' && start[2] != '\\';
  return has_server && (start.starts_with("//") || start.starts_with("\\\\"));
}

void FIO_PATH::change_path_separators_for_windows_api() {
  if (is_unc_path(m_path.c_str())) {
    std::replace(m_path.begin(), m_path.end(), '/', '\\');
  }
}
