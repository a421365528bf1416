#include "common/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

#include "common/temp_files.h"
#include "platform/paths.h"
#include "tests/support/blocked_temp_folder.h"

namespace stream {
namespace {

TEST(TempFolderTest, DirectoryIsBesideTheExecutable) {
  EXPECT_EQ(TempDirBeside(std::string("C:\\App\\player.exe")), "C:\\App\\tmp/");
  EXPECT_EQ(TempDirBeside(std::wstring(L"C:\\App\\player.exe")), L"C:\\App\\tmp");
  EXPECT_EQ(TempDirBeside(std::string("/opt/app/player")), "/opt/app/tmp/");
}

TEST(TempFolderTest, LastSeparatorOfEitherKindCounts) {
  EXPECT_EQ(TempDirBeside(std::string("C:/App\\bin/player.exe")), "C:/App\\bin/tmp/");
}

TEST(TempFolderTest, NameWithoutASeparatorIsKeptWhole) {
  EXPECT_EQ(TempDirBeside(std::string("player.exe")), "player.exetmp/");
  EXPECT_EQ(TempDirBeside(std::wstring(L"player.exe")), L"player.exetmp");
}

TEST(TempFolderTest, DirectoryInTheCacheIsNamedByAHashOfTheExecutable) {
  const std::wstring module = L"a";  // a published test vector of the hash
  EXPECT_EQ(TempDirInCache(std::string("/home/u/.cache/"), module),
            "/home/u/.cache/stream_downloader/tmp/af63dc4c8601ec8c/");
  EXPECT_EQ(TempDirInCache(std::string("C:\\Local\\"), module),
            "C:\\Local\\stream_downloader\\tmp\\af63dc4c8601ec8c/");
  EXPECT_EQ(TempDirInCache(std::wstring(L"C:\\Local\\"), module),
            L"C:\\Local\\stream_downloader\\tmp\\af63dc4c8601ec8c");
}

TEST(TempFolderTest, ExecutablesHaveDifferentDirectoriesInTheCache) {
  const std::string cache = "/home/u/.cache/";
  EXPECT_NE(TempDirInCache(cache, L"/usr/bin/one"), TempDirInCache(cache, L"/usr/bin/two"));
}

// --- A directory that cannot be created ---

class BlockedTempFolderTest : public testing::Test {
 protected:
  static std::string ConsoleOf(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
  }

  std::set<std::string> FilesInCache() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.InCache()))
      names.insert(entry.path().filename().string());
    return names;
  }

  // The line if neither directory can be written.
  std::string LineAboutBoth() const {
    return "Cache files cannot be written in " + folder_.BesideExecutable().string() + "/ nor in " +
           folder_.InCache() + ".\n";
  }

  BlockedTempFolder folder_;
};

TEST_F(BlockedTempFolderTest, CacheFileIsCreatedInTheUsersCache) {
  std::string path;
  EXPECT_EQ(ConsoleOf([&path] { path = CreateCacheFile("mebo.ts"); }), folder_.Line());
  EXPECT_EQ(path, folder_.InCache() + "mebo.ts");
  EXPECT_EQ(FilesInCache(), std::set<std::string>{"mebo.ts"});
  EXPECT_TRUE(folder_.IsBlocked()) << "the blocking file was changed";
}

TEST_F(BlockedTempFolderTest, BothFormsOfThePathChange) {
  ConsoleOf([] { CreateCacheFile("mebo.ts"); });
  EXPECT_EQ(GetTempDirA(), folder_.InCache());
  EXPECT_EQ(std::filesystem::path(GetTempDirW()) / "", std::filesystem::path(folder_.InCache()));
  EXPECT_TRUE(TempFolderIsWritable());
}

TEST_F(BlockedTempFolderTest, ExistingCacheFileInTheUsersCacheIsEmptied) {
  ConsoleOf([this] {
    std::ofstream(CreateCacheFile("mebo.ts")) << "left from another address";
    ASSERT_GT(std::filesystem::file_size(folder_.InCache() + "mebo.ts"), 0U);
    CreateCacheFile("mebo.ts");
  });
  EXPECT_EQ(std::filesystem::file_size(folder_.InCache() + "mebo.ts"), 0U);
}

TEST_F(BlockedTempFolderTest, EachNewCacheFileIsReportedOnce) {
  EXPECT_EQ(ConsoleOf([] {
              CreateCacheFile("mebo.ts");
              CreateCacheFile("mebo.flv");
            }),
            folder_.Line() + folder_.Line());
}

TEST_F(BlockedTempFolderTest, DanglingLinkBlocksTheDirectoryToo) {
  folder_.Unblock();
  std::error_code failure;
  std::filesystem::create_symlink("nowhere/at/all", folder_.BesideExecutable(), failure);
  if (failure) GTEST_SKIP() << "no links here: " << failure.message();
  EXPECT_EQ(ConsoleOf([] { CreateCacheFile("mebo.ts"); }), folder_.Line());
  EXPECT_EQ(FilesInCache(), std::set<std::string>{"mebo.ts"});
}

TEST_F(BlockedTempFolderTest, DirectoryThatCanBeCreatedLaterIsUsedForTheNextCacheFile) {
  ConsoleOf([] { CreateCacheFile("mebo.ts"); });
  folder_.Unblock();
  const std::string directory = TempDirBeside(platform::ModuleFileName());
  EXPECT_EQ(ConsoleOf([&] { EXPECT_EQ(CreateCacheFile("mebo.ts"), directory + "mebo.ts"); }), "");
  EXPECT_EQ(GetTempDirA(), directory);
  EXPECT_TRUE(std::filesystem::exists(directory + "mebo.ts"));
}

TEST_F(BlockedTempFolderTest, UnwritableCacheIsReportedAndThePathStays) {
  folder_.BlockCache();
  const std::string directory = TempDirBeside(platform::ModuleFileName());
  EXPECT_EQ(ConsoleOf([&] { EXPECT_EQ(CreateCacheFile("mebo.ts"), directory + "mebo.ts"); }),
            LineAboutBoth());
  EXPECT_EQ(GetTempDirA(), directory);
  EXPECT_FALSE(TempFolderIsWritable());
}

TEST_F(BlockedTempFolderTest, MissingCacheIsReportedAndThePathStays) {
  SetUserCache("");
  const std::string directory = TempDirBeside(platform::ModuleFileName());
  EXPECT_EQ(ConsoleOf([&] { EXPECT_EQ(CreateCacheFile("mebo.ts"), directory + "mebo.ts"); }),
            "Cache files cannot be written in " + directory + ".\n");
}

TEST_F(BlockedTempFolderTest, FileOpenedWithoutACacheFileIsInTheUsersCacheToo) {
  EXPECT_EQ(ConsoleOf([] { EXPECT_NE(OpenTempFile("tmpE.ts", "wb+"), nullptr); }), folder_.Line());
  EXPECT_EQ(ConsoleOf([] { EXPECT_NE(OpenTempFile("tmpE.ts", "ab+"), nullptr); }), "");
  EXPECT_EQ(FilesInCache(), std::set<std::string>{"tmpE.ts"});
}

TEST_F(BlockedTempFolderTest, FilesThatCannotBeOpenedAnywhereAreReportedOnce) {
  folder_.BlockCache();
  EXPECT_EQ(ConsoleOf([] {
              EXPECT_EQ(OpenTempFile("tmpE.ts", "wb+"), nullptr);
              EXPECT_EQ(OpenTempFile("tmpE.ts", "ab+"), nullptr);
            }),
            LineAboutBoth());
}

// --- A directory that can be written ---

class FreeTempFolderTest : public BlockedTempFolderTest {
 protected:
  FreeTempFolderTest() { folder_.Unblock(); }

  const std::string directory_ = TempDirBeside(platform::ModuleFileName());
};

TEST_F(FreeTempFolderTest, MissingDirectoryIsNotCreatedForAFileThatIsOnlyOpened) {
  EXPECT_EQ(ConsoleOf([] { EXPECT_EQ(OpenTempFile("tmpE.ts", "wb+"), nullptr); }), "");
  EXPECT_FALSE(std::filesystem::exists(folder_.BesideExecutable()));
  EXPECT_EQ(GetTempDirA(), directory_);
}

TEST_F(FreeTempFolderTest, CacheFileThatCannotBeOpenedKeepsItsDirectory) {
  std::filesystem::create_directories(directory_ + "mebo.mp4");  // a directory in place of the file
  EXPECT_EQ(ConsoleOf([this] { EXPECT_EQ(CreateCacheFile("mebo.mp4"), directory_ + "mebo.mp4"); }),
            "");
  EXPECT_EQ(GetTempDirA(), directory_);
  EXPECT_TRUE(TempFolderIsWritable());
  EXPECT_FALSE(std::filesystem::exists(folder_.InCache()));
  const std::filesystem::directory_iterator entries(directory_);
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1)
      << "the check left a file in the directory";
}

}  // namespace
}  // namespace stream
