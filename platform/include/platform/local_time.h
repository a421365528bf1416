// The time of day.
#ifndef PLATFORM_LOCAL_TIME_H_
#define PLATFORM_LOCAL_TIME_H_

#include <ctime>

namespace stream::platform {

// Converts `time` to the system's time zone.
std::tm LocalTime(std::time_t time);

}  // namespace stream::platform

#endif  // PLATFORM_LOCAL_TIME_H_
