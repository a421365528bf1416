#include "common/caught.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <new>

#include "common/console.h"

namespace stream {
namespace {

// Describes the exception being handled. The text is valid as long as that exception.
const char* CaughtText() noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "out of memory";
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (...) {
    return "unknown";
  }
}

}  // namespace

void LogCaught(const char* before, const char* after) noexcept {
  std::array<char, 512> line{};
  std::snprintf(line.data(), line.size(), "%s%.400s%s\n", before, CaughtText(), after);
  ConsoleText(line.data());
}

}  // namespace stream
