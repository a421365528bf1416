#include <cerrno>
#include <ctime>

#include "platform/sleep.h"

namespace stream::platform {

void SleepMilliseconds(unsigned milliseconds) {
  timespec left{};
  left.tv_sec = static_cast<time_t>(milliseconds / 1000);
  left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

}  // namespace stream::platform
