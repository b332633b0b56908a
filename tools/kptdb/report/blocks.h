// The data of a report: blocks of bytes, compressed and in base64, so that no text
// of a database is part of the page's markup. docs/report.md lists the blocks.
//
// Ownership: a COLUMN owns its bytes; BLOCKS refer to the file, which outlives them.
#ifndef KPTDB_REPORT_BLOCKS_H
#define KPTDB_REPORT_BLOCKS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "../files.h"

namespace kptdb {

/// Numbers with seven bits in each byte, the lowest bits first; all bytes but the last have their highest bit set.
class COLUMN {
 public:
  void add(std::uint32_t number) {
    while (number >= 0x80U) {
      m_bytes += static_cast<char>(number | 0x80U);
      number >>= 7U;
    }
    m_bytes += static_cast<char>(number);
  }
  /// A number that may be negative: n is written as 2n, or as -2n - 1 below zero.
  void add_signed(std::int64_t number) { add(static_cast<std::uint32_t>(number < 0 ? -2 * number - 1 : 2 * number)); }
  void append(const COLUMN& other) { m_bytes += other.m_bytes; }

  const std::string& bytes() const { return m_bytes; }

 private:
  std::string m_bytes;
};

/// Numbers that are close to each other. Each is written as its distance from the one before.
class STEPS {
 public:
  void add(std::uint32_t number) {
    m_column.add_signed(static_cast<std::int64_t>(number) - m_last);
    m_last = number;
  }
  const COLUMN& column() const { return m_column; }

 private:
  COLUMN m_column;
  std::int64_t m_last = 0;
};

/// Writes blocks into the page, one after another.
class BLOCKS {
 public:
  explicit BLOCKS(RESULT_FILE& out) : m_out(out) {}
  /// The name is one of the report's own names, never a text of a database.
  void write(std::string_view name, std::string_view bytes);

 private:
  void write_encoded(std::string_view bytes, bool last);

  RESULT_FILE& m_out;
  std::string m_rest;  // up to two bytes, until there is a third
};

}  // namespace kptdb

#endif
