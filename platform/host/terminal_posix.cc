#include <unistd.h>

#include "terminal.h"

namespace host {

bool StandardOutputIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

}  // namespace host
