// Runs ffmpeg and ffprobe for a test, in a directory that is the test's own.
#ifndef TESTS_GOLDEN_MEDIA_TOOLS_H_
#define TESTS_GOLDEN_MEDIA_TOOLS_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// A fresh directory below the system's temporary one, or another; removed with what is in it.
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

// A path as a command line takes it.
std::string Quoted(const std::filesystem::path& path);

// Runs a command line whose output goes to `output`. Throws std::runtime_error if it fails.
void RunTool(const std::string& command, const std::filesystem::path& output);

// Throws std::runtime_error if the file cannot be read.
std::vector<std::uint8_t> ReadWholeFile(const std::filesystem::path& path);

#endif  // TESTS_GOLDEN_MEDIA_TOOLS_H_
