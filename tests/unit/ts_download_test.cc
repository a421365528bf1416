#include "ts/ts_download.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/local_file.h"
#include "tests/support/polling.h"
#include "tests/support/recording_player.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/ts_staging.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

class TsStreamSpaceTest : public testing::Test {
 protected:
  TsStreamSpaceTest() {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->Initialize();
    g_tsStreamBuffer->Reset();
    g_tsRunning = true;
  }
  ~TsStreamSpaceTest() override { g_tsRunning = false; }

  static void Stage(std::uint32_t size) {
    const std::vector<char> bytes(size);
    const std::lock_guard lock(g_tsStreamLock);
    ASSERT_EQ(g_tsStreamBuffer->Append(bytes.data(), size), kBufferOk);
  }

  static std::future<void> WaitForBytes(std::uint32_t max_unread) {
    return std::async(std::launch::async, WaitForStreamSpace, max_unread);
  }

  static constexpr Clock::Duration kPace{1};

  SimulatedClock clock_;
};

TEST_F(TsStreamSpaceTest, NoWaitBelowTheLimit) {
  Stage(99);
  WaitForStreamSpace(100);
}

TEST_F(TsStreamSpaceTest, WaitAtTheLimitEndsWhenBytesAreRead) {
  Stage(100);
  const std::future<void> waiting = WaitForBytes(100);
  EXPECT_TRUE(StillPolls(clock_, kPace));
  {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->MoveStart(1);
  }
  clock_.Advance(kPace);
  waiting.wait();
}

TEST_F(TsStreamSpaceTest, StopEndsTheWait) {
  Stage(100);
  const std::future<void> waiting = WaitForBytes(100);
  EXPECT_TRUE(StillPolls(clock_, kPace));
  g_tsRunning = false;
  clock_.Advance(kPace);
  waiting.wait();
}

// A transfer that receives its pieces from the test.
class TsTransferTest : public testing::Test {
 protected:
  TsTransferTest() { g_tsRunning = true; }
  ~TsTransferTest() override { g_tsRunning = false; }

  void Receive(std::uint32_t size) {
    const std::vector<char> bytes(size, 'x');
    EXPECT_EQ(transfer_.OnBytes(bytes.data(), size), size);
  }
  std::size_t OkMessages() const { return player_.Snapshot().MessagesWith("PLAY TS OK:").size(); }

  RecordingPlayer player_;
  TsTransfer transfer_{PlayerPort(&player_), 0};
};

TEST_F(TsTransferTest, OnlyTheFirstBytesAreReportedHoweverFewTheyAre) {
  for (int i = 0; i < 200; ++i) {
    Receive(1);
    ASSERT_EQ(OkMessages(), 1U) << i;
  }
}

TEST_F(TsTransferTest, EmptyPieceIsReportedAndSoAreTheFirstBytesAfterIt) {
  Receive(0);
  EXPECT_EQ(OkMessages(), 1U);
  Receive(1);
  EXPECT_EQ(OkMessages(), 2U);
  Receive(0);
  EXPECT_EQ(OkMessages(), 2U);
}

// Downloads a local file on a thread of its own, in simulated time.
class TsLocalFileTest : public testing::Test {
 protected:
  TsLocalFileTest() { g_tsRunning = true; }
  ~TsLocalFileTest() override {
    g_tsRunning = false;
    clock_.Release();
    if (download_.valid()) download_.wait();
  }

  // Packets in which each byte is the number of its packet.
  static std::vector<std::uint8_t> Packets(std::size_t count) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < count; ++i) {
      bytes.insert(bytes.end(), kTsPacketSize, static_cast<std::uint8_t>(i));
    }
    return bytes;
  }

  void StartDownload(const std::vector<std::uint8_t>& file) {
    const std::string url = "file://" + WriteLocalFile("local.ts", file);
    download_ =
        std::async(std::launch::async, [this, url] { DownloadTs(url, PlayerPort(&player_)); });
  }

  static constexpr std::uint64_t kPiece = 10'240;
  static constexpr Clock::Duration kPause{10};

  SimulatedClock clock_;
  RecordingPlayer player_;
  std::future<void> download_;
};

TEST_F(TsLocalFileTest, IsReadInPiecesOf10240BytesWithAPauseOfTenMilliseconds) {
  constexpr std::size_t kPackets = 150;
  StartDownload(Packets(kPackets));
  const std::uint64_t size = kPackets * kTsPacketSize;
  for (std::uint64_t end : {kPiece, 2 * kPiece, size}) {
    ASSERT_TRUE(clock_.WaitForWaiters(1));
    EXPECT_EQ(g_tsDownloaded.load(), end);
    clock_.Advance(kPause - Clock::Duration(1));
    EXPECT_EQ(clock_.Waiting(), 1U);
    clock_.Advance(Clock::Duration(1));
  }
  download_.get();
  EXPECT_EQ(clock_.Elapsed(), kPause * 3);
  EXPECT_EQ(StagedTsBytes(), Packets(kPackets));
}

TEST_F(TsLocalFileTest, IsReadFromTheFirstPacketAfterTheReceivedBytes) {
  constexpr std::uint64_t kReceived = 3 * kTsPacketSize + 1;
  const std::vector<std::uint8_t> file = Packets(10);
  g_tsDownloaded = kReceived;
  StartDownload(file);
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  EXPECT_EQ(g_tsDownloaded.load(), file.size());
  EXPECT_EQ(StagedTsBytes(),
            std::vector<std::uint8_t>(file.begin() + 4 * kTsPacketSize, file.end()));
}

TEST_F(TsLocalFileTest, StopEndsItAfterTheCurrentPieceAndIsReportedOnce) {
  StartDownload(Packets(150));
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  g_tsRunning = false;
  clock_.Advance(kPause);
  download_.get();
  EXPECT_EQ(g_tsDownloaded.load(), kPiece);
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY TS NO:").size(), 1U);
}

}  // namespace
}  // namespace stream
