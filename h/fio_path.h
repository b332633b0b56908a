// File paths of the host.
//
// Ownership: a path owns a copy of its text; results are values of the caller.
#ifndef H_FIO_PATH_H
#define H_FIO_PATH_H

#include "h/mem_alloc_sys.h"

class KPT_HOST_API FIO_PATH {
 public:
  explicit FIO_PATH(const char* path);

  /// The path from the root. The file need not exist; a path that cannot be resolved comes back
  /// as it was given.
  MEM_STRING fullpath() const;

  /// Whether `path` names a network share: two separators, "//" or "\\", and the name of a server
  /// right behind them.
  static bool is_unc_path(const char* path);

  /// Turns every "/" of a network path into "\"; leaves any other path as it is.
  void change_path_separators_for_windows_api();

 private:
  MEM_STRING m_path;
};

#endif
