// File paths of the host.
//
// Ownership: a path owns a copy of its text. The caller owns the results.
#ifndef H_FIO_PATH_H
#define H_FIO_PATH_H

#include "h/mem_alloc_sys.h"

class KPT_HOST_API FIO_PATH {
 public:
  explicit FIO_PATH(const char* path);

  /// The absolute path. The file need not exist. A path that cannot be resolved is returned
  /// unchanged.
  MEM_STRING fullpath() const;

  /// Whether `path` names a network share: two separators, "//" or "\\", and then at once the name
  /// of a server.
  static bool is_unc_path(const char* path);

  /// Turns every "/" of a network path into "\". Does not change any other path.
  void change_path_separators_for_windows_api();

 private:
  MEM_STRING m_path;
};

#endif
