// The library in a process that loads and frees it repeatedly.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstddef>
#include <string>

#include "tests/support/recording_player.h"
#include "tests/support/ts_packets.h"
#include "tests/windows/library/loaded_library.h"
#include "tests/windows/library/one_stream_server.h"
#include "tests/windows/library/process_counts.h"

namespace stream {
namespace {

constexpr std::size_t kFrames = 40;

void LoadPlayAndFree(const std::string& address) {
  const LoadedLibrary library;
  RecordingPlayer player;
  alignas(std::max_align_t) std::array<unsigned char, 6 * sizeof(void*)> facade;
  library.construct(facade.data(), &player);
  EXPECT_TRUE(library.begin_download(facade.data(), address));
  EXPECT_TRUE(
      player.WaitFor([](const auto& record) { return record.video.size() >= kFrames - 1; }));
  EXPECT_TRUE(library.end_download(facade.data()));
  library.destroy(facade.data());
}

TEST(WindowsLoadTest, HundredLoadsAndPlaysLeaveNoThreadAndMemoryDoesNotGrow) {
  constexpr int kRounds = 100;
  // The system may keep a few threads of its own in a process for a while.
  constexpr std::size_t kSystemThreads = 4;
  constexpr std::size_t kStackSize = 1 << 20;
  // Kept for compatibility: a facade does not delete its pipeline. Nothing else may stay allocated.
  constexpr std::size_t kBytesPerRound = 4096;
  const OneStreamServer server(ts_test::MakeStream(static_cast<int>(kFrames)));
  for (int i = 0; i < 5; ++i) LoadPlayAndFree(server.Url());  // for one-time allocations

  const std::size_t threads = ThreadCount();
  const std::size_t bytes = PrivateBytes();
  ASSERT_GT(bytes, 0U);
  for (int i = 0; i < kRounds && !HasFailure(); ++i) LoadPlayAndFree(server.Url());
  const std::size_t threads_now = ThreadCount();
  EXPECT_LE(threads_now, threads + kSystemThreads);
  const std::size_t stacks = threads_now > threads ? (threads_now - threads) * kStackSize : 0;
  EXPECT_LE(PrivateBytes(), bytes + kRounds * kBytesPerRound + stacks);
}

// A name look-up that a stop left behind may still run in the code of the library.
TEST(WindowsLoadTest, LibraryStaysLoadedWhenItIsFreed) {
  { const LoadedLibrary library; }
  EXPECT_NE(GetModuleHandleW(L"stream_downloader.dll"), nullptr);
}

TEST(WindowsLoadTest, CLibraryStaysLoadedWhenItIsFreed) {
  constexpr auto kName = L"stream_downloader_c.dll";
  const HMODULE library = LoadLibraryW(kName);
  ASSERT_NE(library, nullptr);
  EXPECT_NE(FreeLibrary(library), 0);
  EXPECT_NE(GetModuleHandleW(kName), nullptr);
}

}  // namespace
}  // namespace stream
