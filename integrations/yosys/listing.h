// What a database says of each reference register, as text.
//
// Ownership: the handle is used during the call only.
#ifndef LISTING_H
#define LISTING_H

#include <string>
#include <vector>

#include "db/kpt/kpt.h"

namespace kpt_yosys {

/// One line for each reference register, in order of names.
std::vector<std::string> listing(const KPT_KEYPOINTS_DB& db);

/// The first register of which no file can hold the name, the entity or the type; empty when there is none.
std::string name_unfit_for_a_file(const KPT_KEYPOINTS_DB& db);

}  // namespace kpt_yosys

#endif
