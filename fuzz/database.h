// What the fuzz targets share: files in memory, databases read from them, and
// every question that can be asked of a database.
//
// Ownership: a MEMORY_FILE owns its descriptor; a DATABASE is the caller's.
#ifndef FUZZ_DATABASE_H
#define FUZZ_DATABASE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kpt_fuzz {

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

/// A file in memory, under a name by which the library can open it.
class MEMORY_FILE {
 public:
  explicit MEMORY_FILE(std::string_view bytes = {});
  ~MEMORY_FILE();
  MEMORY_FILE(const MEMORY_FILE&) = delete;
  MEMORY_FILE& operator=(const MEMORY_FILE&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }
  /// All that is in it now.
  std::string bytes() const;

 private:
  int m_descriptor;
};

/// As much of the file as becomes a database.
DATABASE load(const MEMORY_FILE& file);

/// Looks every register of both sets up and asks every map everything.
void ask(KPT_KEYPOINTS_DB_IMPL& db);

/// The bits of all state tables of the database, as declared, and some for every
/// state. Each of them takes some 40 bytes of a saved file.
std::uint64_t table_bits(KPT_KEYPOINTS_DB_IMPL& db);

/// Saves the database; ends the process when that fails.
void save(KPT_KEYPOINTS_DB_IMPL& db, const MEMORY_FILE& file);

}  // namespace kpt_fuzz

#endif
