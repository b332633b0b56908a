#include "db/kpt/load/kpt_file_loader.h"

#include <new>
#include <utility>

#include "db/kpt/load/kpt_general_source.h"
#include "db/kpt/load/kpt_plain_scanner.h"
#include "db/kpt/msg_kpt.h"

namespace {

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> report_end_of_memory(std::string_view file_name, KPT_LOAD_PROBLEM* problem) {
  kpt_tell_out_of_memory(file_name);
  if (problem != nullptr) {
    problem->note_end_of_memory();
  }
  return nullptr;
}

}  // namespace

// The general source knows only at the end of a file whether it is well-formed.
// It builds a database meanwhile, which nobody sees before the end.
struct KPT_FILE_LOADER::GENERAL {
  explicit GENERAL(const CREATE& create)
      : builder([&](std::string_view name) { return name.empty() ? nullptr : create(name); }, lines) {}

  KPT_LOAD_LINES lines{true};
  KPT_DATABASE_BUILDER builder;
  KPT_GENERAL_SOURCE source;
};

KPT_FILE_LOADER::KPT_FILE_LOADER(std::string_view file_name, SOURCES sources)
    : m_file_name(file_name),
      m_sources(sources),
      m_file(kpt_path_to_open(m_file_name)),
      m_bytes(m_file->is_open() ? &*m_file : nullptr) {}

KPT_FILE_LOADER::KPT_FILE_LOADER(KPT_BYTES& bytes, std::string_view shown_name)
    : m_file_name(shown_name), m_sources(ALL_SOURCES), m_bytes(&bytes) {}

KPT_FILE_LOADER::~KPT_FILE_LOADER() = default;

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::load(std::string_view file_name, const CREATE& create,
                                                             KPT_LOAD_PROBLEM* problem) {
  try {
    return KPT_FILE_LOADER(file_name).load(create, problem);
  } catch (const std::bad_alloc&) {
    return report_end_of_memory(file_name, problem);
  }
}

// There may be no memory even for the name.
std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::load(KPT_BYTES& bytes, std::string_view shown_name,
                                                             KPT_FILE_VISITOR* visitor, const CREATE& create,
                                                             KPT_LOAD_PROBLEM* problem) {
  try {
    KPT_FILE_LOADER loader(bytes, shown_name);
    loader.set_visitor(visitor);
    return loader.load(create, problem);
  } catch (const std::bad_alloc&) {
    return report_end_of_memory(shown_name, problem);
  }
}

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::load(const CREATE& create, KPT_LOAD_PROBLEM* problem) {
  try {
    std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db = read(create) ? finish() : nullptr;
    if (db == nullptr && problem != nullptr) {
      problem->note(m_problem);
    }
    return db;
  } catch (const std::bad_alloc&) {
    return report_end_of_memory(m_file_name, problem);
  }
}

// The parser's line for a file without errors. It is issued once more when the
// database is built: hosts expect both lines.
void KPT_FILE_LOADER::tell_parsed() const { kpt_msg_debug("XML parse: file: %s, nerrors: %d", m_file_name.c_str(), 0); }

void KPT_FILE_LOADER::tell_parsing_starts() const { kpt_msg_debug("Start XML parsing"); }

// Checks the whole file before anything is built.
bool KPT_FILE_LOADER::look_through() {
  if (m_sources == GENERAL_SOURCE_ALONE || m_bytes == nullptr || !m_bytes->rewind()) {
    return false;
  }
  m_is_plain = kpt_is_plain(*m_bytes, m_name) && m_bytes->rewind();
  if (!m_is_plain) {
    m_bytes->rewind();
  }
  return m_is_plain;
}

bool KPT_FILE_LOADER::read_generally(const CREATE& create) {
  m_general = std::make_unique<GENERAL>(create);
  if (!m_general->source.read(m_file_name, m_bytes, {&m_general->builder, m_visitor})) {
    m_problem.note(m_general->source.problem());
    return false;
  }
  tell_parsing_starts();
  m_name = m_general->builder.name();
  return m_general->builder.has_database();
}

// A visitor also gets the elements of a file whose database is not wanted.
void KPT_FILE_LOADER::show_what_is_not_wanted() {
  if (m_visitor != nullptr) {
    KPT_WATCHED_BUILDER nobody(nullptr, m_visitor);
    kpt_build_from_plain(*m_bytes, nobody);
  }
}

// Without a visitor, no element needs a check for it, and no line is counted.
bool KPT_FILE_LOADER::build_from_plain(KPT_DATABASE_BUILDER& builder) {
  if (m_visitor == nullptr) {
    return kpt_build_from_plain(*m_bytes, builder);
  }
  KPT_WATCHED_BUILDER watched(&builder, m_visitor);
  return kpt_build_from_plain(*m_bytes, watched);
}

bool KPT_FILE_LOADER::read(const CREATE& create) {
  bool is_wanted = false;
  if (look_through()) {
    tell_parsed();
    tell_parsing_starts();
    m_db.reset(m_name.empty() ? nullptr : create(m_name));
    is_wanted = m_db != nullptr;
    if (!is_wanted) {
      show_what_is_not_wanted();
    }
  } else {
    m_name.clear();
    is_wanted = read_generally(create);
  }
  if (m_name.empty()) {
    m_problem.note({KPT_LOAD_PROBLEM::NO_NAME, "the database has no name"});
  }
  return is_wanted;
}

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::complete(std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> db) {
  if (db == nullptr) {
    m_problem.note({KPT_LOAD_PROBLEM::NOT_COMPLETE, "something follows the transformations"});
  }
  return db;
}

std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> KPT_FILE_LOADER::finish() {
  if (m_general != nullptr) {
    m_general->source.repeat_warnings();
    tell_parsed();
    tell_parsing_starts();
    m_general->lines.release();
    return complete(m_general->builder.take());
  }
  tell_parsed();
  tell_parsing_starts();
  KPT_LOAD_LINES lines(false);
  KPT_DATABASE_BUILDER builder([&](std::string_view) { return m_db.release(); }, lines);
  if (!build_from_plain(builder)) {
    kpt_msg_debug("Error: file %s changed while it was read", m_file_name.c_str());
    m_problem.note({KPT_LOAD_PROBLEM::NOT_WELL_FORMED, "the file changed while it was read"});
    return nullptr;
  }
  return complete(builder.take());
}
