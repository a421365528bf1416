// Prints in hexadecimal digits, one per line: the narrow temporary directory, the same as UTF-8,
// the wide temporary directory, and the path of a cache file that it creates.
#include <cstdio>
#include <string>
#include <type_traits>

#include "common/temp_files.h"

using namespace stream;

namespace {

template <typename Text>
void PrintHex(const Text& text) {
  using Unit = std::make_unsigned_t<typename Text::value_type>;
  for (const auto c : text) {
    std::printf("%0*x", static_cast<int>(2 * sizeof(c)), static_cast<unsigned>(Unit(c)));
  }
  std::printf("\n");
}

}  // namespace

int main() {
  PrintHex(GetTempDirA());
  PrintHex(AnsiToUtf8(GetTempDirA()));
  PrintHex(GetTempDirW());
  PrintHex(CreateCacheFile("mebo.ts"));
}
