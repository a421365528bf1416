// A pause of the calling thread.
#ifndef PLATFORM_SLEEP_H_
#define PLATFORM_SLEEP_H_

namespace stream::platform {

// Sleeps for about this long, whatever the resolution of the system's timer.
void SleepMilliseconds(unsigned milliseconds);

}  // namespace stream::platform

#endif  // PLATFORM_SLEEP_H_
