// A line on standard error while the work is long, for someone who sits at a terminal.
//
// Ownership: the line is taken away when its PROGRESS ends.
#ifndef KPTDB_PROGRESS_H
#define KPTDB_PROGRESS_H

#include <cstdint>
#include <string>

namespace kptdb {

class PROGRESS {
 public:
  /// `bytes` is the size of the work. Small work is over before anyone could read of it.
  PROGRESS(std::string what, std::uint64_t bytes);
  ~PROGRESS();
  PROGRESS(const PROGRESS&) = delete;
  PROGRESS& operator=(const PROGRESS&) = delete;

  void at(std::uint64_t bytes);

 private:
  void show(const std::string& text) const;

  std::string m_what;
  std::uint64_t m_bytes;
  bool m_shown;
  unsigned m_percent = 0;
};

}  // namespace kptdb

#endif
