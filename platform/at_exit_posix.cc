#include <cstdlib>

#include "platform/at_exit.h"

namespace platform {

bool CallAtExit(void (*function)()) { return std::atexit(function) == 0; }

}  // namespace platform
