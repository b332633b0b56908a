// export --format events.
#include <fmt/format.h>

#include "event_lines.h"
#include "export.h"

namespace kptdb {

void export_events(const DATABASE& db, RESULT_FILE& out) {
  PROGRESS progress("exporting", db.maps().size(), PROGRESS::MAPS);
  std::uint64_t lines = 0;
  const std::size_t lost = write_event_lines(db.handle(), [&](std::string_view line) {
    progress.at(++lines);
    out.write(line);
  });
  if (lost != 0) {
    fmt::print(stderr, "kptdb: warning: {} left out where maps name ids of no register\n",
               lost == 1 ? "1 place is" : fmt::format("{} places are", lost));
  }
}

}  // namespace kptdb
