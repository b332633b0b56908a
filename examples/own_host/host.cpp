// The services that the library needs from its host, as a flow may define them: memory from
// the heap with a counter, messages in the flow's log, switches from the flow's settings.
//
// This file defines every function of h/ that is not a template. The linker names one that is missing.
#include "host.h"

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include "h/cfg_sys.h"
#include "h/fio_path.h"
#include "h/gen_sys.h"
#include "h/mem_alloc_sys.h"
#include "h/msg_sys.h"

namespace {

long s_blocks = 0;
bool s_verbose = false;

void log(const char* kind, const char* tag, const char* text) { std::printf("[%s] %s: %s\n", kind, tag, text); }

__attribute__((format(printf, 1, 0))) MEM_STRING printed(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  MEM_STRING text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, args);
  return text;
}

}  // namespace

long flow::live_blocks() { return s_blocks; }
void flow::set_verbose(bool on) { s_verbose = on; }

// ---- Memory. Blocks of the flow's own heap; here that is the C++ one. ----

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char*) {
  void* const block = ::operator new(size);
  ++thunk->m_live_blocks;
  ++s_blocks;
  return block;
}

void MEM_MANAGER::delete_wrapper(void* p, const char*) {
  if (p != nullptr) {
    --s_blocks;
    ::operator delete(p);
  }
}

MEM_INITIALIZER::MEM_INITIALIZER(const char*) {}
MEM_INITIALIZER::~MEM_INITIALIZER() = default;

// ---- Messages ----

MSG_BASE::MSG_BASE(MSG_REPORT* report) : m_report(report) {}
MSG_BASE::~MSG_BASE() = default;
MSG_E::MSG_E(MSG_REPORT* report) : MSG_BASE(report) {}
MSG_D::MSG_D(MSG_REPORT* report) : MSG_BASE(report) {}

void* MSG_BASE::operator new(std::size_t size) { return std::memset(::operator new(size), 0, size); }
void MSG_BASE::operator delete(void* p) { ::operator delete(p); }

// "%1!s! lacks %2!d!/LACKS": the arguments by their numbers, and an identifier after
// the last slash. The library's own texts name each argument once and in order.
void MSG_BASE::fill_args(const char* text, unsigned int n, ...) {
  const std::string_view whole = text;
  const std::size_t slash = whole.rfind('/');
  m_tag = slash == std::string_view::npos ? "" : whole.substr(slash + 1);
  m_text.clear();
  va_list args;
  va_start(args, n);
  const std::string_view body = whole.substr(0, slash);
  for (std::size_t k = 0; k < body.size(); ++k) {
    const std::string_view placeholder = body.substr(k, 5);
    if (placeholder.size() < 5 || placeholder[0] != '%' || placeholder[2] != '!' || placeholder[4] != '!') {
      m_text += body[k];
      continue;
    }
    m_text += placeholder[3] == 's' ? MEM_STRING(va_arg(args, const char*)) : gen_itoa(va_arg(args, int), 10);
    k += placeholder.size() - 1;
  }
  va_end(args);
}

void MSG_BASE::fill_args(const char* format, va_list args) { m_text = printed(format, args); }
void MSG_BASE::set_tag(const char* tag) { m_tag = tag; }

void MSG_BASE::post() {
  const bool debug = dynamic_cast<const MSG_D*>(this) != nullptr;
  if (!debug || s_verbose) {
    log(debug ? "debug" : "error", m_tag.c_str(), m_text.c_str());
  }
}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int) {
  log(file, tag, condition);
}

// Called for every line, also when nobody reads it: a line that is not shown is not formatted.
bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (s_verbose) {
    log("debug", tag, printed(format, args).c_str());
  }
  return s_verbose;
}

// ---- Settings, numbers, time and paths ----

bool cfg_is_on(const char*, bool default_value) { return default_value; }

int gen_atoi(const MEM_STRING& text) {
  const long value = std::strtol(text.c_str(), nullptr, 10);
  return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

MEM_STRING gen_itoa(int value, int base) {
  if (base < 2 || base > 36) {
    base = 10;
  }
  MEM_STRING digits;
  unsigned rest = value < 0 ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  do {
    digits.insert(digits.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[rest % static_cast<unsigned>(base)]);
    rest /= static_cast<unsigned>(base);
  } while (rest != 0);
  return value < 0 ? "-" + digits : digits;
}

void gen_itoa(int value, MEM_STRING& out, int base) { out = gen_itoa(value, base); }

void gen_sprintf(MEM_STRING* out, const char* format, ...) {
  va_list args;
  va_start(args, format);
  *out = printed(format, args);
  va_end(args);
}

int gen_strcmp(const char* a, const char* b) { return std::strcmp(a, b); }

MEM_STRING gen_get_current_time() {
  const std::time_t now = std::time(nullptr);
  char text[64] = "";
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
  return text;
}

unsigned long gen_get_tick_count() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<unsigned long>(now.tv_sec) * 1000 + static_cast<unsigned long>(now.tv_nsec) / 1000000;
}

FIO_PATH::FIO_PATH(const char* path) : m_path(path) {}
MEM_STRING FIO_PATH::fullpath() const { return m_path; }
bool FIO_PATH::is_unc_path(const char*) { return false; }
void FIO_PATH::change_path_separators_for_windows_api() {}
