// Keeps xerces-c started.
//
// Ownership: xerces-c counts its starts. An object holds one start while it
// exists, if the start succeeded.
#ifndef KPT_XML_PLATFORM_H
#define KPT_XML_PLATFORM_H

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_XML_PLATFORM {
 public:
  KPT_XML_PLATFORM();
  ~KPT_XML_PLATFORM();
  KPT_XML_PLATFORM(const KPT_XML_PLATFORM&) = delete;
  KPT_XML_PLATFORM& operator=(const KPT_XML_PLATFORM&) = delete;

  /// When the start failed, nothing may be parsed.
  bool is_started() const { return m_started; }
  /// Whether the start failed because memory ran out.
  bool ran_out_of_memory() const { return m_ran_out_of_memory; }

 private:
  bool m_started = false;
  bool m_ran_out_of_memory = false;
};

#endif
