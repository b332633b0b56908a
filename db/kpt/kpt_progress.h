// Gets how far a long operation has come: a union, a composition or a save. A
// load shows it by the bytes that it reads, see KPT_BYTES. Clients derive a class
// from it.
//
// Ownership: the caller owns the listener, which has to outlive the operation.
#ifndef KPT_PROGRESS_H
#define KPT_PROGRESS_H

#include <cstddef>

#include "kpt_export.h"

class KPT_EXPORT KPT_PROGRESS {
 public:
  virtual ~KPT_PROGRESS() = default;
  /// `done` of `all` registers and maps are passed; an operation may pass
  /// each of them several times. In one operation `all` stays the same, and `done` never
  /// becomes less. The first call is for the first of them, further calls are for
  /// about every thousandth, and the last call of an operation that succeeds has
  /// `done` equal to `all`. The listener must not use the databases and must not throw.
  virtual void at(std::size_t done, std::size_t all) = 0;
};

#endif
