// Database files as the stages of a flow, and what they say together.
//
// Ownership: STAGES owns its databases; the composition refers to none of them.
#ifndef KPTDB_STAGES_H
#define KPTDB_STAGES_H

#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "database.h"
#include "model.h"

namespace kptdb {

class STAGES {
 public:
  /// Reads the files, from the first stage to the last. FAILURE when one cannot be read.
  explicit STAGES(const std::vector<std::string>& files);

  const std::list<DATABASE>& databases() const { return m_databases; }
  /// The caller owns the databases afterwards.
  std::list<DATABASE> release() { return std::move(m_databases); }
  /// What the stages say together; empty when they do not fit, and the report then says why.
  std::optional<DATABASE> try_composed(const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) const;
  /// The same; FAILURE with the reasons when they do not fit.
  DATABASE composed(const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report) const;

 private:
  std::list<DATABASE> m_databases;
};

/// What the databases say together; empty when they do not fit, and the report then says why.
std::optional<DATABASE> compose(const KPT_KEYPOINTS_DB_LIST& stages, const std::string& name,
                                const KPT_COMPOSITION_OPTIONS& options, KPT_COMPOSITION_REPORT* report);

/// The lines of a report, joined to one line.
std::string joined(const KPT_STRING_VECTOR& lines);
JSON listed(const KPT_STRING_VECTOR& lines);
/// One line for each: how the stages fit, and then the warnings.
std::string report_text(const KPT_COMPOSITION_REPORT& report);

}  // namespace kptdb

#endif
