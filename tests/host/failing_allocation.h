// Replaces the allocation of the process by one that fails where a test says.
//
// Ownership: none.
#ifndef TESTS_HOST_FAILING_ALLOCATION_H
#define TESTS_HOST_FAILING_ALLOCATION_H

namespace kpt_test {

extern long s_allocations_left;  // how many succeed from now on; all when negative
extern bool s_fails_for_good;    // none succeeds behind the one that failed
extern bool s_has_failed;

}  // namespace kpt_test

#endif
