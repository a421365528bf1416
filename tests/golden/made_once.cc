#include "tests/golden/made_once.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tests/golden/media_tools.h"

namespace fs = std::filesystem;

namespace {

// FNV-1a, in hexadecimal digits.
std::string HashOf(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) {
    hash ^= static_cast<std::uint8_t>(c);
    hash *= 0x100000001B3;
  }
  std::array<char, 17> digits;
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
  return digits.data();
}

// Another version of ffmpeg may make different files.
std::string VersionOfFfmpeg() {
  const ScratchDirectory scratch;
  RunTool("ffmpeg -version", scratch.File("version"));
  const std::vector<std::uint8_t> text = ReadWholeFile(scratch.File("version"));
  return {text.begin(), text.end()};
}

}  // namespace

fs::path MadeOnce(const std::string& name, const std::string& recipe,
                  const std::function<void(const fs::path&)>& make) {
  static const std::string version = VersionOfFfmpeg();
  const fs::path directory = fs::path(GOLDEN_SAMPLES) / HashOf(version + recipe);
  fs::path file = directory / name;
  if (fs::exists(file)) return file;
  fs::create_directories(directory);
  const ScratchDirectory scratch(directory);  // on the same disk, so that a rename is one step
  make(scratch.File(name));
  fs::rename(scratch.File(name), file);
  return file;
}
