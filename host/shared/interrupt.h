// Ctrl-C and a termination request, noted instead of obeyed: the run ends in order.
#ifndef HOST_SHARED_INTERRUPT_H_
#define HOST_SHARED_INTERRUPT_H_

namespace host {

void NoteInterrupts();

// Whether one came since NoteInterrupts.
bool Interrupted();

}  // namespace host

#endif  // HOST_SHARED_INTERRUPT_H_
