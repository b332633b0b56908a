#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "h/fio_path.h"

FIO_PATH::FIO_PATH(const char* path) : m_path(path != nullptr ? path : "") {}

// A network path is already absolute. It is returned with "/", which opens a file here.
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
