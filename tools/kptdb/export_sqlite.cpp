// export: tables of SQLite. Every key begins with the design, so that many designs
// share a file, and each can be found, replaced or moved to another server separately.
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "export_facts.h"
#include "files.h"
#include "progress.h"
#include "sqlite_file.h"
#include "text.h"

namespace kptdb {

namespace {

// The version of the schema, which is the file's user_version.
constexpr int SCHEMA_VERSION = 2;

// The registers of a side are numbered in the order of their maps, so that those of a map follow each
// other: a map has the first of each side and their number, and needs no row for each member.
constexpr const char* SCHEMA = R"(
CREATE TABLE designs(design TEXT NOT NULL PRIMARY KEY, file TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE registers(
  design TEXT NOT NULL, side INTEGER NOT NULL, register INTEGER NOT NULL, name TEXT NOT NULL,
  entity TEXT, type TEXT, map INTEGER, column_ INTEGER, inverse INTEGER,
  PRIMARY KEY(design, side, register)) WITHOUT ROWID;
CREATE TABLE maps(
  design TEXT NOT NULL, map INTEGER NOT NULL, kind TEXT NOT NULL, constant INTEGER,
  r_first INTEGER NOT NULL, r_count INTEGER NOT NULL, t_first INTEGER NOT NULL, t_count INTEGER NOT NULL,
  PRIMARY KEY(design, map)) WITHOUT ROWID;
CREATE TABLE states(
  design TEXT NOT NULL, map INTEGER NOT NULL, state INTEGER NOT NULL,
  reference TEXT NOT NULL, transformed TEXT NOT NULL,
  PRIMARY KEY(design, map, state)) WITHOUT ROWID;
CREATE TABLE attributes(
  design TEXT NOT NULL, map INTEGER NOT NULL, name TEXT NOT NULL, value TEXT NOT NULL,
  PRIMARY KEY(design, map, name)) WITHOUT ROWID;
CREATE VIEW members AS
SELECT m.design AS design, m.map AS map, r.side AS side, r.register - m.r_first AS place,
  r.register AS register, r.column_ AS column_, r.inverse AS inverse
FROM maps m JOIN registers r ON r.design = m.design AND r.side = 0
  AND r.register >= m.r_first AND r.register < m.r_first + m.r_count
UNION ALL
SELECT m.design, m.map, t.side, t.register - m.t_first, t.register, t.column_, t.inverse
FROM maps m JOIN registers t ON t.design = m.design AND t.side = 1
  AND t.register >= m.t_first AND t.register < m.t_first + m.t_count;
CREATE VIEW answers AS
SELECT r.design AS design, r.name AS name, r.entity AS entity, r.type AS type,
  CASE m.kind WHEN 'plain' THEN 'mapped' WHEN 'unused' THEN 'without_fanout'
    WHEN 'machine' THEN 'machine' WHEN 'constant' THEN 'constant' ELSE 'unknown' END AS status,
  m.constant <> r.inverse AS constant,
  t.name AS successor, t.entity AS successor_entity, t.type AS successor_type,
  CASE WHEN t.inverse = r.inverse THEN 'same' WHEN t.inverse <> r.inverse THEN 'inverse' END AS sense,
  CASE WHEN m.kind <> 'machine' THEN m.t_count ELSE 0 END AS copies,
  r.map AS map, r.column_ AS column_
FROM registers r
LEFT JOIN maps m ON m.design = r.design AND m.map = r.map
LEFT JOIN registers t ON t.design = r.design AND t.side = 1 AND t.register = m.t_first AND m.t_count > 0
  AND m.kind IN ('plain', 'constant')
WHERE r.side = 0;
)";

constexpr const char* INDEXES = R"(
CREATE INDEX IF NOT EXISTS registers_by_name ON registers(name, side);
)";

std::string_view word_of(FACT_KIND kind) {
  switch (kind) {
    case PLAIN_FACT:
      return "plain";
    case CONSTANT_FACT:
      return "constant";
    case MACHINE_FACT:
      return "machine";
    case UNUSED_FACT:
      return "unused";
    case NO_FACT:
      break;
  }
  return "none";
}

// The registers of a map on one side, among all registers of that side.
struct RANGE {
  std::int64_t first = 0;
  std::int64_t count = 0;
};

class SQLITE_TABLES {
 public:
  SQLITE_TABLES(SQL_FILE& file, const FACTS& facts, std::string design)
      : m_file(file), m_facts(facts), m_design(std::move(design)), m_ranges(facts.all().size()) {}

  void write(const std::string& source) {
    for (const char* table : {"designs", "registers", "maps", "states", "attributes"}) {
      m_file.run_with(fmt::format("DELETE FROM {} WHERE design = ?", table), m_design);
    }
    SQL_INSERT designs(m_file, "designs", 2, m_design);
    designs.text(source).end_row();
    designs.finish();
    write_registers(0, m_facts.subjects());
    write_registers(1, m_facts.successors());
    write_maps();
    write_states();
    write_attributes();
  }

 private:
  // Map by map, and then the registers without a map.
  void write_registers(int side, const std::vector<SUBJECT>& registers) {
    SQL_INSERT insert(m_file, "registers", 9, m_design);
    std::vector<bool> is_here(m_facts.all().empty() ? 0 : m_facts.all().back().end_member);
    for (const SUBJECT& subject : registers) {
      if (subject.member != SUBJECT::NONE) {
        is_here[subject.member] = true;
      }
    }
    std::int64_t number = 0;
    PROGRESS progress("exporting registers", registers.size(), PROGRESS::REGISTERS);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      RANGE& range = m_ranges[f].at(static_cast<std::size_t>(side));
      range.first = number;
      for (std::uint32_t k = m_facts.all()[f].first_member; k < m_facts.all()[f].end_member; ++k) {
        if (is_here[k]) {  // a map may also list registers that left its side
          const FACT_MEMBER& member = m_facts.member(k);
          start_row(insert, side, number++, member.reg);
          progress.at(static_cast<std::uint64_t>(number));
          insert.number(f).number(member.column).number(member.inverse ? 1 : 0).end_row();
        }
      }
      range.count = number - range.first;
    }
    for (const SUBJECT& subject : registers) {
      if (subject.member == SUBJECT::NONE) {
        start_row(insert, side, number++, subject.reg);
        insert.null().null().null().end_row();
      }
    }
    insert.finish();
  }

  static void start_row(SQL_INSERT& insert, int side, std::int64_t number, const KPT_REGISTER_KEYPOINT& reg) {
    insert.number(side).number(number).text(name_of(reg));
    if (reg.is_block_instance()) {
      insert.text(reg.get_entity_name()).text(reg.get_type());
    } else {
      insert.null().null();
    }
  }

  void write_maps() {
    SQL_INSERT insert(m_file, "maps", 8, m_design);
    PROGRESS progress("exporting maps", m_facts.all().size(), PROGRESS::MAPS);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      progress.at(f + 1);
      const FACT& fact = m_facts.all()[f];
      insert.number(f).text(word_of(fact.kind));
      if (fact.kind == CONSTANT_FACT) {
        insert.number(fact.constant ? 1 : 0);
      } else {
        insert.null();
      }
      for (const RANGE& range : m_ranges[f]) {
        insert.number(range.first).number(range.count);
      }
      insert.end_row();
    }
    insert.finish();
  }

  void write_states() {
    SQL_INSERT insert(m_file, "states", 5, m_design);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      if (m_facts.all()[f].kind == MACHINE_FACT) {
        std::int64_t state = 0;
        const std::vector<CODE_PAIR> codes = m_facts.codes_of(m_facts.all()[f]);
        for (const auto& [reference, transformed] : codes) {
          insert.number(f).number(state++).text(reference).text(transformed).end_row();
        }
        insert.finish();
      }
    }
  }

  void write_attributes() {
    SQL_INSERT insert(m_file, "attributes", 4, m_design);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      const KPT_ATTRIBUTE_LIST attributes = m_facts.all()[f].map.get_attributes();
      for (const auto& [name, value] : attributes) {
        insert.number(f).text(name).text(value).end_row();
      }
      insert.finish();
    }
  }

  SQL_FILE& m_file;
  const FACTS& m_facts;
  std::string m_design;
  std::vector<std::array<RANGE, 2>> m_ranges;  // by map and side
};

// A file of another kind or version is not changed.
void prepare_for_append(SQL_FILE& file, const std::string& path) {
  file.run("BEGIN IMMEDIATE");
  if (file.number("SELECT count(*) FROM sqlite_master") == 0) {
    file.run(SCHEMA);
    file.run(fmt::format("PRAGMA user_version = {}", SCHEMA_VERSION));
  } else if (file.number("PRAGMA user_version") != SCHEMA_VERSION ||
             file.number("SELECT count(*) FROM sqlite_master WHERE name = 'answers' AND type = 'view'") == 0) {
    throw FAILURE(EXIT_FOUND, path + ": not written: it is no file that this version of kptdb appends to");
  }
}

}  // namespace

void append_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path) {
  SQL_FILE file(path);
  prepare_for_append(file, path);
  SQLITE_TABLES(file, facts, design).write(source);
  file.run(INDEXES);
  file.run("COMMIT");
}

// The file is new, so it needs no journal: nothing can be lost.
void export_sqlite(const FACTS& facts, const std::string& design, const std::string& source, const std::string& path) {
  std::string temporary = path + ".XXXXXX";
  const int descriptor = ::mkstemp(temporary.data());
  if (descriptor < 0) {
    throw FAILURE(EXIT_FOUND, path + ": not written: " + std::strerror(errno));
  }
  ::close(descriptor);
  try {
    {
      SQL_FILE file(temporary);
      file.run(
          "PRAGMA page_size = 16384; PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
          "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -65536; BEGIN");
      file.run(SCHEMA);
      file.run(fmt::format("PRAGMA user_version = {}", SCHEMA_VERSION));
      SQLITE_TABLES(file, facts, design).write(source);
      file.run(INDEXES);
      file.run("COMMIT");
    }
    std::filesystem::permissions(temporary, std::filesystem::perms(0644));
    std::filesystem::rename(temporary, path);
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    throw;
  }
}

}  // namespace kptdb
