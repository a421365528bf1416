// What the host asks the operating system about its terminal. Implemented in terminal_windows.cc
// and terminal_posix.cc.
#ifndef HOST_CONSOLE_TERMINAL_H_
#define HOST_CONSOLE_TERMINAL_H_

namespace host {

bool StandardOutputIsTerminal();

}  // namespace host

#endif  // HOST_CONSOLE_TERMINAL_H_
