// Database files as the stages of a flow, and what they say together.
//
// Ownership: STAGES owns its databases; the composition refers to none of them.
#ifndef KPTDB_STAGES_H
#define KPTDB_STAGES_H

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "database.h"
#include "model.h"

namespace kptdb {

class STAGES {
 public:
  /// Reads the files, first to last stage. FAILURE when one cannot be read.
  explicit STAGES(const std::vector<std::string>& files);

  const std::list<DATABASE>& databases() const { return m_databases; }
  /// What the stages say together, or nothing: the report then tells why.
  std::optional<DATABASE> try_composed(const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) const;
  /// The same; FAILURE with the reasons when they say nothing together.
  DATABASE composed(const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) const;

 private:
  std::list<DATABASE> m_databases;
};

/// What databases say together, or nothing: the report then tells why.
std::optional<DATABASE> compose(const KPT_KEYPOINTS_DB_LIST& stages, const std::string& name,
                                const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report);

/// Lines of a report on one line, and as a list.
std::string joined(const KPT_STRING_VECTOR& lines);
JSON listed(const KPT_STRING_VECTOR& lines);
/// A line each: how the stages fit, then the warnings.
std::string report_text(const KPT_COMPOSITION_REPORT& report);

}  // namespace kptdb

#endif
