// Where random tests start and how long they go on.
//
// Ownership: plain values.
#ifndef TESTS_SUPPORT_SEED_H
#define TESTS_SUPPORT_SEED_H

namespace kpt_test {

/// The seed of this run: the environment's KPT_SEED, else a fixed one. Printed when the test
/// program starts, so that a failure can be run again.
unsigned seed();

/// How many steps a random test takes: the environment's KPT_STEPS, else `default_steps`.
/// KPT_STEPS is a number, or a number after "x" that multiplies the default: "100000", "x10".
int steps(int default_steps);

}  // namespace kpt_test

#endif
