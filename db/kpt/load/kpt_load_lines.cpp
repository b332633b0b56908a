#include "db/kpt/load/kpt_load_lines.h"

#include "db/kpt/kpt_state_table_impl.h"
#include "db/kpt/msg_kpt.h"
#include "h/gen_sys.h"

namespace {

// The text of the failed check. Hosts file internal errors by text and line, so
// both are constants and do not follow the source.
constexpr char TRANSFORMATIONS_SET_CHECK[] =
    "strcmp(db_xml_subtree.get_node_name(), KPT_XML_STR_TRANSFORMATIONS_SET) == 0";
constexpr char CHECK_SOURCE[] = "db/kpt/kpt_keypoints_db_impl";
constexpr int CHECK_LINE = 1199;

KPT_STRING ticks_text(int ticks) {
  KPT_STRING text;
  gen_sprintf(&text, "%d", ticks);
  return text;
}

// A table without entries refuses every write, with the line of a write outside a table.
void issue_outside_table(KPT_SET_ENUM side) { KPT_STATE_TABLE_IMPL(0, 0, 0).set_entry(side, 1, 1, false); }

}  // namespace

void KPT_LOAD_LINES::add(LINE line, int ticks) {
  if (line == LOAD_STARTS) {
    m_start_time = gen_get_current_time();
  }
  if (!m_kept) {
    issue(line, ticks);
  } else if (!m_runs.empty() && m_runs.back().line == line && m_runs.back().ticks == ticks) {
    ++m_runs.back().count;
  } else {
    m_runs.push_back({line, ticks, 1});
  }
}

void KPT_LOAD_LINES::release() {
  for (const RUN& run : m_runs) {
    for (std::size_t k = 0; k < run.count; ++k) {
      issue(run.line, run.ticks);
    }
  }
  m_runs.clear();
}

void KPT_LOAD_LINES::issue(LINE line, int ticks) const {
  switch (line) {
    case LOAD_STARTS:
      kpt_msg_debug("TIME: Load Start Time: %s", m_start_time.c_str());
      break;
    case SET_IS_LOADED:
      kpt_msg_debug("TIME: Register Set Load: %s", ticks_text(ticks).c_str());
      break;
    case MAPS_ARE_LOADED:
      kpt_msg_debug("TIME: Transformation Set Load: %s", ticks_text(ticks).c_str());
      break;
    case LOAD_ENDS:
      kpt_msg_debug("TIME: Load End Time: %s", gen_get_current_time().c_str());
      break;
    case UNEXPECTED_CHILD:
      MSG_INTERNAL_ERROR::report(TRANSFORMATIONS_SET_CHECK, KPT_TAG, CHECK_SOURCE, CHECK_LINE);
      break;
    case NO_VALUES:
      kpt_msg_debug("Parse error while reading statetable column number");
      break;
    case OUTSIDE_REFERENCE_TABLE:
      issue_outside_table(KPT_REFERENCE_SET);
      break;
    case OUTSIDE_TRANSFORMED_TABLE:
      issue_outside_table(KPT_TRANSFORMED_SET);
      break;
  }
}
