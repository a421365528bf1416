// Ctrl-C and a termination request, noted instead of obeyed: the run ends in order.
#ifndef HOST_CONSOLE_INTERRUPT_H_
#define HOST_CONSOLE_INTERRUPT_H_

namespace host {

void NoteInterrupts();

// Whether one came since NoteInterrupts.
bool Interrupted();

}  // namespace host

#endif  // HOST_CONSOLE_INTERRUPT_H_
