// The data of a report, gathered from the databases and written as blocks.
//
// Ownership: refers to the databases, which outlive it.
#ifndef KPTDB_REPORT_REPORT_DATA_H
#define KPTDB_REPORT_REPORT_DATA_H

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "../diff.h"
#include "blocks.h"
#include "findings.h"
#include "maps.h"
#include "netlist.h"
#include "scopes.h"
#include "stage.h"
#include "words.h"

namespace kptdb {

/// A database of a report and its file. Times are texts like 2026-11-21T16:09:00Z.
struct REPORT_STAGE {
  KPT_KEYPOINTS_DB db;
  std::string file;
  std::string modified;
};

/// What an older database says differently.
struct REPORT_CHANGES {
  std::string file;
  std::vector<CHANGE> changes;
};

class REPORT_DATA {
 public:
  /// `whole` is the composition of the stages; a null handle for a single stage.
  REPORT_DATA(std::vector<REPORT_STAGE> stages, const KPT_KEYPOINTS_DB& whole);

  void set_title(const std::string& title) { m_title = title; }
  /// The messages of the composition.
  void set_told(std::vector<std::string> told) { m_told = std::move(told); }
  void add_contradiction(const std::string& text) { m_findings.add({text, FINDINGS::NO_REGISTER}); }
  void set_changes(REPORT_CHANGES changes) { m_changes = std::move(changes); }
  /// The number of reference registers of each word.
  const std::array<std::size_t, REGISTER_WORDS.size()>& words() const { return m_word_counts; }
  void write(RESULT_FILE& out, const std::string& written, const std::string& tool) const;

 private:
  void read_registers(const STAGE& stage, std::size_t number);
  void read_stage(const STAGE& stage, std::size_t number);
  void read_whole(const STAGE& stage);
  void take_fates(const STAGE_MAP& map);
  void count_words();

  void write_netlist(BLOCKS& blocks, std::size_t number) const;
  void write_whole(BLOCKS& blocks) const;
  std::string head(const std::string& written, const std::string& tool) const;

  std::string m_title;
  std::vector<std::string> m_told;
  std::vector<REPORT_STAGE> m_stages;
  std::deque<NETLIST> m_netlists;  // one more than stages
  std::deque<MAP_COLUMN> m_maps;   // one for each stage, and one for all together
  bool m_has_whole;
  std::array<std::vector<std::uint32_t>, 2> m_whole_of;  // the numbers of the first and the last netlist
  std::vector<REGISTER_FATE> m_fates;
  std::array<std::size_t, REGISTER_WORDS.size()> m_word_counts{};
  mutable KINDS m_kinds;
  ATTRIBUTE_SETS m_attributes;
  SCOPES m_scopes;
  std::vector<std::uint32_t> m_scope_of;
  FINDINGS m_findings;
  std::optional<REPORT_CHANGES> m_changes;
};

}  // namespace kptdb

#endif
