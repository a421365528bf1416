#include <io.h>

#include <cstdio>

#include "terminal.h"

namespace host {

bool StandardOutputIsTerminal() { return _isatty(_fileno(stdout)) != 0; }

}  // namespace host
