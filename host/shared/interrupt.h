// Records Ctrl-C and termination requests in a flag, so that the run can end in order.
#ifndef HOST_SHARED_INTERRUPT_H_
#define HOST_SHARED_INTERRUPT_H_

namespace host {

void InstallInterruptHandlers();

// Whether one was received since InstallInterruptHandlers.
bool Interrupted();

}  // namespace host

#endif  // HOST_SHARED_INTERRUPT_H_
