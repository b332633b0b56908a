#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "h/msg_sys.h"
#include "host/host_text.h"
#include "host/kpt_host.h"

namespace {

using TEXT_SINK = std::function<void(const char* tag, const char* text)>;
using CHECK_SINK = std::function<void(const char* condition, const char* tag, const char* file, int line)>;

void print(MSG_SEVERITY severity, const char* tag, const char* text) {
  std::fprintf(stderr, "%s: %s: %s\n", MSG_SEVERITY_NAMES[severity], tag, text);
}

void print_debug(const char* tag, const char* text) { print(MSG_SEVERITY_DEBUG, tag, text); }

void print_error(const char* tag, const char* text) { print(MSG_SEVERITY_ERROR, tag, text); }

void print_check(const char* condition, const char* tag, const char* file, int line) {
  std::fprintf(stderr, "%s: %s: internal error: %s (%s:%d)\n", MSG_SEVERITY_NAMES[MSG_SEVERITY_ERROR], tag, condition,
               file, line);
}

bool debug_wanted_by_environment() {
  const char* const value = std::getenv("KPT_DEBUG");
  return value != nullptr && *value != '\0' && std::string_view(value) != "0";
}

struct CHANNELS {
  bool m_debug = debug_wanted_by_environment();
  TEXT_SINK m_debug_sink = print_debug;
  TEXT_SINK m_error_sink = print_error;
  CHECK_SINK m_check_sink = print_check;
};

// Never destroyed: other libraries report until the very end.
CHANNELS& channels() {
  static auto* const instance = new CHANNELS;
  return *instance;
}

// By value: a sink may replace itself while it runs.
template <class SINK, class... ARGS>
void send(SINK sink, ARGS... args) {
  sink(args...);
}

const char* or_empty(const char* text) { return text != nullptr ? text : ""; }

bool is_identifier(std::string_view text) {
  constexpr std::string_view LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  return !text.empty() && text.find_first_not_of(LETTERS) == std::string_view::npos;
}

// Takes the identifier off the end of `text`; empty when there is none.
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
  // Before the arguments go in, so that a "/" of theirs is not taken for the separator.
  const MEM_STRING identifier = cut_identifier(pattern);
  if (m_tag.empty()) {
    m_tag = identifier;
  }
  va_list args;
  va_start(args, n);
  m_text = kpt_host::filled(pattern, args);
  va_end(args);
}

void MSG_BASE::fill_args(const char* format, va_list args) { m_text = kpt_host::formatted(format, args); }

void MSG_BASE::set_tag(const char* tag) { m_tag = or_empty(tag); }

void MSG_BASE::post() {
  if (dynamic_cast<MSG_D*>(this) == nullptr) {
    send(channels().m_error_sink, m_tag.c_str(), m_text.c_str());
  } else if (channels().m_debug) {
    send(channels().m_debug_sink, m_tag.c_str(), m_text.c_str());
  }
}

MSG_E::MSG_E(MSG_REPORT* report) : MSG_BASE(report) {}

MSG_D::MSG_D(MSG_REPORT* report) : MSG_BASE(report) {}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int line) {
  send(channels().m_check_sink, or_empty(condition), or_empty(tag), or_empty(file), line);
}

bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (!channels().m_debug) {
    return false;
  }
  send(channels().m_debug_sink, or_empty(tag), kpt_host::formatted(format, args).c_str());
  return true;
}

namespace kpt_host {

void set_debug(bool on) { channels().m_debug = on; }

void set_debug_sink(std::function<void(const char* tag, const char* text)> sink) {
  channels().m_debug_sink = sink ? std::move(sink) : print_debug;
}

void set_error_sink(std::function<void(const char* tag, const char* text)> sink) {
  channels().m_error_sink = sink ? std::move(sink) : print_error;
}

void set_internal_error_sink(
    std::function<void(const char* condition, const char* tag, const char* file, int line)> sink) {
  channels().m_check_sink = sink ? std::move(sink) : print_check;
}

}  // namespace kpt_host
