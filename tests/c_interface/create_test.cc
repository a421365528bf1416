// Creating and destroying downloaders, with valid and invalid arguments.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>

#include "tests/c_interface/recorded_downloader.h"

namespace stream {

namespace c_interface_test {
namespace {

// A value that the call must overwrite.
sd_downloader* SomePointer() {
  static char byte;
  return reinterpret_cast<sd_downloader*>(&byte);
}

TEST(CInterfaceCreateTest, NullCallbacksAreRefused) {
  sd_downloader* downloader = SomePointer();
  EXPECT_EQ(sd_create(nullptr, &downloader), SD_ERROR_NULL_CALLBACKS);
  EXPECT_EQ(downloader, nullptr);
}

TEST(CInterfaceCreateTest, NullOutIsRefused) {
  RecordingPlayer player;
  const sd_callbacks callbacks = CallbacksTo(player);
  EXPECT_EQ(sd_create(&callbacks, nullptr), SD_ERROR_NULL_OUT);
  EXPECT_EQ(sd_create(nullptr, nullptr), SD_ERROR_NULL_OUT);
}

TEST(CInterfaceCreateTest, StructOfAnotherSizeIsRefused) {
  RecordingPlayer player;
  sd_callbacks callbacks = CallbacksTo(player);
  for (const std::size_t size :
       {std::size_t{0}, sizeof(void*), sizeof(callbacks) - sizeof(void*), sizeof(callbacks) - 1,
        sizeof(callbacks) + 1, sizeof(callbacks) + sizeof(void*),
        std::numeric_limits<std::size_t>::max()}) {
    callbacks.size = size;
    sd_downloader* downloader = SomePointer();
    EXPECT_EQ(sd_create(&callbacks, &downloader), SD_ERROR_CALLBACKS_SIZE) << size;
    EXPECT_EQ(downloader, nullptr) << size;
  }
}

// A host of another version may have a smaller struct. A sanitizer reports a read beyond its size.
TEST(CInterfaceCreateTest, NothingAfterTheSizeOfAnotherStructIsRead) {
  const auto size = std::make_unique<std::size_t>(sizeof(std::size_t));
  sd_downloader* downloader = SomePointer();
  EXPECT_EQ(sd_create(reinterpret_cast<const sd_callbacks*>(size.get()), &downloader),
            SD_ERROR_CALLBACKS_SIZE);
}

TEST(CInterfaceCreateTest, StructIsCopied) {
  RecordingPlayer player;
  sd_callbacks callbacks = CallbacksTo(player);
  const OwnedDownloader downloader(callbacks);
  callbacks = {};
  EXPECT_EQ(Begin(downloader.get(), "rtmp"), SD_ERROR_UNKNOWN_SCHEME);
  EXPECT_TRUE(player.Snapshot().HasMessage("PLAY UNKOWN:rtmp"));
}

TEST(CInterfaceDestroyTest, NullDownloaderIsRefusedByEveryFunction) {
  EXPECT_EQ(sd_begin_download(nullptr, "http", 4), SD_ERROR_NULL_DOWNLOADER);
  EXPECT_EQ(sd_end_download(nullptr), SD_ERROR_NULL_DOWNLOADER);
  EXPECT_EQ(sd_set_start_position(nullptr, 1), SD_ERROR_NULL_DOWNLOADER);
  EXPECT_EQ(sd_destroy(nullptr), SD_ERROR_NULL_DOWNLOADER);
}

TEST(CInterfaceDestroyTest, RunningStreamIsStopped) {
  RecordingPlayer player;
  {
    const OwnedDownloader downloader(player);
    EXPECT_EQ(Begin(downloader.get(), "file:///no/such.m3u8"), SD_OK);
    EXPECT_FALSE(player.Snapshot().HasMessage("PLAY STOP OK"));
  }
  player.Close();  // any later call fails the test
  EXPECT_EQ(player.Snapshot().messages.back(), "PLAY STOP OK");
}

}  // namespace
}  // namespace c_interface_test

}  // namespace stream
