// The page of a report, around its data. The build of kptdb makes it from the
// modules, the style and the template beside this file.
//
// Ownership: the texts are part of the program.
#ifndef KPTDB_REPORT_REPORT_PAGE_H
#define KPTDB_REPORT_REPORT_PAGE_H

#include <string_view>

namespace kptdb {

extern const std::string_view REPORT_PAGE_BEFORE_DATA;
extern const std::string_view REPORT_PAGE_AFTER_DATA;

}  // namespace kptdb

#endif
