// Any bytes as a database file: load it, ask for every register that it holds,
// save it, and load what was saved. Nothing may go wrong in a way that a
// sanitizer sees, and what the library wrote from plain names must come back.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_reader.h"
#include "host/kpt_host.h"

namespace {

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

// A table of this many bits is written as some 40 bytes each.
constexpr std::uint64_t MOST_SAVED_BITS = std::uint64_t{1} << 20U;

// A file in memory, under a name by which the library can open it.
class MEMORY_FILE {
 public:
  explicit MEMORY_FILE(const char* name) : m_descriptor(memfd_create(name, 0)) {}
  ~MEMORY_FILE() { close(m_descriptor); }
  MEMORY_FILE(const MEMORY_FILE&) = delete;
  MEMORY_FILE& operator=(const MEMORY_FILE&) = delete;

  void write_all(const std::uint8_t* bytes, std::size_t size) const {
    while (size > 0) {
      const ssize_t written = write(m_descriptor, bytes, size);
      if (written <= 0) {
        std::abort();
      }
      bytes += written;
      size -= static_cast<std::size_t>(written);
    }
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

 private:
  int m_descriptor;
};

// Every question about one map, whatever the answers.
void ask(KPT_TRANSFORMATION_IMPL* map) {
  if (map == nullptr) {
    return;
  }
  const KPT_REGISTER_TRANSFORMATION handle(map);
  for (unsigned short i = 0; i < map->get_num_reference_registers(); ++i) {
    handle.get_reference(i);
    handle.get_reference_equivalents(i);
    handle.get_reference_inverted_equivalents(i);
    handle.is_positive_unate(i, 0);
  }
  for (unsigned short i = 0; i < map->get_num_transformed_registers(); ++i) {
    handle.get_transformed(i);
    handle.get_transformed_equivalents(i);
    handle.get_transformed_inverted_equivalents(i);
    handle.is_negative_unate(0, i);
  }
  handle.get_state_table();
}

void ask_for_every_register(KPT_KEYPOINTS_DB_IMPL& db) {
  db.get_reference_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    ask(db.get_reference_register_transformation(k->get_element_name()));
    ask(db.get_transformation_set()->get_map_of_r_keypoint(k));
    return true;
  });
  db.get_transformed_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    ask(db.get_transformed_register_transformation(k->get_element_name()));
    ask(db.get_transformation_set()->get_map_of_t_keypoint(k));
    return true;
  });
}

std::uint64_t table_bits(KPT_KEYPOINTS_DB_IMPL& db) {
  std::uint64_t bits = 0;
  for (KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
    const KPT_STATE_TABLE_IMPL table = map->get_register_state_table();
    bits += std::uint64_t{table.get_num_states()} *
            (1U + table.get_num_reference_registers() + table.get_num_transformed_registers());
  }
  return bits;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  kpt_host::set_error_sink([](const char*, const char*) {});
  kpt_host::set_internal_error_sink([](const char*, const char*, const char*, int) {});
  static const KPT_XML_READER s_reader;  // the parser starts once
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const MEMORY_FILE file("file");
  file.write_all(bytes, size);
  KPT_XML_READER reader;
  const DATABASE db(new KPT_KEYPOINTS_DB_IMPL("fuzz"));
  reader.load_kpt_xml(file.path(), db.get());
  ask_for_every_register(*db);
  if (table_bits(*db) > MOST_SAVED_BITS) {
    return 0;
  }
  const MEMORY_FILE saved("saved");
  if (!db->save(saved.path())) {
    std::abort();
  }
  const DATABASE again(new KPT_KEYPOINTS_DB_IMPL("fuzz"));
  reader.load_kpt_xml(saved.path(), again.get());
  ask_for_every_register(*again);
  return 0;
}
