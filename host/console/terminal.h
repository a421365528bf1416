// What the host asks the operating system about its terminal. terminal_windows.cc or
// terminal_posix.cc answers.
#ifndef HOST_CONSOLE_TERMINAL_H_
#define HOST_CONSOLE_TERMINAL_H_

namespace host {

bool StandardOutputIsTerminal();

}  // namespace host

#endif  // HOST_CONSOLE_TERMINAL_H_
