#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "h/msg_sys.h"
#include "host/kpt_host.h"
#include "host/services/text.h"

namespace {

using kpt_services::or_empty;
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

// Never destroyed: other libraries issue messages until the process ends.
CHANNELS& channels() {
  static auto* const instance = new CHANNELS;
  return *instance;
}

// By value: a sink may replace itself while it runs.
template <class SINK, class... ARGS>
void send(SINK sink, ARGS... args) {
  sink(args...);
}

}  // namespace

void MSG_BASE::post() {
  if (dynamic_cast<MSG_D*>(this) == nullptr) {
    send(channels().m_error_sink, m_tag.c_str(), m_text.c_str());
  } else if (channels().m_debug) {
    send(channels().m_debug_sink, m_tag.c_str(), m_text.c_str());
  }
}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int line) {
  send(channels().m_check_sink, or_empty(condition), or_empty(tag), or_empty(file), line);
}

bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (!channels().m_debug) {
    return false;
  }
  send(channels().m_debug_sink, or_empty(tag), kpt_services::formatted(format, args).c_str());
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
