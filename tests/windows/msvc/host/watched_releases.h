// Checks what the library releases to the heap of the process. Some systems do not notice that a
// block is released twice.
#ifndef TESTS_MSVC_WATCHED_RELEASES_H_
#define TESTS_MSVC_WATCHED_RELEASES_H_

// From now on this host fails if the library releases something that is not a block of the heap.
void WatchReleases();

#endif  // TESTS_MSVC_WATCHED_RELEASES_H_
