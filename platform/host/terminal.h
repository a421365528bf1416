// What the host asks the operating system about its terminal. Implemented in terminal_windows.cc
// and terminal_posix.cc.
#ifndef PLATFORM_HOST_TERMINAL_H_
#define PLATFORM_HOST_TERMINAL_H_

namespace host {

bool StandardOutputIsTerminal();

}  // namespace host

#endif  // PLATFORM_HOST_TERMINAL_H_
