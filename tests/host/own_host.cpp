// Every service of h/, in its shortest form.
#include "tests/host/own_host.h"

#include <malloc.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "h/cfg_sys.h"
#include "h/fio_path.h"
#include "h/gen_sys.h"
#include "h/msg_sys.h"

using own_host::record;

namespace {

__attribute__((format(printf, 1, 0))) MEM_STRING printed(const char* format, va_list args) {
  char text[1000] = "";  // longer texts are cut
  std::vsnprintf(text, sizeof text, format, args);
  return text;
}

// The library's own texts name each argument once and in order, so an argument is
// read when its placeholder, "%1!s!" or "%2!d!", is met.
MEM_STRING filled(const MEM_STRING& text, va_list args) {
  constexpr std::size_t LENGTH = 5;
  MEM_STRING result;
  for (std::size_t k = 0; k < text.size(); ++k) {
    if (text[k] != '%') {
      result += text[k];
      continue;
    }
    result += text[k + 3] == 's' ? MEM_STRING(va_arg(args, const char*)) : gen_itoa(va_arg(args, int), 10);
    k += LENGTH - 1;
  }
  return result;
}

std::string line(const char* tag, const MEM_STRING& text) { return std::string(tag) + ": " + text.c_str(); }

// Prints the text of a block that begins with the word, by which a test finds the
// blocks of its own long names.
void tell_of_named_block(const void* p) {
  constexpr std::string_view WORD = "telling ";
  const auto* const text = static_cast<const char*>(p);
  if (p != nullptr && malloc_usable_size(const_cast<void*>(p)) > WORD.size() &&
      WORD.compare(0, WORD.npos, text, WORD.size()) == 0) {
    std::printf("freed: %s\n", text);
  }
}

// A debug message that notes its tag. A host's own classes may override every
// virtual function.
class HEARING_MSG_D : public MSG_D {
 public:
  HEARING_MSG_D() : MSG_D(nullptr) {}
  void set_tag(const char* tag) override {
    own_host::record().tags.emplace_back(tag);
    MSG_D::set_tag(tag);
  }
};

const HEARING_MSG_D* s_hearing = nullptr;

}  // namespace

// Never destroyed: the library frees memory until it is unloaded.
own_host::RECORD& own_host::record() {
  static auto* const instance = new RECORD;
  return *instance;
}

void* MEM_MANAGER::new_wrapper(unsigned long size, MEM_TRACKER_THUNK* thunk, const char* file) {
  record().trackers.insert(thunk);
  record().allocating_files.insert(file);
  record().unbound_tracker |= thunk->m_type == nullptr;
  void* const block = ::operator new(size);
  ++record().live_blocks;
  return block;
}

void MEM_MANAGER::delete_wrapper(void* p, const char* tag) {
  record().freeing_tags.insert(tag);
  if (record().tells_of_the_end) {
    tell_of_named_block(p);
  }
  --record().live_blocks;
  ::operator delete(p);
}

MEM_INITIALIZER::MEM_INITIALIZER(const char* tag) { record().libraries.insert(tag); }
MEM_INITIALIZER::~MEM_INITIALIZER() {
  record().libraries.erase("KPT");
  if (record().tells_of_the_end) {
    std::printf("withdrawn: KPT\n");
  }
}

MSG_BASE::MSG_BASE(MSG_REPORT* report) : m_report(report) { record().reports.insert(report); }
MSG_BASE::~MSG_BASE() = default;
MSG_E::MSG_E(MSG_REPORT* report) : MSG_BASE(report) {}

// Makes every debug message one that notes its tag.
MSG_D::MSG_D(MSG_REPORT* report) : MSG_BASE(report) {
  if (s_hearing != nullptr) {
    std::memcpy(static_cast<void*>(this), static_cast<const void*>(s_hearing), sizeof(void*));
  }
}

void own_host::hear_debug_messages() {
  static const HEARING_MSG_D instance;
  s_hearing = &instance;
}

void* MSG_BASE::operator new(std::size_t size) { return std::memset(::operator new(size), 0, size); }
void MSG_BASE::operator delete(void* p) { ::operator delete(p); }

void MSG_BASE::fill_args(const char* text, unsigned int n, ...) {
  const MEM_STRING whole = text;
  const std::size_t slash = whole.rfind('/');
  m_tag = whole.substr(slash + 1);
  record().argument_counts.push_back(n);
  va_list args;
  va_start(args, n);
  m_text = filled(whole.substr(0, slash), args);
  va_end(args);
}

void MSG_BASE::fill_args(const char* format, va_list args) { m_text = printed(format, args); }
void MSG_BASE::set_tag(const char* tag) { m_tag = tag; }

void MSG_BASE::post() {
  const bool debug = dynamic_cast<MSG_D*>(this) != nullptr;
  (debug ? record().debug_lines : record().errors).push_back(line(m_tag.c_str(), m_text));
}

void MSG_INTERNAL_ERROR::report(const char* condition, const char* tag, const char* file, int number) {
  record().internal_errors.push_back(line(tag, condition) + " " + file + " " + std::to_string(number));
}

bool msg_local_vdebug(char* tag, const char* format, va_list args) {
  if (record().debug) {
    record().debug_lines.push_back(line(tag, printed(format, args)));
  }
  return record().debug;
}

bool cfg_is_on(const char* key, bool default_value) {
  record().switches.emplace_back(key);
  return default_value;
}

int gen_atoi(const MEM_STRING& text) { return std::atoi(text.c_str()); }
MEM_STRING gen_itoa(int value, int) { return std::to_string(value).c_str(); }
void gen_itoa(int value, MEM_STRING& out, int base) { out = gen_itoa(value, base); }

void gen_sprintf(MEM_STRING* out, const char* format, ...) {
  va_list args;
  va_start(args, format);
  *out = printed(format, args);
  va_end(args);
}

int gen_strcmp(const char* a, const char* b) { return std::strcmp(a, b); }
MEM_STRING gen_get_current_time() { return "today"; }

unsigned long gen_get_tick_count() { return ++record().ticks; }

FIO_PATH::FIO_PATH(const char* path) : m_path(path) {}

MEM_STRING FIO_PATH::fullpath() const {
  record().path_calls.push_back(line("full", m_path));
  return m_path.substr(1);
}

bool FIO_PATH::is_unc_path(const char* path) { return std::strncmp(path, "//", 2) == 0; }
void FIO_PATH::change_path_separators_for_windows_api() { record().path_calls.push_back(line("change", m_path)); }
