// Loads a database file into a new database.
//
// Ownership: the database is the caller's.
#ifndef KPT_LOAD_H
#define KPT_LOAD_H

#include <functional>
#include <memory>
#include <string_view>

#include "db/kpt/kpt_keypoints_db_impl.h"
#include "db/kpt/kpt_load_problem.h"

/// Makes the database, once its name is known; null when it is not wanted.
using KPT_CREATE_DB = std::function<KPT_KEYPOINTS_DB_IMPL*(std::string_view name)>;

/// The database that the file holds. Null when the file cannot be read, when it
/// has no name, when `create` answers null, and when something follows the
/// transformations; `problem`, unless null, then says which, and keeps what it
/// says already.
std::unique_ptr<KPT_KEYPOINTS_DB_IMPL> kpt_load(std::string_view file_name, const KPT_CREATE_DB& create,
                                                KPT_LOAD_PROBLEM* problem);

#endif
