// The rule that a test gives back all memory that it takes from the host.
//
// Ownership: plain calls.
#ifndef TESTS_SUPPORT_LIVE_BLOCKS_H
#define TESTS_SUPPORT_LIVE_BLOCKS_H

namespace kpt_test {

/// Blocks that are taken from the reference host and not given back.
unsigned long live_blocks();

/// Excuses the running test from the rule: for objects that live until the process ends.
void allow_live_blocks();

}  // namespace kpt_test

#endif
