#include "db/kpt/load/kpt_file_loader.h"

#include <utility>

#include "db/kpt/kpt_xml_reader.h"
#include "db/kpt/load/kpt_plain_scanner.h"
#include "db/kpt/msg_kpt.h"

KPT_FILE_LOADER::KPT_FILE_LOADER(std::string_view file_name, SOURCES sources)
    : m_file_name(file_name), m_sources(sources) {}

KPT_FILE_LOADER::~KPT_FILE_LOADER() = default;

// As the parser says it of a file without an error, and once more when the
// database is built: a load once parsed its file twice, and hosts watch for both.
void KPT_FILE_LOADER::tell_parsed() const {
  kpt_msg_debug("XML parse: file: %s, nerrors: %d", m_file_name.c_str(), 0);
  kpt_msg_debug("Start XML parsing");
}

// Looked at from end to end before anything is built.
bool KPT_FILE_LOADER::look_through(KPT_STRING& name) {
  auto bytes = std::make_unique<KPT_FILE_BYTES>(kpt_path_to_open(m_file_name));
  if (m_sources == GENERAL_SOURCE_ALONE || !bytes->is_open() || !bytes->rewind() || !kpt_is_plain(*bytes, name)) {
    return false;
  }
  m_plain = std::move(bytes);
  return true;
}

bool KPT_FILE_LOADER::read(const CREATE& create) {
  KPT_STRING name;
  if (look_through(name)) {
    tell_parsed();
  } else {
    name = KPT_XML_READER().get_db_name(m_file_name);
  }
  m_db.reset(name.empty() ? nullptr : create(name));
  return m_db != nullptr;
}

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::finish() {
  if (!is_plain()) {
    return KPT_XML_READER().load_kpt_xml(m_file_name, m_db.get()) ? std::move(m_db) : nullptr;
  }
  tell_parsed();
  KPT_LOAD_LINES lines(false);
  KPT_DATABASE_BUILDER builder([&](std::string_view) { return m_db.release(); }, lines);
  const bool is_read = m_plain->rewind() && kpt_build_from_plain(*m_plain, builder);
  if (!is_read) {
    kpt_msg_debug("Error: file %s changed while it was read", m_file_name.c_str());
    return nullptr;
  }
  std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db = builder.take();
  return builder.is_complete() ? std::move(db) : nullptr;
}
