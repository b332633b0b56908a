// Keeps xerces-c started.
//
// Ownership: holds one start of xerces-c, which counts them, while it lives and
// the start succeeded.
#ifndef KPT_XML_PLATFORM_H
#define KPT_XML_PLATFORM_H

#include "db/kpt/kpt_types.h"

class KPT_EXPORT KPT_XML_PLATFORM {
 public:
  KPT_XML_PLATFORM();
  ~KPT_XML_PLATFORM();
  KPT_XML_PLATFORM(const KPT_XML_PLATFORM&) = delete;
  KPT_XML_PLATFORM& operator=(const KPT_XML_PLATFORM&) = delete;

  /// Nothing may be parsed when the start failed.
  bool is_started() const { return m_started; }
  /// Whether it was for want of memory.
  bool ran_out_of_memory() const { return m_ran_out_of_memory; }

 private:
  bool m_started = false;
  bool m_ran_out_of_memory = false;
};

#endif
