#include <cstdlib>

#include "tests/support/environment.h"

// An empty value removes the variable.
void SetUserCache(const std::string& directory) { _putenv_s("LOCALAPPDATA", directory.c_str()); }
