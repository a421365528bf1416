#include "platform/local_time.h"

namespace stream::platform {

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

}  // namespace stream::platform
