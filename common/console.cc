#include "common/console.h"

#include <cstdio>
#include <string>

void ConsoleLine(std::string_view line) {
  std::string whole(line);
  whole += '\n';
  std::fwrite(whole.data(), 1, whole.size(), stdout);
  std::fflush(stdout);
}
