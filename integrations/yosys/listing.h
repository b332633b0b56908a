// What a database says of each reference register, as text.
//
// Ownership: the handle is used only during the call.
#ifndef LISTING_H
#define LISTING_H

#include <string>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_yosys {

/// One line for each reference register, sorted by name.
std::vector<std::string> listing(const KPT_KEYPOINTS_DB& db);

/// The first register whose name, entity or type no file can hold; empty when there is none.
std::string name_unfit_for_a_file(const KPT_KEYPOINTS_DB& db);

}  // namespace kpt_yosys

#endif
