// Resets the component's process-wide state, for tests that share a process.
#ifndef TESTS_SUPPORT_COMPONENT_STATE_H_
#define TESTS_SUPPORT_COMPONENT_STATE_H_

namespace stream {

// Resets the component to its initial state: no stream, no address, no frame queues, no known
// programs, no restart file and no directory of cache files. Call it only while no pipeline runs.
// The test programs made by stream_add_test call it before each test.
void ResetComponent();

}  // namespace stream

#endif  // TESTS_SUPPORT_COMPONENT_STATE_H_
