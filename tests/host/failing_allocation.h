// Replaces the allocation of the process by one that fails when a test says so.
//
// Ownership: none.
#ifndef TESTS_HOST_FAILING_ALLOCATION_H
#define TESTS_HOST_FAILING_ALLOCATION_H

namespace kpt_test {

extern long s_allocations_left;  // how many more succeed; all when negative
extern bool s_fails_for_good;    // no allocation succeeds after the first failure
extern bool s_has_failed;

}  // namespace kpt_test

#endif
