#include "db/kpt/files/kpt_load.h"

#include "db/kpt/kpt_xml_reader.h"

namespace {

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> load(KPT_XML_READER& reader, std::string_view file_name,
                                            const KPT_CREATE_DB& create) {
  const KPT_STRING name = reader.get_db_name(file_name);
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db(name.empty() ? nullptr : create(name));
  return db != nullptr && reader.load_kpt_xml(file_name, db.get()) ? std::move(db) : nullptr;
}

}  // namespace

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> kpt_load(std::string_view file_name, const KPT_CREATE_DB& create,
                                                KPT_LOAD_PROBLEM* problem) {
  KPT_XML_READER reader;
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db = load(reader, file_name, create);
  if (db == nullptr && problem != nullptr) {
    const KPT_LOAD_PROBLEM& own = reader.problem();
    problem->note(own.kind, own.message, own.line, own.column);
  }
  return db;
}
