// Reads keypoint database files.
//
// Ownership: the XML parser stays started while a reader exists. Several readers
// may exist at a time.
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
  /// Parses the file and loads it into `db`, which is new and empty. When the load
  /// fails, `db` keeps what was loaded before.
  bool load_kpt_xml(std::string_view file_name, KPT_KEYPOINTS_DB_IMPL* db);

  /// The first problem of all files that were read so far.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }

 private:
  KPT_XML_PLATFORM m_platform;
  KPT_LOAD_PROBLEM m_problem;
};

#endif
