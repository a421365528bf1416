#include "common/temp_files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace stream {
namespace {

TEST(TempFilesTest, DirectoryOfThisProcessIsBesideItsExecutable) {
  const std::filesystem::path narrow = GetTempDirA();
  EXPECT_TRUE(std::filesystem::equivalent(narrow.parent_path().parent_path(),
                                          std::filesystem::current_path()));
  EXPECT_TRUE(GetTempDirA().ends_with("tmp/"));
  EXPECT_TRUE(GetTempDirW().ends_with(L"tmp"));
}

TEST(TempFilesTest, CacheFileIsCreatedWithItsDirectory) {
  std::filesystem::remove_all("tmp");
  const std::string path = CreateCacheFile("mebo.flv");
  EXPECT_EQ(path, GetTempDirA() + "mebo.flv");
  EXPECT_TRUE(std::filesystem::exists("tmp/mebo.flv"));
}

TEST(TempFilesTest, ExistingCacheFileIsEmptied) {
  const std::string path = CreateCacheFile("mebo.ts");
  std::ofstream(path) << "left from another address";
  ASSERT_GT(std::filesystem::file_size(path), 0U);
  CreateCacheFile("mebo.ts");
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST(TempFilesTest, PathThatCannotBeOpenedIsStillReturned) {
  EXPECT_EQ(CreateCacheFile("no/such/directory.ts"), GetTempDirA() + "no/such/directory.ts");
}

TEST(AnsiToUtf8Test, AsciiIsUnchanged) {
  EXPECT_EQ(AnsiToUtf8("C:\\App\\tmp/mebo.mp4"), "C:\\App\\tmp/mebo.mp4");
  EXPECT_EQ(AnsiToUtf8(""), "");
}

}  // namespace
}  // namespace stream
