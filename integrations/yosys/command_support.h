// The parts that the commands share: options, the database that they name, and errors.
//
// Ownership: the manager owns the databases.
#ifndef COMMAND_SUPPORT_H
#define COMMAND_SUPPORT_H

#include <exception>
#include <string>
#include <vector>

#include "db/kpt/kpt.h"
#include "kernel/yosys.h"

namespace kpt_yosys {

using Arguments = std::vector<std::string>;
namespace RTLIL = Yosys::RTLIL;

/// Keeps our exceptions from Yosys, which catches only its own.
template <class ACTION>
void guarded(ACTION action) {
  std::string failure;
  try {
    action();
    return;
  } catch (const std::exception& error) {
    failure = error.what();
  }
  Yosys::log_cmd_error("%s\n", failure.c_str());
}

/// Ends the command when there is no such database.
inline KPT_KEYPOINTS_DB* find_database(const std::string& name) {
  KPT_KEYPOINTS_DB* const db = KPT_KEYPOINTS_MANAGER::get_instance()->get_keypoints_db(name);
  if (db == nullptr) {
    Yosys::log_cmd_error("There is no keypoint database called %s.\n", name.c_str());
  }
  return db;
}

/// Ends the command when there is such a database.
inline void demand_free(const std::string& name) {
  if (KPT_KEYPOINTS_MANAGER::get_instance()->get_keypoints_db(name) != nullptr) {
    Yosys::log_cmd_error("A keypoint database called %s exists already.\n", name.c_str());
  }
}

/// The value of an option that is followed by one.
inline bool takes(const Arguments& args, std::size_t& at, const char* option, std::string& value) {
  if (args[at] != option || at + 1 >= args.size()) {
    return false;
  }
  value = args[++at];
  return true;
}

}  // namespace kpt_yosys

#endif
