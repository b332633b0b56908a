// The content of a message. Each host defines MSG_BASE::post itself.
#include <cstdlib>
#include <string_view>

#include "h/msg_sys.h"
#include "host/services/text.h"

namespace {

using kpt_services::or_empty;

bool is_identifier(std::string_view text) {
  constexpr std::string_view LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  return !text.empty() && text.find_first_not_of(LETTERS) == std::string_view::npos;
}

// Removes the identifier from the end of `text` and returns it; empty when there is none.
MEM_STRING cut_identifier(MEM_STRING& text) {
  const std::size_t slash = text.rfind('/');
  if (slash == MEM_STRING::npos || !is_identifier(std::string_view(text).substr(slash + 1))) {
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
  // Before the arguments are filled in, so that a "/" in one of them is not the separator.
  const MEM_STRING identifier = cut_identifier(pattern);
  if (m_tag.empty()) {
    m_tag = identifier;
  }
  va_list args;
  va_start(args, n);
  m_text = kpt_services::filled(pattern, args);
  va_end(args);
}

void MSG_BASE::fill_args(const char* format, va_list args) { m_text = kpt_services::formatted(format, args); }

void MSG_BASE::set_tag(const char* tag) { m_tag = or_empty(tag); }

MSG_E::MSG_E(MSG_REPORT* report) : MSG_BASE(report) {}

MSG_D::MSG_D(MSG_REPORT* report) : MSG_BASE(report) {}
