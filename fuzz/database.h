// The parts that all fuzz targets share: files in memory, databases loaded from
// them, and every question that a database answers.
//
// Ownership: a MEMORY_FILE owns its descriptor; the caller owns a DATABASE.
#ifndef FUZZ_DATABASE_H
#define FUZZ_DATABASE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "db/kpt/kpt_keypoints_db_impl.h"

namespace kpt_fuzz {

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

/// A file in memory, with a name by which the library can open it.
class MEMORY_FILE {
 public:
  explicit MEMORY_FILE(std::string_view bytes = {});
  ~MEMORY_FILE();
  MEMORY_FILE(const MEMORY_FILE&) = delete;
  MEMORY_FILE& operator=(const MEMORY_FILE&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }
  /// The present content.
  std::string bytes() const;

 private:
  int m_descriptor;
};

/// The database that a load makes of the file, complete or not.
DATABASE load(const MEMORY_FILE& file);

/// Looks up every register of both sets and asks every map every question.
void ask(KPT_KEYPOINTS_DB_IMPL& db);

/// The number of bits of all state tables of the database, as declared, and some
/// more for every state. Each takes about 40 bytes in a saved file.
std::uint64_t table_bits(KPT_KEYPOINTS_DB_IMPL& db);

/// Saves the database; ends the process when that fails.
void save(KPT_KEYPOINTS_DB_IMPL& db, const MEMORY_FILE& file);

}  // namespace kpt_fuzz

#endif
