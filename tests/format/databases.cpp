#include "tests/format/databases.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "db/kpt/kpt_register_keypoint_impl.h"
#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/kpt_transformation_impl.h"
#include "db/kpt/kpt_xml_reader.h"

namespace fs = std::filesystem;

namespace kpt_test {

namespace {

std::string table_text(const KPT_STATE_TABLE_IMPL& table) {
  std::string text;
  const auto entries = [&](KPT_SET_ENUM side, unsigned row, unsigned columns) {
    for (unsigned column = 1; column <= columns; ++column) {
      const int entry = table.get_entry(side, static_cast<unsigned short>(row), static_cast<unsigned short>(column));
      text += std::to_string(entry);
    }
  };
  for (unsigned row = 1; row <= table.get_num_states(); ++row) {
    text += row == 1 ? "" : " ";
    entries(KPT_REFERENCE_SET, row, table.get_num_reference_registers());
    text += "/";
    entries(KPT_TRANSFORMED_SET, row, table.get_num_transformed_registers());
  }
  return text;
}

std::string group_text(const KPT_KEYPOINT_LIST& group) {
  std::string text;
  for (const KPT_KEYPOINT* keypoint : group) {
    text += text.empty() ? "" : " ";
    text += keypoint == nullptr ? "null" : std::string(keypoint->get_element_name());
  }
  return text;
}

}  // namespace

std::string data_file(const std::string& name) { return std::string(KPT_TEST_DATA) + "/" + name; }

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw std::runtime_error("cannot read " + path);
  }
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void write_file(const std::string& path, std::string_view bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write " + path);
  }
}

FOLDER::FOLDER() {
  std::string path = (fs::temp_directory_path() / "kpt-test-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) {
    throw std::runtime_error("cannot make " + path);
  }
  m_path = path;
}

FOLDER::~FOLDER() {
  std::error_code ignored;
  fs::permissions(m_path, fs::perms::owner_all, ignored);
  fs::remove_all(m_path, ignored);
}

std::string FOLDER::file_of(std::string_view bytes, const std::string& name) const {
  write_file(file(name), bytes);
  return file(name);
}

std::vector<std::string> FOLDER::names() const {
  std::vector<std::string> found;
  for (const fs::directory_entry& entry : fs::directory_iterator(m_path)) {
    found.push_back(entry.path().filename().string());
  }
  std::sort(found.begin(), found.end());
  return found;
}

LOADED load(const std::string& path) {
  KPT_XML_READER reader;
  LOADED loaded{new_database("loaded"), false};
  loaded.result = reader.load_kpt_xml(path, loaded.db.get());
  return loaded;
}

LOADED load_data(const std::string& name) { return load(data_file(name)); }

std::string saved(KPT_KEYPOINTS_DB_IMPL& db) {
  const FOLDER folder;
  const std::string path = folder.file("saved.xml");
  if (!db.save(path)) {
    throw std::runtime_error("cannot save");
  }
  return read_file(path);
}

std::vector<std::string> registers(const KPT_KEYPOINT_SET_IMPL& set) {
  std::vector<std::string> texts;
  set.for_each_keypoint([&](const KPT_REGISTER_KEYPOINT_IMPL* k) {
    std::string text = std::to_string(k->get_kpid()) + ":" + std::string(k->get_element_name());
    if (k->register_is_blockinstance()) {
      text += "/" + std::string(k->get_entity_name()) + "/" + std::string(k->get_register_type());
    }
    texts.push_back(text);
    return true;
  });
  return texts;
}

std::string side_text(const NI_PAIR_VECTOR& side) {
  std::string text;
  for (const NI_PAIR& pair : side) {
    text += &pair == side.begin() ? "" : "|";
    text += group_text(pair.first) + "~" + group_text(pair.second);
  }
  return text;
}

std::vector<std::string> maps(KPT_KEYPOINTS_DB_IMPL& db) {
  std::vector<std::string> texts;
  for (const KPT_TRANSFORMATION_IMPL* map : db.get_transformation_set()->get_list_of_register_transformations()) {
    std::string text = side_text(map->r_vec()) + " -> " + side_text(map->t_vec());
    if (map->get_elim_status() != KPT_NOT_ELIMINATED) {
      text += " (" + std::to_string(map->get_elim_status()) + ")";
    }
    if (map->map_has_fsm_transformation()) {
      text += " [" + table_text(map->get_register_state_table()) + "]";
    }
    texts.push_back(text);
  }
  return texts;
}

COUNTERS::COUNTERS(long r, long t)
    : m_r(std::exchange(KPT_KEYPOINTS_DB_IMPL::s_r_id, r)), m_t(std::exchange(KPT_KEYPOINTS_DB_IMPL::s_t_id, t)) {}

COUNTERS::~COUNTERS() {
  KPT_KEYPOINTS_DB_IMPL::s_r_id = m_r;
  KPT_KEYPOINTS_DB_IMPL::s_t_id = m_t;
}

}  // namespace kpt_test
