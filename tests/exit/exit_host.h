// A host that never stops the stream that it plays.
#ifndef TESTS_EXIT_EXIT_HOST_H_
#define TESTS_EXIT_EXIT_HOST_H_

// Plays `address` and returns at the moment `when`: a number of microseconds after the start, at
// the end of standard input if it is "stdin", otherwise once a status line begins with it. Status
// lines go to standard error. If `is_static`, the facade is a static object of the host, which
// exit() destroys; otherwise it is never destroyed.
extern "C" __attribute__((visibility("default"))) void PlayUntil(const char* address,
                                                                 bool is_static, const char* when);

#endif  // TESTS_EXIT_EXIT_HOST_H_
