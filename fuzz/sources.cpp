// Any bytes as a database file: the scanner of plain files, the general source
// and the document tree must give the same result, to the last line.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>

#include "fuzz/database.h"
#include "tests/support/load_outcome.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace kpt_test;
  const kpt_fuzz::MEMORY_FILE file({reinterpret_cast<const char*>(bytes), size});
  const LOAD_OUTCOME document = load_outcome(file.path(), LOAD_WAY::DOCUMENT);
  for (const LOAD_WAY way : {LOAD_WAY::SCANNER_FIRST, LOAD_WAY::GENERAL_SOURCE}) {
    const LOAD_OUTCOME outcome = load_outcome(file.path(), way);
    if (!(outcome == document)) {
      std::cerr << "by the document:\n" << document << "\notherwise:\n" << outcome << "\n";
      std::abort();
    }
  }
  return 0;
}
