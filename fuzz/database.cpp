#include "fuzz/database.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "db/kpt/kpt_register_keypoint.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_register_transformation.h"
#include "db/kpt/kpt_state_table.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_reader.h"
#include "host/kpt_host.h"

namespace {

// The elements of a state in a file cost as much as this many bits.
constexpr std::uint64_t STATE_BITS = 4;

// Asks one map every question and ignores the answers.
void ask_map(KPT_TRANSFORMATION_IMPL* map) {
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

}  // namespace

kpt_fuzz::MEMORY_FILE::MEMORY_FILE(std::string_view bytes) : m_descriptor(memfd_create("file", MFD_CLOEXEC)) {
  while (!bytes.empty()) {
    const ssize_t written = write(m_descriptor, bytes.data(), bytes.size());
    if (written <= 0) {
      std::abort();
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

kpt_fuzz::MEMORY_FILE::~MEMORY_FILE() { close(m_descriptor); }

std::string kpt_fuzz::MEMORY_FILE::bytes() const {
  struct stat state {};
  if (fstat(m_descriptor, &state) != 0) {
    std::abort();
  }
  std::string all(static_cast<std::size_t>(state.st_size), '\0');
  for (std::size_t done = 0; done < all.size();) {
    const ssize_t got = pread(m_descriptor, all.data() + done, all.size() - done, static_cast<off_t>(done));
    if (got <= 0) {
      std::abort();
    }
    done += static_cast<std::size_t>(got);
  }
  return all;
}

kpt_fuzz::DATABASE kpt_fuzz::load(const MEMORY_FILE& file) {
  KPT_XML_READER reader;
  DATABASE db(new KPT_KEYPOINTS_DB_IMPL("fuzz"));
  reader.load_kpt_xml(file.path(), db.get());
  return db;
}

// The entries of the registers are checked map by map, because a map may list
// thousands of registers and have a large table.
void kpt_fuzz::ask(KPT_KEYPOINTS_DB_IMPL& db) {
  KPT_TRANSFORMATION_SET_IMPL& maps = *db.get_transformation_set();
  db.get_reference_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    db.get_reference_register_transformation(k->get_element_name());
    maps.get_map_of_r_keypoint(k);
    return true;
  });
  db.get_transformed_set()->for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    db.get_transformed_register_transformation(k->get_element_name());
    maps.get_map_of_t_keypoint(k);
    return true;
  });
  for (KPT_TRANSFORMATION_IMPL* map : maps.get_list_of_register_transformations()) {
    ask_map(map);
  }
}

std::uint64_t kpt_fuzz::table_bits(KPT_KEYPOINTS_DB_IMPL& db) {
  std::uint64_t bits = 0;
  for (KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
    const KPT_STATE_TABLE_IMPL table = map->get_register_state_table();
    bits += std::uint64_t{table.get_num_states()} *
            (STATE_BITS + table.get_num_reference_registers() + table.get_num_transformed_registers());
  }
  return bits;
}

void kpt_fuzz::save(KPT_KEYPOINTS_DB_IMPL& db, const MEMORY_FILE& file) {
  if (!db.save(file.path())) {
    std::abort();
  }
}

// Debug lines are formatted although nobody reads them, because the texts in them must be readable.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  kpt_host::set_debug(true);
  kpt_host::set_debug_sink([](const char*, const char*) {});
  kpt_host::set_error_sink([](const char*, const char*) {});
  kpt_host::set_internal_error_sink([](const char*, const char*, const char*, int) {});
  static const KPT_XML_READER s_reader;  // so that the parser starts only once
  return 0;
}
