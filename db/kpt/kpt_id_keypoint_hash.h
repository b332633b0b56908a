// Finds a keypoint of one side of one database by its id.
//
// Ownership: owns its entries, not the keypoints.
#ifndef KPT_ID_KEYPOINT_HASH_H
#define KPT_ID_KEYPOINT_HASH_H

#include <boost/unordered/unordered_flat_map.hpp>

#include "db/kpt/kpt_types.h"

using KPT_ID_KEYPOINT_HASH = boost::unordered_flat_map<long, KPT_KEYPOINT*, boost::hash<long>, std::equal_to<long>,
                                                       MEM_STL_ALLOCATOR<std::pair<const long, KPT_KEYPOINT*>>>;

#endif
