#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "common/http_transfer.h"
#include "common/temp_files.h"
#include "mp4/mp4_download.h"
#include "tests/support/blocked_temp_folder.h"
#include "tests/support/mp4_tasks.h"

namespace stream {
namespace {

using mp4_test::Bytes;
using mp4_test::Filler;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr char kName[] = "restart.mp4";

class Mp4TransferTest : public Mp4Tasks {
 protected:
  Mp4TransferTest() { path_ = BeginAddress(kName); }
  ~Mp4TransferTest() override { std::filesystem::remove_all(path_); }

  static std::size_t Receive(Mp4Transfer& transfer, const Bytes& bytes) {
    return transfer.OnBytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }

  Bytes FileNow() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static std::map<std::uint64_t, std::uint64_t> Ranges() {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->ranges.All();
  }
  static std::uint64_t WriteOffset() {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->write_offset;
  }
  static std::uint64_t Revision() {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->revision;
  }
  static void SeekTo(std::uint64_t offset) {
    const std::lock_guard lock(g_mp4File->mutex);
    g_mp4File->write_offset = offset;
    ++g_mp4File->seeks;
  }

  // A directory at its path prevents the file from being opened.
  void BlockFile() const {
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
  }
  void UnblockFile() const {
    std::filesystem::remove(path_);
    WriteLocalFile(kName, {});
  }

  std::string path_;
};

TEST_F(Mp4TransferTest, PiecesAreWrittenInOrder) {
  Mp4Transfer transfer(CurrentRun());
  EXPECT_EQ(transfer.Offset(), 0U);
  EXPECT_EQ(Receive(transfer, {1, 2, 3}), 3U);
  EXPECT_EQ(Receive(transfer, {4, 5}), 2U);
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4, 5}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 5)));
  EXPECT_EQ(WriteOffset(), 5U);
  EXPECT_EQ(transfer.Offset(), 5U);
  EXPECT_FALSE(transfer.HasPending());
}

TEST_F(Mp4TransferTest, NextTransferContinuesAtTheWriteOffset) {
  Mp4Transfer first(CurrentRun());
  Receive(first, {1, 2, 3});
  Mp4Transfer second(CurrentRun());
  EXPECT_EQ(second.Offset(), 3U);
  Receive(second, {4});
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 4)));
}

TEST_F(Mp4TransferTest, TransferAfterASeekLeavesAGap) {
  Mp4Transfer first(CurrentRun());
  Receive(first, {1, 2, 3});
  SeekTo(6);
  Mp4Transfer second(CurrentRun());
  Receive(second, {7, 8});
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 0, 0, 0, 7, 8}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 3), Pair(6, 8)));
  EXPECT_EQ(WriteOffset(), 8U);
}

TEST_F(Mp4TransferTest, FilledGapMakesOneRange) {
  Mp4Transfer first(CurrentRun());
  Receive(first, {1, 2, 3});
  SeekTo(6);
  Mp4Transfer second(CurrentRun());
  Receive(second, {7, 8});
  SeekTo(3);
  Mp4Transfer third(CurrentRun());
  Receive(third, {4, 5, 6});
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 8)));
}

TEST_F(Mp4TransferTest, SeekDuringATransferAffectsOnlyTheNextTransfer) {
  Mp4Transfer running(CurrentRun());
  Receive(running, {1, 2});
  SeekTo(100);
  EXPECT_EQ(Receive(running, {3, 4}), 2U);
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 4)));
  EXPECT_EQ(WriteOffset(), 100U) << "the offset of the seek";
  EXPECT_EQ(Mp4Transfer(CurrentRun()).Offset(), 100U);
}

// A seek back goes to the end of the received range, which is where the transfer writes.
TEST_F(Mp4TransferTest, WriteOffsetFollowsATransferThatIsAtTheOffsetOfTheSeek) {
  Mp4Transfer running(CurrentRun());
  Receive(running, {1, 2});
  SeekTo(2);
  Receive(running, {3, 4});
  EXPECT_EQ(WriteOffset(), 4U);
  Receive(running, {5});
  EXPECT_EQ(Mp4Transfer(CurrentRun()).Offset(), 5U);
}

TEST_F(Mp4TransferTest, WriteOffsetFollowsATransferOnceItHasPassedTheOffsetOfTheSeek) {
  Mp4Transfer running(CurrentRun());
  Receive(running, {1, 2});
  SeekTo(5);
  Receive(running, {3, 4});
  EXPECT_EQ(WriteOffset(), 5U) << "not reached yet";
  Receive(running, {5, 6, 7});
  EXPECT_EQ(WriteOffset(), 7U);
  Receive(running, {8});
  EXPECT_EQ(WriteOffset(), 8U);
  SeekTo(1);
  Receive(running, {9});
  EXPECT_EQ(WriteOffset(), 1U) << "an offset that the transfer does not pass is unchanged";
}

TEST_F(Mp4TransferTest, TwoTransfersOfOneStreamWriteEachByteAtItsOffset) {
  Mp4Transfer one(CurrentRun());
  Mp4Transfer other(CurrentRun());
  Receive(one, {1, 2, 3});
  Receive(other, {1, 2});
  Receive(other, {3, 4, 5, 6});
  Receive(one, {4, 5});
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4, 5, 6}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 6)));
}

TEST_F(Mp4TransferTest, BytesAlreadyInTheFileAreNotWrittenAgain) {
  Mp4Transfer first(CurrentRun());
  Receive(first, {1, 2, 3, 4});
  const std::uint64_t revision = Revision();
  SeekTo(0);
  Mp4Transfer again(CurrentRun());
  EXPECT_EQ(Receive(again, {9, 9}), 2U);
  EXPECT_EQ(Receive(again, {9, 9}), 2U);
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(WriteOffset(), 4U);
  EXPECT_EQ(Revision(), revision);
}

TEST_F(Mp4TransferTest, PieceThatExtendsBeyondARangeIsWrittenWhole) {
  Mp4Transfer first(CurrentRun());
  Receive(first, {1, 2, 3});
  SeekTo(1);
  Mp4Transfer again(CurrentRun());
  Receive(again, {2, 3, 4});
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4}));
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 4)));
}

TEST_F(Mp4TransferTest, BytesStayPendingWhileTheFileCannotBeOpened) {
  Mp4Transfer transfer(CurrentRun());
  BlockFile();
  EXPECT_EQ(Receive(transfer, {1, 2}), 2U);
  EXPECT_EQ(Receive(transfer, {3}), 1U);
  EXPECT_TRUE(transfer.HasPending());
  EXPECT_EQ(transfer.Offset(), 0U);
  EXPECT_THAT(Ranges(), IsEmpty());
  UnblockFile();
  EXPECT_EQ(Receive(transfer, {4}), 1U);
  EXPECT_EQ(FileNow(), (Bytes{1, 2, 3, 4}));
  EXPECT_FALSE(transfer.HasPending());
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 4)));
}

TEST_F(Mp4TransferTest, EmptyPieceWritesPendingBytes) {
  Mp4Transfer transfer(CurrentRun());
  BlockFile();
  Receive(transfer, {1, 2});
  EXPECT_EQ(transfer.OnBytes(nullptr, 0), 0U);
  EXPECT_TRUE(transfer.HasPending());
  UnblockFile();
  transfer.OnBytes(nullptr, 0);
  EXPECT_FALSE(transfer.HasPending());
  EXPECT_EQ(FileNow(), (Bytes{1, 2}));
}

TEST_F(Mp4TransferTest, BytesStayPendingIfTheDeviceIsFull) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  UsePath("/dev/full");
  Mp4Transfer transfer(CurrentRun());
  EXPECT_EQ(Receive(transfer, Filler(100'000, 1)), 100'000U);
  EXPECT_TRUE(transfer.HasPending());
  EXPECT_THAT(Ranges(), IsEmpty());
  EXPECT_EQ(WriteOffset(), 0U);
}

// --- Console lines about failed writes ---

class Mp4WriteFailureTest : public Mp4TransferTest {
 protected:
  Mp4WriteFailureTest() { testing::internal::CaptureStdout(); }
  ~Mp4WriteFailureTest() override {
    std::cout << testing::internal::GetCapturedStdout();  // failure messages were captured too
  }

  // The console output since the last call.
  static std::string Console() {
    std::string text = testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    return text;
  }

  static std::string Line(const std::string& path, std::errc reason) {
    return "mp4 cannot write " + path + ": " + std::make_error_code(reason).message() + "\n";
  }
};

TEST_F(Mp4WriteFailureTest, FullDiskIsReportedOncePerDownload) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  UsePath("/dev/full");
  const std::string line = Line("/dev/full", std::errc::no_space_on_device);
  Mp4Transfer first(CurrentRun());
  for (int i = 0; i < 5; ++i) Receive(first, Filler(10'000, 1));
  EXPECT_EQ(Console(), line);
  Mp4Transfer next_start(CurrentRun());
  for (int i = 0; i < 5; ++i) Receive(next_start, Filler(10'000, 1));
  EXPECT_EQ(Console(), line);
}

TEST_F(Mp4WriteFailureTest, MissingFileIsReportedOncePerDownload) {
  Mp4Transfer transfer(CurrentRun());
  Receive(transfer, {1, 2});
  EXPECT_EQ(Console(), "");
  std::filesystem::remove(path_);
  for (int i = 0; i < 5; ++i) Receive(transfer, {3});
  EXPECT_EQ(Console(), Line(path_, std::errc::no_such_file_or_directory));
  EXPECT_TRUE(transfer.HasPending());
}

// The start of an address reports that no directory can be written. The next start of the same
// address creates no file and reports the failed write.
TEST_F(Mp4WriteFailureTest, EachStartPrintsOneLineIfNoDirectoryCanBeWritten) {
  const BlockedTempFolder folder;
  folder.BlockCache();
  Mp4Transfer transfer(BeginMp4Run("mebo.mp4"));
  for (int i = 0; i < 5; ++i) Receive(transfer, {1});
  const std::string first = Console();
  EXPECT_THAT(first, testing::StartsWith("Cache files cannot be written in "));
  EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), 1) << first;
  Mp4Transfer next_start(CurrentRun());
  for (int i = 0; i < 5; ++i) Receive(next_start, {1});
  const std::string next = Console();
  EXPECT_THAT(next, testing::StartsWith("mp4 cannot write " + GetTempDirA() + "mebo.mp4: "));
  EXPECT_EQ(std::count(next.begin(), next.end(), '\n'), 1) << next;
}

TEST_F(Mp4TransferTest, EmptyPieceWithoutPendingBytesTouchesNoFile) {
  Mp4Transfer transfer(CurrentRun());
  BlockFile();
  EXPECT_EQ(transfer.OnBytes(nullptr, 0), 0U);
  EXPECT_FALSE(transfer.HasPending());
  EXPECT_THAT(Ranges(), IsEmpty());
}

TEST_F(Mp4TransferTest, TransferForAnEarlierAddressWritesNothingAndEnds) {
  Mp4Transfer stale(CurrentRun());
  Receive(stale, {1, 2});
  BeginAddress(kName);
  Mp4Transfer fresh(CurrentRun());
  EXPECT_EQ(Receive(stale, {3}), 0U);
  EXPECT_FALSE(stale.HasPending());
  EXPECT_THAT(FileNow(), IsEmpty());
  EXPECT_THAT(Ranges(), IsEmpty());
  EXPECT_EQ(WriteOffset(), 0U);
  EXPECT_EQ(Receive(fresh, {7}), 1U);
  EXPECT_EQ(FileNow(), (Bytes{7}));
}

TEST_F(Mp4TransferTest, BytesPendingForAnEarlierAddressAreDropped) {
  Mp4Transfer stale(CurrentRun());
  BlockFile();
  Receive(stale, {1, 2});
  UnblockFile();
  UsePath(path_);
  stale.OnBytes(nullptr, 0);
  EXPECT_FALSE(stale.HasPending());
  EXPECT_THAT(FileNow(), IsEmpty());
}

TEST_F(Mp4TransferTest, BytesBeyondTwoGibibytesEndTheTransferWithALine) {
  SeekTo(std::uint64_t{1} << 31);
  Mp4Transfer transfer(CurrentRun());
  testing::internal::CaptureStdout();
  EXPECT_EQ(Receive(transfer, {1}), 0U);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "mp4 download ends at 2 GiB.\n");
  EXPECT_FALSE(transfer.HasPending());
  EXPECT_THAT(FileNow(), IsEmpty());
  EXPECT_THAT(Ranges(), IsEmpty());
}

TEST_F(Mp4TransferTest, LastByteWithAValidOffsetIsWritten) {
  const std::uint64_t last = std::numeric_limits<std::int32_t>::max();
  SeekTo(last);
  Mp4Transfer transfer(CurrentRun());
  EXPECT_EQ(Receive(transfer, {1, 2}), 2U);
  EXPECT_EQ(std::filesystem::file_size(path_), last + 2);
  EXPECT_THAT(Ranges(), ElementsAre(Pair(last, last + 2)));
}

TEST_F(Mp4TransferTest, ReplyWithoutAStatusIsAcceptedAtAnyOffset) {
  const CurlHandle handle = MakeCurlHandle();
  Mp4Transfer beginning(CurrentRun());
  EXPECT_TRUE(beginning.AcceptReply(handle.get()));
  SeekTo(10);
  Mp4Transfer middle(CurrentRun());
  EXPECT_TRUE(middle.AcceptReply(handle.get()));
  EXPECT_EQ(middle.Offset(), 10U);
}

TEST_F(Mp4TransferTest, ConcurrentTransfersLeaveTheStreamIntact) {
  const Bytes stream = Filler(20'000, 77);
  const auto take_in_pieces = [&stream](Mp4Transfer& transfer, std::size_t piece) {
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      const std::size_t size = std::min(piece, stream.size() - at);
      transfer.OnBytes(reinterpret_cast<const char*>(stream.data()) + at, size);
    }
  };
  std::vector<Mp4Transfer> transfers;  // all start at offset 0
  transfers.reserve(3);
  for (int i = 0; i < 3; ++i) transfers.emplace_back(CurrentRun());
  std::vector<std::thread> threads;
  threads.reserve(transfers.size());
  for (std::size_t i = 0; i < transfers.size(); ++i)
    threads.emplace_back(take_in_pieces, std::ref(transfers[i]), 97 + i * 331);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(FileNow(), stream);
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, 20'000)));
}

}  // namespace
}  // namespace stream
