// The component's process-wide state, for tests that share a process with others.
#ifndef TESTS_SUPPORT_COMPONENT_STATE_H_
#define TESTS_SUPPORT_COMPONENT_STATE_H_

// Puts the component back to the state in which a process finds it: no stream, no address, no frame
// queue, nothing learnt of programs, no restart file, and no directory of cache files. Only when no
// pipeline runs. Called before each test of a program that is made by stream_add_test.
void ResetComponent();

#endif  // TESTS_SUPPORT_COMPONENT_STATE_H_
