// The time of day.
#ifndef PLATFORM_LOCAL_TIME_H_
#define PLATFORM_LOCAL_TIME_H_

#include <ctime>

namespace platform {

// Converts `time` to the system's time zone.
std::tm LocalTime(std::time_t time);

}  // namespace platform

#endif  // PLATFORM_LOCAL_TIME_H_
