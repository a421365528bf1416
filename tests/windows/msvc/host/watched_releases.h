// Watches what the library releases to the heap of the process. Some systems do not notice a block
// that is released a second time.
#ifndef TESTS_MSVC_WATCHED_RELEASES_H_
#define TESTS_MSVC_WATCHED_RELEASES_H_

// From now on this host fails when the library releases what is no block of the heap.
void WatchReleases();

#endif  // TESTS_MSVC_WATCHED_RELEASES_H_
