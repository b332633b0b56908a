// The start and the length of random tests.
//
// Ownership: plain values.
#ifndef TESTS_SUPPORT_SEED_H
#define TESTS_SUPPORT_SEED_H

namespace kpt_test {

/// The seed of this run: the environment's KPT_SEED, or a fixed one. It is
/// printed when the test program starts, so that a failure can be repeated.
unsigned seed();

/// The number of steps of a random test: the environment's KPT_STEPS, or `default_steps`.
/// KPT_STEPS is a number, or "x" and a factor for the default: "100000", "x10".
int steps(int default_steps);

}  // namespace kpt_test

#endif
