// Runs ffmpeg and ffprobe for a test, in a directory of its own.
#ifndef TESTS_GOLDEN_MEDIA_TOOLS_H_
#define TESTS_GOLDEN_MEDIA_TOOLS_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// A new directory below the system's temporary directory, or below `parent`. The destructor removes
// it with its contents.
class ScratchDirectory {
 public:
  explicit ScratchDirectory(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path());
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::filesystem::path File(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// A path, quoted for a command line.
std::string Quoted(const std::filesystem::path& path);

// Runs a command line and redirects its output to `output`. Throws std::runtime_error if it fails.
void RunTool(const std::string& command, const std::filesystem::path& output);

// Throws std::runtime_error if the file cannot be read.
std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& path);

#endif  // TESTS_GOLDEN_MEDIA_TOOLS_H_
