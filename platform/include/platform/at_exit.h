// The end of the process.
#ifndef PLATFORM_AT_EXIT_H_
#define PLATFORM_AT_EXIT_H_

namespace stream::platform {

// Makes exit() call `function`, before the functions registered so far. Returns false if it was not
// registered, as always on Windows: Windows ends all other threads before a library's exit
// functions run, so there is nothing to wait for, and a lock held by one of them would never be
// released.
bool CallAtExit(void (*function)());

}  // namespace stream::platform

#endif  // PLATFORM_AT_EXIT_H_
