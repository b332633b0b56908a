#include "tests/support/host_lines.h"

#include <utility>

#include "host/kpt_host.h"

namespace kpt_test {

HOST_LINES::HOST_LINES() {
  kpt_host::set_debug(true);
  kpt_host::set_debug_sink([this](const char* tag, const char* text) {
    m_tags.emplace_back(tag);
    m_debug.emplace_back(text);
  });
  kpt_host::set_error_sink([this](const char* tag, const char* text) {
    m_error_tags.emplace_back(tag);
    m_errors.emplace_back(text);
  });
  kpt_host::set_internal_error_sink([this](const char* condition, const char* tag, const char* file, int line) {
    m_internal_errors.push_back({condition, tag, file, line});
  });
}

HOST_LINES::~HOST_LINES() {
  kpt_host::set_debug(false);
  kpt_host::set_debug_sink(nullptr);
  kpt_host::set_error_sink(nullptr);
  kpt_host::set_internal_error_sink(nullptr);
}

void HOST_LINES::clear() {
  m_debug.clear();
  m_tags.clear();
  m_errors.clear();
  m_error_tags.clear();
  m_internal_errors.clear();
}

std::vector<std::string> HOST_LINES::take_debug() {
  m_tags.clear();
  return std::exchange(m_debug, {});
}

}  // namespace kpt_test
