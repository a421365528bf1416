#include <cstdlib>

#include "platform/at_exit.h"

namespace stream::platform {

bool CallAtExit(void (*function)()) { return std::atexit(function) == 0; }

}  // namespace stream::platform
