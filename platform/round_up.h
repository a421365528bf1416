// Private to the sources of pages.h.
#ifndef PLATFORM_ROUND_UP_H_
#define PLATFORM_ROUND_UP_H_

#include <cstddef>

namespace stream::platform {

// Returns the smallest multiple that is not below the value.
inline std::size_t RoundUp(std::size_t value, std::size_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

}  // namespace stream::platform

#endif  // PLATFORM_ROUND_UP_H_
