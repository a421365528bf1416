#include "common/console.h"

#include <cstdio>
#include <string>

namespace stream {

void ConsoleLine(std::string_view line) {
  std::string whole(line);
  whole += '\n';
  ConsoleText(whole);
}

void ConsoleText(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace stream
