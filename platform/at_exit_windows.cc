#include "platform/at_exit.h"

namespace platform {

bool CallAtExit(void (* /*function*/)()) { return false; }

}  // namespace platform
