#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <string_view>

#include "h/gen_sys.h"
#include "host/services/text.h"

namespace {

constexpr std::string_view BLANKS = " \t\n\v\f\r";
constexpr int DECIMAL = 10;

std::string_view without_leading_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
  return text;
}

// Removes the "+", which from_chars does not accept; a sign after it is not a number.
std::string_view without_plus(std::string_view text) {
  const bool plus = text.starts_with('+') && !text.starts_with("+-");
  return text.substr(plus ? 1 : 0);
}

__attribute__((format(printf, 1, 0))) MEM_STRING::size_type printed_length(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  return static_cast<MEM_STRING::size_type>(std::max(length, 0));
}

}  // namespace

MEM_STRING kpt_services::formatted(const char* format, va_list args) {
  MEM_STRING text(printed_length(format, args), '\0');
  if (!text.empty()) {
    std::vsnprintf(text.data(), text.size() + 1, format, args);
  }
  return text;
}

int gen_atoi(const MEM_STRING& text) {
  const std::string_view number = without_plus(without_leading_blanks(text));
  int value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error == std::errc::result_out_of_range) {
    return number.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
  }
  return value;
}

MEM_STRING gen_itoa(int value, int base) {
  MEM_STRING text;
  gen_itoa(value, text, base);
  return text;
}

// The text keeps its memory: a save converts several numbers for each register.
void gen_itoa(int value, MEM_STRING& out, int base) {
  constexpr int HIGHEST_BASE = 36;
  std::array<char, std::numeric_limits<unsigned int>::digits + 1> digits;
  char* const first = digits.data();
  char* const last = first + digits.size();
  const bool is_usual = base == DECIMAL || base < 2 || base > HIGHEST_BASE;
  const char* const end =
      is_usual ? std::to_chars(first, last, value).ptr : std::to_chars(first, last, value, base).ptr;
  out.assign(first, static_cast<std::size_t>(end - first));
}

void gen_sprintf(MEM_STRING* out, const char* format, ...) {
  va_list args;
  va_start(args, format);
  // In a text of its own first, because an argument may point into `out`.
  MEM_STRING text = kpt_services::formatted(format, args);
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
