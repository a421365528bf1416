#include "platform/at_exit.h"

namespace stream::platform {

bool CallAtExit(void (* /*function*/)()) { return false; }

}  // namespace stream::platform
