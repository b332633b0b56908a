// Reads any database file with xerces-c's SAX2, element by element: files that are not
// plain, and files that are not well-formed, for their message. Builds no document.
//
// Ownership: owns the warnings about the file.
#ifndef KPT_GENERAL_SOURCE_H
#define KPT_GENERAL_SOURCE_H

#include "db/kpt/files/kpt_file_bytes.h"
#include "db/kpt/files/kpt_xml_guard.h"
#include "db/kpt/load/kpt_watched_builder.h"

class KPT_GENERAL_SOURCE {
 public:
  /// Gives the elements of the file to the builder. Null bytes mean a file that
  /// cannot be opened. False, with the messages of KPT_XML_PARSER, when the file
  /// is not well-formed. The builder then has the elements before the error.
  bool read(const KPT_STRING& file_name, KPT_BYTES* bytes, KPT_WATCHED_BUILDER builder);

  /// Why `read` returned false.
  const KPT_LOAD_PROBLEM& problem() const { return m_problem; }

  /// Issues the lines of all warnings a second time.
  void repeat_warnings() const { m_guard.repeat_warnings(); }

 private:
  KPT_XML_GUARD m_guard;
  KPT_LOAD_PROBLEM m_problem;
};

#endif
