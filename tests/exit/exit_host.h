// A host that never stops what it plays.
#ifndef TESTS_EXIT_EXIT_HOST_H_
#define TESTS_EXIT_EXIT_HOST_H_

// Starts to play `address`. Status lines go to standard error. The facade is a static object of the
// host, which exit() destroys, where `is_static`; else it is never destroyed. Returns at the moment
// `when`: a number of microseconds later, "stdin" when standard input ends, or once a status line
// begins with it.
extern "C" __attribute__((visibility("default"))) void PlayUntil(const char* address,
                                                                 bool is_static, const char* when);

#endif  // TESTS_EXIT_EXIT_HOST_H_
