#include "db/kpt/kpt_unregistered_db.h"

#include <utility>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/load/kpt_file_loader.h"

namespace {

const auto make = [](std::string_view name) { return new KPT_KEYPOINTS_DB_IMPL(name); };

}  // namespace

KPT_UNREGISTERED_DB KPT_UNREGISTERED_DB::create(std::string_view name) {
  return KPT_UNREGISTERED_DB(new KPT_KEYPOINTS_DB_IMPL(name));
}

KPT_UNREGISTERED_DB KPT_UNREGISTERED_DB::load(std::string_view file_name, KPT_LOAD_PROBLEM* problem) {
  return KPT_UNREGISTERED_DB(KPT_FILE_LOADER::load(file_name, make, problem).release());
}

KPT_UNREGISTERED_DB KPT_UNREGISTERED_DB::load(KPT_BYTES& bytes, std::string_view shown_name, KPT_LOAD_PROBLEM* problem,
                                              KPT_FILE_VISITOR* visitor) {
  return KPT_UNREGISTERED_DB(KPT_FILE_LOADER::load(bytes, shown_name, visitor, make, problem).release());
}

KPT_UNREGISTERED_DB::KPT_UNREGISTERED_DB(KPT_UNREGISTERED_DB&& other) noexcept : m_db(other.release()) {}

KPT_UNREGISTERED_DB& KPT_UNREGISTERED_DB::operator=(KPT_UNREGISTERED_DB&& other) noexcept {
  if (this != &other) {
    destroy();
    m_db.m_impl = other.release();
  }
  return *this;
}

KPT_KEYPOINTS_DB_IMPL* KPT_UNREGISTERED_DB::release() { return std::exchange(m_db.m_impl, nullptr); }

bool KPT_UNREGISTERED_DB::save(std::string_view file_name) const { return !is_null() && m_db.save(file_name); }

bool KPT_UNREGISTERED_DB::save_atomically(std::string_view file_name, KPT_PROGRESS* progress) const {
  return !is_null() && m_db.save_atomically(file_name, progress);
}

bool KPT_UNREGISTERED_DB::destroy() { return m_db.delete_keypoints_db(); }
