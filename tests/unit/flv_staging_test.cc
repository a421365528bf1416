// The path of the bytes: from a transfer into the stream, and from the stream to the source that
// the parser reads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <future>
#include <thread>
#include <utility>

#include "tests/support/flv_tasks.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

using flv_test::Bytes;

class FlvStagingTest : public FlvTasks {
 protected:
  // Reads all unread bytes.
  static Bytes Unread(FlvSource& source) {
    Bytes bytes(g_flvStream->UnreadSize());
    EXPECT_TRUE(source.Read(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    return bytes;
  }
  Bytes Unread() { return Unread(source_); }

  bool Stage(std::uint64_t offset, const Bytes& bytes) const {
    return g_flvStream->Stage(run_, offset, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  }

  // Advances to the next check of a waiting reader. The wait ends if the bytes have arrived or
  // never will.
  void LookAgain() { clock_.Advance(kPoll); }

  static constexpr Clock::Duration kPoll{100};

  SimulatedClock clock_;
  FlvStreamSource source_{run_};
};

TEST_F(FlvStagingTest, TransferStagesItsBytes) {
  EXPECT_EQ(Receive({1, 2, 3}), 3U);
  EXPECT_EQ(Receive({4}), 1U);
  EXPECT_EQ(Unread(), (Bytes{1, 2, 3, 4}));
}

TEST_F(FlvStagingTest, StoppedTransferTakesNothing) {
  g_flvRunning = false;
  EXPECT_EQ(Receive({1, 2, 3}), 0U);
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
}

TEST_F(FlvStagingTest, TransferRefusesAnHtmlPage) {
  EXPECT_EQ(Receive({'<', 'h', 't', 'm', 'l', '>'}), 0U);
  EXPECT_EQ(Receive({'<', 'h', 't', 'm', 'l', '>', 'x'}), 0U);
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
}

TEST_F(FlvStagingTest, TransferEndsAtAnHtmlPageInMidStream) {
  EXPECT_EQ(Receive({'F', 'L', 'V', 1}), 4U);
  EXPECT_EQ(Receive({'<', 'h', 't', 'm', 'l', '>'}), 0U);
  EXPECT_EQ(g_flvStream->UnreadSize(), 4U);
}

TEST_F(FlvStagingTest, TransferTakesBytesThatOnlyResembleAnHtmlPage) {
  EXPECT_EQ(Receive({'<', 'h', 't', 'm', 'l'}), 5U);
  EXPECT_EQ(Receive({'<', 'H', 'T', 'M', 'L', '>'}), 6U);
  EXPECT_EQ(Receive({' ', '<', 'h', 't', 'm', 'l', '>'}), 7U);
}

TEST_F(FlvStagingTest, TransferOfANullPointerSucceedsAndStagesNothing) {
  EXPECT_EQ(transfer_.OnBytes(nullptr, 35), 35U);
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  EXPECT_EQ(Receive({}), 0U);
}

TEST_F(FlvStagingTest, SecondDeliveryOfTheSameBytesIsSkipped) {
  EXPECT_TRUE(Stage(0, {1, 2, 3, 4}));
  EXPECT_TRUE(Stage(0, {1, 2}));
  EXPECT_TRUE(Stage(2, {3, 4, 5}));
  EXPECT_TRUE(Stage(4, {5}));
  EXPECT_TRUE(Stage(5, {6, 7}));
  EXPECT_TRUE(Stage(0, {1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(Unread(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(FlvStagingTest, BytesAlreadyReadAreNotStagedAgain) {
  Receive({1, 2, 3});
  EXPECT_EQ(Unread(), (Bytes{1, 2, 3}));
  EXPECT_TRUE(Stage(0, {1, 2, 3, 4, 5}));
  EXPECT_EQ(Unread(), (Bytes{4, 5}));
}

TEST_F(FlvStagingTest, ConcurrentDeliveriesOfALocalFileStageEachByteOnce) {
  Bytes file(1'000'000);
  for (std::size_t i = 0; i < file.size(); ++i) file[i] = static_cast<std::uint8_t>(i * 7 / 5);
  const auto deliver = [&file](std::size_t piece, auto stage) {
    for (std::size_t at = 0; at < file.size(); at += piece) {
      const std::size_t size = std::min(piece, file.size() - at);
      const auto from = file.begin() + static_cast<std::ptrdiff_t>(at);
      stage(at, Bytes(from, from + static_cast<std::ptrdiff_t>(size)));
    }
  };
  std::thread transfer([&] {
    deliver(1603,
            [this](std::size_t, const Bytes& bytes) { EXPECT_EQ(Receive(bytes), bytes.size()); });
  });
  deliver(1024, [this](std::size_t at, const Bytes& bytes) { EXPECT_TRUE(Stage(at, bytes)); });
  transfer.join();
  EXPECT_TRUE(Unread() == file);
}

TEST_F(FlvStagingTest, NewStreamIsEmptyAndStartsAtItsFirstByte) {
  Receive({1, 2, 3});
  const RunId newer = g_flvStream->Begin();
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  FlvTransfer transfer(newer);
  EXPECT_EQ(transfer.OnBytes("ab", 2), 2U);
  FlvStreamSource source(newer);
  EXPECT_EQ(Unread(source), (Bytes{'a', 'b'}));
}

TEST_F(FlvStagingTest, BytesOfAnOlderStreamAreRefused) {
  Receive({1, 2, 3});
  g_flvStream->Begin();
  EXPECT_EQ(Receive({4}), 0U);
  EXPECT_FALSE(Stage(0, {5}));
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
}

TEST_F(FlvStagingTest, ReaderOfAnOlderStreamGetsNoBytesOfTheNewer) {
  FlvTransfer transfer(g_flvStream->Begin());
  EXPECT_EQ(transfer.OnBytes("abc", 3), 3U);
  std::uint8_t byte = 9;
  EXPECT_FALSE(source_.Runs());
  EXPECT_FALSE(source_.WaitForBytes(1));
  EXPECT_FALSE(source_.Read(&byte, 1));
  EXPECT_FALSE(source_.Skip(1));
  EXPECT_EQ(byte, 9);
  EXPECT_EQ(g_flvStream->UnreadSize(), 3U);
}

TEST_F(FlvStagingTest, EndOfAnOlderDownloadDoesNotEndTheNewer) {
  const RunId newer = g_flvStream->Begin();
  EndOfDownload();
  FlvStreamSource source(newer);
  auto reader = std::async(std::launch::async, [&source] { return source.WaitForBytes(2); });
  EXPECT_TRUE(StillPolls(clock_, kPoll));
  FlvTransfer transfer(newer);
  EXPECT_EQ(transfer.OnBytes("a", 1), 1U);
  EXPECT_TRUE(StillPolls(clock_, kPoll)) << "one byte is not enough";
  EXPECT_EQ(transfer.OnBytes("b", 1), 1U);
  LookAgain();
  EXPECT_TRUE(reader.get());
}

TEST_F(FlvStagingTest, NewStreamEndsTheWaitsForAnOlderOne) {
  auto reader = std::async(std::launch::async, [this] { return source_.Skip(100); });
  auto player = std::async(std::launch::async, [this] { g_flvStream->WaitUntilReady(run_); });
  ASSERT_TRUE(clock_.WaitForWaiters(2));
  Receive({1});
  g_flvStream->Begin();
  LookAgain();
  EXPECT_FALSE(reader.get());
  player.get();
}

TEST_F(FlvStagingTest, ReadWaitsForMissingBytes) {
  Receive({1, 2});
  Bytes bytes(4);
  auto reader = std::async(std::launch::async, [&] { return source_.Read(bytes.data(), 4); });
  EXPECT_TRUE(StillPolls(clock_, kPoll));
  Receive({3, 4, 5});
  LookAgain();
  EXPECT_TRUE(reader.get());
  EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(Unread(), (Bytes{5}));
}

TEST_F(FlvStagingTest, WaitingReaderHoldsNoLock) {
  auto reader = std::async(std::launch::async, [this] {
    Bytes bytes(100);
    return source_.Read(bytes.data(), 100);
  });
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  for (int i = 0; i < 100; ++i) Receive({0});
  LookAgain();
  EXPECT_TRUE(reader.get());
}

TEST_F(FlvStagingTest, ReadThatCannotSucceedConsumesNothing) {
  Receive({1, 2});
  EndOfDownload();
  Bytes bytes(3, 9);
  EXPECT_FALSE(source_.WaitForBytes(3));
  EXPECT_FALSE(source_.Read(bytes.data(), 3));
  EXPECT_EQ(bytes, Bytes(3, 9));
  EXPECT_EQ(Unread(), (Bytes{1, 2}));
}

TEST_F(FlvStagingTest, SkipDropsBytes) {
  Receive({1, 2, 3});
  EXPECT_TRUE(source_.Skip(0));
  EXPECT_TRUE(source_.Skip(2));
  EXPECT_EQ(Unread(), (Bytes{3}));
}

TEST_F(FlvStagingTest, SkipBeyondTheEndDropsNothing) {
  Receive({1, 2});
  EndOfDownload();
  EXPECT_FALSE(source_.Skip(3));
  EXPECT_EQ(Unread(), (Bytes{1, 2}));
}

TEST_F(FlvStagingTest, SkipWaitsForMissingBytes) {
  constexpr std::uint32_t kSkipped = 50'000'000;
  constexpr std::uint32_t kPieces = 500;
  auto reader = std::async(std::launch::async, [this] { return source_.Skip(kSkipped); });
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  for (std::uint32_t i = 0; i < kPieces; ++i) {
    EXPECT_EQ(clock_.Waiting(), 1U);
    Receive(Bytes(kSkipped / kPieces));
  }
  Receive({7});
  LookAgain();
  EXPECT_TRUE(reader.get());
  EXPECT_EQ(Unread(), (Bytes{7}));
}

TEST_F(FlvStagingTest, StopEndsASkip) {
  auto reader = std::async(std::launch::async, [this] { return source_.Skip(100); });
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  Receive({1});
  BeginToStop();
  LookAgain();
  EXPECT_FALSE(reader.get());
}

TEST_F(FlvStagingTest, BytesCanBeReadAfterTheEndOfTheDownloadAndAfterAStop) {
  Receive({1, 2});
  EndOfDownload();
  std::uint8_t byte = 0;
  EXPECT_TRUE(source_.Runs());
  EXPECT_TRUE(source_.Read(&byte, 1));
  BeginToStop();
  EXPECT_FALSE(source_.Runs());
  EXPECT_TRUE(source_.Read(&byte, 1));
  EXPECT_EQ(byte, 2);
}

TEST_F(FlvStagingTest, EndOfTheDownloadEndsAWait) {
  auto reader = std::async(std::launch::async, [this] { return source_.Read(nullptr, 5); });
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  Receive({1});
  EndOfDownload();
  LookAgain();
  EXPECT_FALSE(reader.get());
}

TEST_F(FlvStagingTest, StopEndsEveryWait) {
  auto reader = std::async(std::launch::async, [this] { return source_.WaitForBytes(0xFFFFFFFF); });
  auto player = std::async(std::launch::async, [this] { g_flvStream->WaitUntilReady(run_); });
  ASSERT_TRUE(clock_.WaitForWaiters(2));
  BeginToStop();
  LookAgain();
  EXPECT_FALSE(reader.get());
  player.get();
}

TEST_F(FlvStagingTest, BytesAfterTheEndOfTheParsingAreCountedAndDropped) {
  Receive({1, 2, 3});
  g_flvStream->EndParsing(run_);
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  EXPECT_EQ(Receive({4, 5}), 2U);
  EXPECT_TRUE(Stage(4, {5, 6}));  // the first of them was delivered before
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  EXPECT_EQ(g_flvStream->DroppedSize(), 6U);
  EXPECT_EQ(Receive({'<', 'h', 't', 'm', 'l', '>'}), 0U) << "an HTML page still ends the transfer";
}

TEST_F(FlvStagingTest, EndOfTheParsingOfAnOlderStreamDoesNotAffectTheNewer) {
  Receive({1, 2, 3});
  g_flvStream->EndParsing(run_);
  const RunId newer = g_flvStream->Begin();
  EXPECT_EQ(g_flvStream->DroppedSize(), 0U);
  g_flvStream->EndParsing(run_);
  FlvTransfer transfer(newer);
  EXPECT_EQ(transfer.OnBytes("ab", 2), 2U);
  FlvStreamSource source(newer);
  EXPECT_EQ(Unread(source), (Bytes{'a', 'b'}));
}

// A stream with a limit of ten unread bytes, which the last piece may exceed.
class FlvFullStreamTest : public FlvTasks {
 protected:
  bool Stage(std::uint64_t offset, std::uint32_t size) {
    const Bytes bytes(size);
    return full_.Stage(full_run_, offset, bytes.data(), size);
  }

  std::future<bool> StageLater(std::uint64_t offset, std::uint32_t size) {
    return std::async(std::launch::async, [=, this] { return Stage(offset, size); });
  }

  // Whether a waiting piece checks for space every millisecond and finds none.
  bool IsStillPolling() { return StillPolls(clock_, kPace); }
  void LookAgain() { clock_.Advance(kPace); }

  static constexpr Clock::Duration kPace{1};

  SimulatedClock clock_;
  FlvStream full_{10};
  RunId full_run_ = full_.Begin();
};

TEST_F(FlvFullStreamTest, PieceWaitsUntilBytesAreReadAndIsThenStaged) {
  EXPECT_TRUE(Stage(0, 9));
  EXPECT_TRUE(Stage(9, 5)) << "there was space for one byte";
  auto piece = StageLater(14, 3);
  EXPECT_TRUE(IsStillPolling());
  EXPECT_EQ(full_.UnreadSize(), 14U);
  EXPECT_TRUE(full_.Skip(full_run_, 5));
  LookAgain();
  EXPECT_TRUE(piece.get());
  EXPECT_EQ(full_.UnreadSize(), 12U);
}

TEST_F(FlvFullStreamTest, PieceThatWasDeliveredBeforeDoesNotWait) {
  EXPECT_TRUE(Stage(0, 20));
  EXPECT_TRUE(Stage(5, 15));
  EXPECT_EQ(full_.UnreadSize(), 20U);
}

TEST_F(FlvFullStreamTest, StopOrNewStreamEndsTheWaitAndThePieceIsRefused) {
  EXPECT_TRUE(Stage(0, 10));
  auto replaced = StageLater(10, 1);
  EXPECT_TRUE(IsStillPolling());
  const RunId older = std::exchange(full_run_, full_.Begin());
  LookAgain();
  EXPECT_FALSE(replaced.get());
  EXPECT_FALSE(full_.Stage(older, 10, "x", 1));
  EXPECT_TRUE(Stage(0, 10));
  auto stopped = StageLater(10, 1);
  EXPECT_TRUE(IsStillPolling());
  g_flvRunning = false;
  full_.Wake();
  LookAgain();
  EXPECT_FALSE(stopped.get());
}

TEST_F(FlvFullStreamTest, EndOfTheParsingEndsTheWaitAndThePieceIsDropped) {
  EXPECT_TRUE(Stage(0, 10));
  auto piece = StageLater(10, 3);
  EXPECT_TRUE(IsStillPolling());
  full_.EndParsing(full_run_);
  LookAgain();
  EXPECT_TRUE(piece.get());
  EXPECT_EQ(full_.UnreadSize(), 0U);
  EXPECT_EQ(full_.DroppedSize(), 13U);
}

TEST_F(FlvFullStreamTest, SkipOfMoreThanTheLimitSucceeds) {
  clock_.Release();
  auto skipped = std::async(std::launch::async, [this] { return full_.Skip(full_run_, 95); });
  for (std::uint64_t at = 0; at < 100; at += 4) EXPECT_TRUE(Stage(at, 4));
  EXPECT_TRUE(skipped.get());
  EXPECT_EQ(full_.UnreadSize(), 5U);
}

TEST_F(FlvFullStreamTest, ReleasedStreamIsEmptyAndTheNextOneWorks) {
  EXPECT_TRUE(Stage(0, 12));
  full_.Release();
  EXPECT_EQ(full_.UnreadSize(), 0U);
  full_run_ = full_.Begin();
  EXPECT_TRUE(Stage(0, 3));
  EXPECT_EQ(full_.UnreadSize(), 3U);
}

}  // namespace
}  // namespace stream
