// Reads keypoint database files.
//
// Ownership: a reader keeps the XML parser started while it lives; readers may
// nest.
#ifndef KPT_XML_READER_H
#define KPT_XML_READER_H

#include <string_view>

#include "db/kpt/files/kpt_xml_platform.h"
#include "db/kpt/kpt_load_problem.h"
#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_XML_READER {
 public:
  KPT_XML_READER();
  ~KPT_XML_READER();
  KPT_XML_READER(const KPT_XML_READER&) = delete;
  KPT_XML_READER& operator=(const KPT_XML_READER&) = delete;

  /// The database name in the file; empty when there is none or the file cannot be parsed.
  KPT_STRING get_db_name(std::string_view file_name);
  /// Loads the file into `db`, which is new and empty. Parses the file anew. What
  /// was loaded before a failure stays in `db`.
  bool load_kpt_xml(std::string_view file_name, KPT_KEYPOINTS_DB_IMPL* db);

  /// The first problem of all that was read so far.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }

 private:
  KPT_XML_PLATFORM m_platform;
  KPT_LOAD_PROBLEM m_problem;
};

#endif
