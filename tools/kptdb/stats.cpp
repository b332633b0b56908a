// stats: counts what became of the registers of each instance, as a tree.
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "commands.h"
#include "coverage.h"
#include "fates.h"
#include "files.h"
#include "find.h"
#include "report/scopes.h"
#include "text.h"

namespace kptdb {

namespace {

// The instances of one side of a database. The counts of an instance contain all instances below it.
class TREE {
 public:
  TREE(const DATABASE& db, KPT_SET_ENUM side) : m_counts(1) {
    FATES fates;
    for_each_register(db, side, [&](const REGISTER& reg) {
      const std::uint32_t scope = m_scopes.scope_of(std::string_view(reg.keypoint.get_name()));
      m_counts.resize(m_scopes.all().size());
      ++m_counts[scope].at(fates.of(reg).word);
    });
    add_up();
  }

  /// Calls visit(path, name, depth, counts) from the top down, sorted by name; `depth` 0 is the whole design.
  template <class VISIT>
  void for_each(unsigned deepest, VISIT visit) const {
    struct OPEN {
      std::uint32_t scope;
      unsigned depth;
      std::string path;
    };
    std::vector<OPEN> open{{0, 0, ""}};
    while (!open.empty()) {
      const OPEN at = std::move(open.back());
      open.pop_back();
      visit(at.path, without_separator(m_scopes.all()[at.scope].name), at.depth, m_counts[at.scope]);
      if (deepest != 0 && at.depth == deepest) {
        continue;
      }
      const std::vector<std::uint32_t>& below = m_below[at.scope];
      std::for_each(below.rbegin(), below.rend(), [&](std::uint32_t scope) {
        open.push_back({scope, at.depth + 1, at.path + std::string(m_scopes.all()[scope].name)});
      });
    }
  }

 private:
  static std::string_view without_separator(std::string_view name) {
    return name.substr(0, name.size() - (name.empty() ? 0 : 1));
  }

  // The content of a scope comes after the scope.
  void add_up() {
    const auto& all = m_scopes.all();
    m_below.resize(all.size());
    for (auto k = static_cast<std::uint32_t>(all.size()) - 1; k > 0; --k) {
      for (const KPT_FATE_ENUM fate : ALL_FATES) {
        m_counts[all[k].parent].at(fate) += m_counts[k].at(fate);
      }
      m_below[all[k].parent].push_back(k);
    }
    for (std::vector<std::uint32_t>& below : m_below) {
      std::sort(below.begin(), below.end(),
                [&](std::uint32_t a, std::uint32_t b) { return all[a].name < all[b].name; });
    }
  }

  SCOPES m_scopes;
  std::vector<FATE_COUNTS> m_counts;                // by scope
  std::vector<std::vector<std::uint32_t>> m_below;  // by scope
};

std::string path_of(std::string_view path) { return std::string(path.substr(0, path.size() - (path.empty() ? 0 : 1))); }

std::string text_of(const TREE& tree, const STATS_OPTIONS& options) {
  TEXT_TABLE table({"instance", "registers", "mapped", "machine", "constant", "without fanout", "unknown", "answered"});
  tree.for_each(options.depth, [&](const std::string&, std::string_view name, unsigned depth,
                                   const FATE_COUNTS& counts) {
    std::vector<std::string> row{std::string(2 * std::size_t{depth}, ' ') + (depth == 0 ? "(all)" : printable(name)),
                                 std::to_string(counts.sum())};
    for (const KPT_FATE_ENUM fate : ALL_FATES) {
      row.push_back(std::to_string(counts.at(fate)));
    }
    row.push_back(percent(counts.sum() - counts.at(KPT_FATE_UNKNOWN), counts.sum()));
    table.add(std::move(row));
  });
  return table.text();
}

JSON json_of(const TREE& tree, const STATS_OPTIONS& options, const DATABASE& db) {
  JSON result = new_result();
  result["name"] = db.name();
  result["side"] = options.side;
  result["instances"] = JSON::array();
  tree.for_each(options.depth,
                [&](const std::string& path, std::string_view, unsigned depth, const FATE_COUNTS& counts) {
                  JSON entry;
                  entry["path"] = path_of(path);
                  entry["depth"] = depth;
                  entry["registers"] = counts.sum();
                  for (const KPT_FATE_ENUM fate : ALL_FATES) {
                    entry[std::string(fate_word(fate))] = counts.at(fate);
                  }
                  result["instances"].push_back(std::move(entry));
                });
  return result;
}

}  // namespace

EXIT_CODE run_stats(const STATS_OPTIONS& options) {
  const DATABASE db = DATABASE::load(options.file);
  const TREE tree(db, sides_named(options.side).front());
  RESULT_FILE out("");
  out.write(options.json ? json_text(json_of(tree, options, db)) + "\n" : text_of(tree, options));
  out.finish();
  return EXIT_DONE;
}

}  // namespace kptdb
