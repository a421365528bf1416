#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/files.h"

namespace stream {
namespace {

TEST(WindowsSpecialFileTest, DevicesAndPipesAreSpecial) {
  for (const char* path : {"NUL", "nul", "CON", "COM1", R"(\\.\pipe\x)", R"(\\server\pipe\x)"}) {
    EXPECT_TRUE(platform::IsSpecialFile(path)) << path;
  }
}

TEST(WindowsSpecialFileTest, DirectoriesAreSpecialAndFilesAreNot) {
  const std::filesystem::path file = std::filesystem::current_path() / "regular.ts";
  std::ofstream(file) << "bytes";
  EXPECT_FALSE(platform::IsSpecialFile(file.string()));
  EXPECT_FALSE(platform::IsSpecialFile("/" + file.generic_string()))
      << "the form that libcurl uses";
  EXPECT_FALSE(platform::IsSpecialFile(R"(\\.\)" + file.string()));
  EXPECT_TRUE(platform::IsSpecialFile(file.parent_path().string()));
  std::filesystem::remove(file);
  EXPECT_FALSE(platform::IsSpecialFile(file.string())) << "the file does not exist";
}

}  // namespace
}  // namespace stream
