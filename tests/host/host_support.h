// What the tests of the console host share.
#ifndef TESTS_HOST_HOST_SUPPORT_H_
#define TESTS_HOST_HOST_SUPPORT_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

#include "stream_player.h"

// A frame with this payload, which it refers to and does not copy.
inline MediaFrame FrameOf(std::uint64_t pts, std::string_view payload) {
  MediaFrame frame{};
  frame.pts = pts;
  frame.dts = pts / 2;
  frame.playTime = pts / 3;
  frame.size = static_cast<std::int32_t>(payload.size());
  frame.data = reinterpret_cast<const std::uint8_t*>(payload.data());
  return frame;
}

// A temporary file for the output of a screen.
class OutputFile {
 public:
  OutputFile() : file_(std::tmpfile(), &std::fclose) {}
  std::FILE* get() const { return file_.get(); }

  std::string Text() const {
    std::rewind(file_.get());
    std::string text;
    for (int c = std::fgetc(file_.get()); c != EOF; c = std::fgetc(file_.get())) {
      text += static_cast<char>(c);
    }
    return text;
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

// A new directory for a test. The destructor removes it.
class TestDirectory {
 public:
  TestDirectory() {
    std::random_device random;
    do {
      path_ =
          std::filesystem::temp_directory_path() / ("stream_host_test_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TestDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TestDirectory(const TestDirectory&) = delete;
  TestDirectory& operator=(const TestDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

#endif  // TESTS_HOST_HOST_SUPPORT_H_
