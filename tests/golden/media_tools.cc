#include "tests/golden/media_tools.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory(const fs::path& parent) {
  std::random_device random;
  do {
    path_ = parent / ("stream_golden_" + std::to_string(random()));
  } while (!fs::create_directory(path_));  // false if another test has created this one
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string Quoted(const fs::path& path) { return '"' + path.string() + '"'; }

void RunTool(const std::string& command, const fs::path& output) {
  const std::string line = command + " > " + Quoted(output);
  if (std::system(line.c_str()) != 0) throw std::runtime_error("failed: " + line);
}

std::vector<std::uint8_t> ReadWholeFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}
