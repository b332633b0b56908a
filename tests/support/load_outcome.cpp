#include "tests/support/load_outcome.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_reader.h"
#include "db/kpt/load/kpt_file_loader.h"
#include "host/kpt_host.h"

namespace kpt_test {

namespace {

using DATABASE = std::unique_ptr<KPT_KEYPOINTS_DB_IMPL>;

// A database whose tables have this many bits is not saved.
constexpr std::uint64_t MOST_SAVED_BITS = std::uint64_t{1} << 16U;

std::string without_times(const std::string& line) {
  const std::size_t colon = line.rfind("Time: ") == std::string::npos ? line.rfind("Load: ") : line.rfind("Time: ");
  return line.starts_with("TIME: ") && colon != std::string::npos ? line.substr(0, colon + 5) : line;
}

// Notes every line that the host gets, with its kind.
class EARS {
 public:
  explicit EARS(std::vector<std::string>& lines) : m_lines(lines) {
    kpt_host::set_debug(true);
    kpt_host::set_debug_sink([this](const char*, const char* text) { m_lines.push_back(without_times(text)); });
    kpt_host::set_error_sink(
        [this](const char* tag, const char* text) { m_lines.push_back(std::string("error ") + tag + ": " + text); });
    kpt_host::set_internal_error_sink([this](const char* condition, const char* tag, const char* file, int line) {
      m_lines.push_back("internal error " + std::string(condition) + " " + tag + " " + file + " " +
                        std::to_string(line));
    });
  }
  ~EARS() {
    kpt_host::set_debug(false);
    kpt_host::set_debug_sink(nullptr);
    kpt_host::set_error_sink(nullptr);
    kpt_host::set_internal_error_sink(nullptr);
  }
  EARS(const EARS&) = delete;
  EARS& operator=(const EARS&) = delete;

 private:
  std::vector<std::string>& m_lines;
};

// Both counters are 0 while it exists.
class COUNTERS_AT_0 {
 public:
  COUNTERS_AT_0()
      : m_r(std::exchange(KPT_KEYPOINTS_DB_IMPL::s_r_id, 0)), m_t(std::exchange(KPT_KEYPOINTS_DB_IMPL::s_t_id, 0)) {}
  ~COUNTERS_AT_0() {
    KPT_KEYPOINTS_DB_IMPL::s_r_id = m_r;
    KPT_KEYPOINTS_DB_IMPL::s_t_id = m_t;
  }
  COUNTERS_AT_0(const COUNTERS_AT_0&) = delete;
  COUNTERS_AT_0& operator=(const COUNTERS_AT_0&) = delete;

 private:
  long m_r;
  long m_t;
};

DATABASE loaded_by_document(const std::string& path) {
  KPT_XML_READER reader;
  const KPT_STRING name = reader.get_db_name(path);
  if (name.empty()) {
    return nullptr;
  }
  DATABASE db(new KPT_KEYPOINTS_DB_IMPL(name));
  return reader.load_kpt_xml(path, db.get()) ? std::move(db) : nullptr;
}

DATABASE loaded_by_loader(const std::string& path, KPT_FILE_LOADER::SOURCES sources) {
  KPT_FILE_LOADER loader(path, sources);
  const auto create = [](std::string_view name) { return new KPT_KEYPOINTS_DB_IMPL(name); };
  return loader.read(create) ? loader.finish() : nullptr;
}

DATABASE loaded(const std::string& path, LOAD_WAY way) {
  switch (way) {
    case LOAD_WAY::SCANNER_FIRST:
      return loaded_by_loader(path, KPT_FILE_LOADER::ALL_SOURCES);
    case LOAD_WAY::GENERAL_SOURCE:
      return loaded_by_loader(path, KPT_FILE_LOADER::GENERAL_SOURCE_ALONE);
    default:
      return loaded_by_document(path);
  }
}

// Ids, because names may occur several times.
std::string group_text(const KPT_KEYPOINT_LIST& group) {
  std::string text;
  for (const KPT_KEYPOINT* keypoint : group) {
    text += keypoint == nullptr ? std::string("null ") : std::to_string(keypoint->get_kpid()) + " ";
  }
  return text;
}

std::string map_text(const KPT_TRANSFORMATION_IMPL& map) {
  std::string text;
  for (const NI_PAIR_VECTOR* side : {&map.r_vec(), &map.t_vec()}) {
    for (const NI_PAIR& pair : *side) {
      text += group_text(pair.first) + "~" + group_text(pair.second) + "|";
    }
    text += " -> ";
  }
  return text + std::to_string(map.get_elim_status()) + (map.map_has_fsm_transformation() ? " machine" : "");
}

std::uint64_t table_bits(const KPT_TRANSFORMATION_IMPL& map) {
  const KPT_STATE_TABLE_IMPL table = map.get_register_state_table();
  return std::uint64_t{table.get_num_states()} *
         (table.get_num_reference_registers() + table.get_num_transformed_registers());
}

std::string saved_text(KPT_KEYPOINTS_DB_IMPL& db) {
  const int descriptor = memfd_create("saved", MFD_CLOEXEC);
  const bool is_saved = db.save("/proc/self/fd/" + std::to_string(descriptor));
  std::string text(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
  const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
  close(descriptor);
  if (!is_saved || count != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("cannot save");
  }
  return text;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LOAD_OUTCOME& outcome) {
  out << (outcome.is_loaded ? "loaded" : "refused") << ", counters " << outcome.r_id << " " << outcome.t_id << "\n";
  for (const std::string& line : outcome.lines) {
    out << "  line  " << line << "\n";
  }
  for (const std::string& group : outcome.groups) {
    out << "  map   " << group << "\n";
  }
  return out << outcome.saved;
}

LOAD_OUTCOME load_outcome(const std::string& path, LOAD_WAY way) {
  LOAD_OUTCOME outcome;
  const COUNTERS_AT_0 counters;
  DATABASE db;
  {
    const EARS ears(outcome.lines);
    db = loaded(path, way);
  }
  outcome.is_loaded = db != nullptr;
  outcome.r_id = KPT_KEYPOINTS_DB_IMPL::s_r_id;
  outcome.t_id = KPT_KEYPOINTS_DB_IMPL::s_t_id;
  if (db == nullptr) {
    return outcome;
  }
  std::uint64_t bits = 0;
  for (const KPT_TRANSFORMATION_IMPL* map : db->get_transformation_set()->get_list_of_register_transformations()) {
    outcome.groups.push_back(map_text(*map));
    bits += table_bits(*map);
  }
  if (bits <= MOST_SAVED_BITS) {
    outcome.saved = saved_text(*db);
  }
  return outcome;
}

}  // namespace kpt_test
