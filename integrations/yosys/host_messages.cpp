// The message services that the library asks of its host, on Yosys' log: errors become warnings,
// since an error of Yosys ends the process; debug lines appear where Yosys shows debug output.
#include <array>
#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "h/msg_sys.h"
#include "yosys_host.h"

namespace {

const char* or_empty(const char* text) { return text != nullptr ? text : ""; }

// The placeholder "%n!s!" or "%n!d!" that a text begins with; no length: none.
struct PLACEHOLDER {
  unsigned int m_argument = 0;
  char m_kind = '\0';
  std::size_t m_length = 0;
};

constexpr unsigned int LAST_ARGUMENT = 9;

PLACEHOLDER placeholder_at(std::string_view text) {
  constexpr std::size_t LENGTH = 5;
  if (text.size() < LENGTH || text[0] != '%' || text[1] < '1' || text[1] > '9') {
    return {};
  }
  const std::string_view tail = text.substr(2, 3);
  if (tail != "!s!" && tail != "!d!") {
    return {};
  }
  return {static_cast<unsigned int>(text[1] - '0'), tail[1], LENGTH};
}

using KINDS = std::array<char, LAST_ARGUMENT + 1>;
using VALUES = std::array<MEM_STRING, LAST_ARGUMENT + 1>;

KINDS kinds_in(std::string_view text) {
  KINDS kinds{};
  for (std::size_t i = 0; i < text.size(); ++i) {
    const PLACEHOLDER found = placeholder_at(text.substr(i));
    if (found.m_length != 0 && kinds[found.m_argument] == '\0') {
      kinds[found.m_argument] = found.m_kind;
    }
  }
  return kinds;
}

// Arguments are read in order, up to the first that no placeholder names.
VALUES read_values(const KINDS& kinds, va_list args) {
  VALUES values;
  for (std::size_t n = 1; n < kinds.size() && kinds[n] != '\0'; ++n) {
    values[n] = kinds[n] == 's' ? MEM_STRING(or_empty(va_arg(args, const char*)))
                                : MEM_STRING(std::to_string(va_arg(args, int)));
  }
  return values;
}

MEM_STRING filled(std::string_view text, va_list args) {
  const VALUES values = read_values(kinds_in(text), args);
  MEM_STRING result;
  while (!text.empty()) {
    const PLACEHOLDER found = placeholder_at(text);
    if (found.m_length == 0) {
      result += text.front();
      text.remove_prefix(1);
    } else {
      result += values[found.m_argument];
      text.remove_prefix(found.m_length);
    }
  }
  return result;
}

// Takes the identifier behind the last "/" off the text.
MEM_STRING cut_identifier(MEM_STRING& text) {
  const std::size_t slash = text.rfind('/');
  if (slash == MEM_STRING::npos || text.find(' ', slash) != MEM_STRING::npos) {
    return {};
  }
  MEM_STRING identifier = text.substr(slash + 1);
  text.erase(slash);
  return identifier;
}

}  // namespace

MSG_BASE::MSG_BASE(MSG_REPORT* report) : m_report(report) {}

MSG_BASE::~MSG_BASE() = default;

void* MSG_BASE::operator new(std::size_t size) {
  void* const memory = std::calloc(1, size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void MSG_BASE::operator delete(void* p) { std::free(p); }

void MSG_BASE::fill_args(const char* text, unsigned int n, ...) {
  MEM_STRING pattern = or_empty(text);
  const MEM_STRING identifier = cut_identifier(pattern);
  if (m_tag.empty()) {
    m_tag = identifier;
  }
  va_list args;
  va_start(args, n);
  m_text = filled(pattern, args);
  va_end(args);
}

void MSG_BASE::fill_args(const char* format, va_list args) { m_text = kpt_yosys::printed(format, args); }

void MSG_BASE::set_tag(const char* tag) { m_tag = or_empty(tag); }

void MSG_BASE::post() {
  if (dynamic_cast<MSG_D*>(this) != nullptr) {
    kpt_yosys::show_debug(m_tag.c_str(), m_text.c_str());
  } else {
    kpt_yosys::show_warning(m_tag.c_str(), m_text.c_str());
  }
}

MSG_E::MSG_E(MSG_REPORT* report) : MSG_BASE(report) {}

MSG_D::MSG_D(MSG_REPORT* report) : MSG_BASE(report) {}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int line) {
  const std::string text =
      std::string("internal error: ") + or_empty(condition) + " (" + or_empty(file) + ":" + std::to_string(line) + ")";
  kpt_yosys::show_warning(or_empty(tag), text.c_str());
}

bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (!kpt_yosys::debug_is_shown()) {
    return false;
  }
  return kpt_yosys::show_debug(or_empty(tag), kpt_yosys::printed(format, args).c_str());
}
