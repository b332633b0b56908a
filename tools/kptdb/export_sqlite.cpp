// export: tables of SQLite. Every key begins with the design, so that many designs
// share a file, and each can be found, replaced or moved to another server separately.
#include <fmt/format.h>
#include <unistd.h>

#include <boost/unordered/unordered_flat_map.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "export_facts.h"
#include "files.h"
#include "sqlite_file.h"
#include "text.h"

namespace kptdb {

namespace {

// The version of the schema, which is the file's user_version.
constexpr int SCHEMA_VERSION = 1;

constexpr const char* SCHEMA = R"(
CREATE TABLE designs(design TEXT NOT NULL PRIMARY KEY, file TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE registers(
  design TEXT NOT NULL, side INTEGER NOT NULL, register INTEGER NOT NULL, name TEXT NOT NULL,
  entity TEXT, type TEXT, map INTEGER, column_ INTEGER, inverse INTEGER,
  PRIMARY KEY(design, side, register)) WITHOUT ROWID;
CREATE TABLE maps(
  design TEXT NOT NULL, map INTEGER NOT NULL, kind TEXT NOT NULL, constant INTEGER,
  PRIMARY KEY(design, map)) WITHOUT ROWID;
CREATE TABLE members(
  design TEXT NOT NULL, map INTEGER NOT NULL, side INTEGER NOT NULL, place INTEGER NOT NULL,
  register INTEGER NOT NULL, column_ INTEGER NOT NULL, inverse INTEGER NOT NULL,
  PRIMARY KEY(design, map, side, place)) WITHOUT ROWID;
CREATE TABLE states(
  design TEXT NOT NULL, map INTEGER NOT NULL, state INTEGER NOT NULL,
  reference TEXT NOT NULL, transformed TEXT NOT NULL,
  PRIMARY KEY(design, map, state)) WITHOUT ROWID;
CREATE TABLE attributes(
  design TEXT NOT NULL, map INTEGER NOT NULL, name TEXT NOT NULL, value TEXT NOT NULL,
  PRIMARY KEY(design, map, name)) WITHOUT ROWID;
CREATE VIEW answers AS
SELECT r.design AS design, r.name AS name, r.entity AS entity, r.type AS type,
  CASE m.kind WHEN 'plain' THEN 'mapped' WHEN 'unused' THEN 'without_fanout'
    WHEN 'machine' THEN 'machine' WHEN 'constant' THEN 'constant' ELSE 'unknown' END AS status,
  m.constant <> r.inverse AS constant,
  t.name AS successor, t.entity AS successor_entity, t.type AS successor_type,
  CASE WHEN c.inverse = r.inverse THEN 'same' WHEN c.inverse <> r.inverse THEN 'inverse' END AS sense,
  (SELECT count(*) FROM members n WHERE n.design = r.design AND n.map = r.map AND n.side = 1
     AND m.kind <> 'machine') AS copies,
  r.map AS map, r.column_ AS column_
FROM registers r
LEFT JOIN maps m ON m.design = r.design AND m.map = r.map
LEFT JOIN members c ON c.design = r.design AND c.map = r.map AND c.side = 1 AND c.place = 0
  AND m.kind IN ('plain', 'constant')
LEFT JOIN registers t ON t.design = c.design AND t.side = 1 AND t.register = c.register
WHERE r.side = 0;
)";

constexpr const char* INDEXES = R"(
CREATE INDEX IF NOT EXISTS registers_by_name ON registers(design, side, name);
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

class SQLITE_TABLES {
 public:
  SQLITE_TABLES(SQL_FILE& file, const FACTS& facts, std::string design)
      : m_file(file), m_facts(facts), m_design(std::move(design)) {}

  void write(const std::string& source) {
    for (const char* table : {"designs", "registers", "maps", "members", "states", "attributes"}) {
      SQL_INSERT(m_file, fmt::format("DELETE FROM {} WHERE design = ?", table), m_design).end_row();
    }
    SQL_INSERT(m_file, "INSERT INTO designs VALUES(?, ?)", m_design).text(source).end_row();
    write_registers(0, m_facts.subjects());
    write_registers(1, m_facts.successors());
    write_maps();
    write_members();
    write_states();
    write_attributes();
  }

 private:
  void write_registers(int side, const std::vector<SUBJECT>& registers) {
    SQL_INSERT insert(m_file, "INSERT INTO registers VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)", m_design);
    std::int64_t number = 0;
    for (const SUBJECT& subject : registers) {
      m_number.try_emplace(&subject.reg.get_name(), number);
      insert.number(side).number(number++).text(name_of(subject.reg));
      if (subject.reg.is_block_instance()) {
        insert.text(subject.reg.get_entity_name()).text(subject.reg.get_type());
      } else {
        insert.null().null();
      }
      if (subject.member == SUBJECT::NONE) {
        insert.null().null().null();
      } else {
        const FACT_MEMBER& member = m_facts.member(subject.member);
        insert.number(subject.fact).number(member.column).number(member.inverse ? 1 : 0);
      }
      insert.end_row();
    }
  }

  void write_maps() {
    SQL_INSERT insert(m_file, "INSERT INTO maps VALUES(?, ?, ?, ?)", m_design);
    std::int64_t number = 0;
    for (const FACT& fact : m_facts.all()) {
      insert.number(number++).text(word_of(fact.kind));
      if (fact.kind == CONSTANT_FACT) {
        insert.number(fact.constant ? 1 : 0);
      } else {
        insert.null();
      }
      insert.end_row();
    }
  }

  void write_members() {
    SQL_INSERT insert(m_file, "INSERT INTO members VALUES(?, ?, ?, ?, ?, ?, ?)", m_design);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      std::int64_t place = 0;
      bool was_transformed = false;
      for (std::uint32_t k = m_facts.all()[f].first_member; k < m_facts.all()[f].end_member; ++k) {
        const FACT_MEMBER& member = m_facts.member(k);
        place = member.transformed == was_transformed ? place : 0;
        was_transformed = member.transformed;
        const auto number = m_number.find(&member.reg.get_name());
        if (number != m_number.end()) {  // a map may list a register that left its side
          insert.number(f).number(member.transformed ? 1 : 0).number(place++).number(number->second);
          insert.number(member.column).number(member.inverse ? 1 : 0).end_row();
        }
      }
    }
  }

  void write_states() {
    SQL_INSERT insert(m_file, "INSERT INTO states VALUES(?, ?, ?, ?, ?)", m_design);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      if (m_facts.all()[f].kind == MACHINE_FACT) {
        std::int64_t state = 0;
        for (const auto& [reference, transformed] : m_facts.codes_of(m_facts.all()[f])) {
          insert.number(f).number(state++).text(reference).text(transformed).end_row();
        }
      }
    }
  }

  void write_attributes() {
    SQL_INSERT insert(m_file, "INSERT INTO attributes VALUES(?, ?, ?, ?)", m_design);
    for (std::uint32_t f = 0; f < m_facts.all().size(); ++f) {
      for (const auto& [name, value] : m_facts.all()[f].map.get_attributes()) {
        insert.number(f).text(name).text(value).end_row();
      }
    }
  }

  SQL_FILE& m_file;
  const FACTS& m_facts;
  std::string m_design;
  boost::unordered_flat_map<const void*, std::int64_t> m_number;  // by the address of the register's name
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
      file.run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA cache_size = -65536; BEGIN");
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
