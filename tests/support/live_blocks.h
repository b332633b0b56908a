// The rule that a test frees all memory of the host that it allocates.
//
// Ownership: plain calls.
#ifndef TESTS_SUPPORT_LIVE_BLOCKS_H
#define TESTS_SUPPORT_LIVE_BLOCKS_H

namespace kpt_test {

/// The number of blocks of the reference host that are not freed.
unsigned long live_blocks();

/// Exempts the running test from the rule: for objects that exist until the process ends.
void allow_live_blocks();

}  // namespace kpt_test

#endif
