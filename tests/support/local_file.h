// Local files for tests that play them, in the test program's own directory.
#ifndef TESTS_SUPPORT_LOCAL_FILE_H_
#define TESTS_SUPPORT_LOCAL_FILE_H_

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Writes a file. Returns its absolute path.
inline std::string WriteLocalFile(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  const std::filesystem::path path = std::filesystem::current_path() / name;
  std::filesystem::remove(path);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return path.string();
}

// Appends to a file, which is created if it does not exist and may be open elsewhere.
inline void AppendToLocalFile(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  std::ofstream(std::filesystem::current_path() / name, std::ios::binary | std::ios::app)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

#endif  // TESTS_SUPPORT_LOCAL_FILE_H_
