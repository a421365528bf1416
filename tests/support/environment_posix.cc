#include <cstdlib>

#include "tests/support/environment.h"

void SetUserCache(const std::string& directory) {
  unsetenv("HOME");                                // NOLINT(concurrency-mt-unsafe)
  setenv("XDG_CACHE_HOME", directory.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}
