// Plays a live stream for a simulated day. Each step advances the simulated time by one refresh, so
// the test takes only as long as the work of the component. Slow builds play fewer hours, which
// CMakeLists.txt sets.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/frame_memory.h"
#include "common/frame_queue.h"
#include "hls/hls_stream.h"
#include "public/stream_downloader.h"
#include "tests/support/hls_day_server.h"
#include "tests/support/process_memory.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

constexpr std::int64_t kHour = 3'600;  // seconds
constexpr std::int64_t kHours = HLS_LONG_RUN_HOURS;
constexpr std::int64_t kVariantHours = std::max<std::int64_t>(1, kHours / 8);

// Memory is compared from this hour on. By then the longest table, which remembers two thousand
// segments, is full.
constexpr std::size_t kSteadyHour = 8;

// Checks that frames carry the numbers 0, 1, 2 and so on. Keeps no frame.
class CountingPlayer final : public CStreamPlayerImp {
 public:
  void OnDuration(float) override {}
  void OnBufferedTime(float) override {}
  void OnAudioClock(float) override {}
  void OnMessage(std::string) override {}
  void OnPlayResult(std::string) override {}
  void OnVideoFrame(MediaFrame frame) override { Count(frame, video_); }
  void OnAudioFrame(MediaFrame frame) override { Count(frame, audio_); }

  std::int64_t Video() const { return video_.load(); }
  std::int64_t Audio() const { return audio_.load(); }
  std::int64_t OutOfOrder() const { return out_of_order_.load(); }

 private:
  void Count(const MediaFrame& frame, std::atomic<std::int64_t>& next) {
    std::int64_t number = 0;
    for (int i = 0; i < frame.size; ++i) number = number << 8 | frame.data[i];
    if (number != next++) ++out_of_order_;
  }

  std::atomic<std::int64_t> video_{0};
  std::atomic<std::int64_t> audio_{0};
  std::atomic<std::int64_t> out_of_order_{0};
};

// What the component holds at the end of an hour.
struct Sample {
  std::size_t queued;      // segments
  std::size_t replaced;    // pending segments whose address now names another segment
  std::size_t known;       // segments with a state
  std::size_t sources;     // playlists whose numbers are remembered
  std::size_t remembered;  // numbers of the newest of them
  std::size_t frames;      // pending, of both kinds
  std::size_t frame_memory;
  std::size_t resident;  // bytes of the process
  std::size_t heap;
};

class HlsLongRunTest : public testing::Test {
 protected:
  ~HlsLongRunTest() override {
    clock_.Release();
    downloader_.EndDownload();
  }

  // Plays `hours` hours, one refresh after another, and takes a sample at the end of each.
  void Play(const std::string& url, std::int64_t hours) {
    const auto before = std::chrono::steady_clock::now();
    testing::internal::CaptureStdout();
    downloader_.BeginDownload(url);
    for (std::int64_t hour = 0; hour < hours && !HasFailure(); ++hour) {
      for (std::int64_t second = 1; second <= kHour && !HasFailure(); ++second) {
        Step(hour * kHour + second);
      }
      samples_.push_back(TakeSample());
      testing::internal::GetCapturedStdout();  // discards the console output
      ExpectAllPlayed((hour + 1) * kHour);
      testing::internal::CaptureStdout();
    }
    clock_.Release();
    downloader_.EndDownload();
    testing::internal::GetCapturedStdout();
    Print(std::chrono::steady_clock::now() - before);
  }

  // Advances the time by a second once all five tasks are idle.
  void Step(std::int64_t second) {
    WaitForRest();
    server_.SetTime(second);
    clock_.Advance(std::chrono::seconds(1));
  }

  // Waits until all five tasks sleep or wait in the clock and only parsing and delivery are left to
  // do. While segments are queued, the segment task sleeps or has not woken up yet. A sleep
  // ends after a few ticks. From then on the time hardly advances: on a busy machine the task may
  // wake up so late that the playlist would be refreshed once too often.
  void WaitForRest() {
    ASSERT_TRUE(clock_.WaitForWaiters(kTasks));
    constexpr int kTicks = 100;
    constexpr int kYields = 1'000;
    for (int turn = 0; !IsAtRest(); ++turn) {
      if (turn < kTicks || turn % kYields == 0) {
        clock_.Advance(std::chrono::milliseconds(1));
      } else {
        std::this_thread::yield();
      }
      ASSERT_TRUE(clock_.WaitForWaiters(kTasks));
    }
  }

  // A task leaves the clock before it locks the queue to take a segment, so both are checked with
  // the queue locked.
  bool IsAtRest() const {
    const std::lock_guard lock(g_hlsStream->g_segmentQueueMutex);
    return g_hlsStream->g_segmentQueue.empty() && clock_.Waiting() == kTasks;
  }

  static std::size_t PendingFrames() {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->count + g_audioQueue->count;
  }

  Sample TakeSample() {
    WaitForRest();
    Sample sample{};
    {
      const std::lock_guard lock(g_hlsStream->g_segmentQueueMutex);
      sample.queued = g_hlsStream->g_segmentQueue.size();
    }
    const SegmentLedger::Sizes sizes = g_hlsStream->ledger.CurrentSizes();
    sample.replaced = sizes.replaced;
    sample.known = sizes.known;
    sample.sources = sizes.playlists;
    sample.remembered = sizes.remembered;
    sample.frames = PendingFrames();
    sample.frame_memory = HeldPayloadMemory();
    sample.resident = ResidentSize();
    sample.heap = HeapInUse();
    return sample;
  }

  // The playlist lists the newest segment as soon as that segment begins. A segment is parsed one
  // or more steps after its download, and the demultiplexer keeps the last frame of each kind.
  void ExpectAllPlayed(std::int64_t seconds) {
    const std::int64_t segments = HlsDayServer::SegmentsUntil(seconds);
    const std::int64_t oldest = (segments - 2) * HlsDayServer::kFramesPerSegment;
    EXPECT_EQ(server_.Refreshes(), seconds + 2)
        << "the first fetch and its refresh at once, then one per second";
    EXPECT_EQ(server_.Masters(), masters_a_refresh_ * server_.Refreshes());
    EXPECT_EQ(server_.Segments(), segments);
    EXPECT_EQ(server_.OutOfOrder(), 0);
    EXPECT_EQ(player_.OutOfOrder(), 0);
    EXPECT_GE(player_.Video(), oldest);
    EXPECT_GE(player_.Audio(), oldest);
  }

  void ExpectFlat(const std::string& what, std::size_t Sample::*member, std::size_t most) {
    for (std::size_t hour = 0; hour < samples_.size(); ++hour) {
      EXPECT_LE(samples_[hour].*member, most) << what << " at hour " << hour + 1;
    }
  }

  void ExpectTablesFlat() {
    constexpr std::size_t kWindow = HlsDayServer::kWindow;
    ExpectFlat("queued segments", &Sample::queued, 0);
    ExpectFlat("replaced segments", &Sample::replaced, 0);
    ExpectFlat("known segments", &Sample::known, 2 * kWindow);
    ExpectFlat("playlists with numbers", &Sample::sources, 1);
    ExpectFlat("remembered numbers", &Sample::remembered, 2 * WindowClassifier::kRemembered);
    ExpectFlat("pending frames", &Sample::frames, 2 * HlsDayServer::kFramesPerSegment);
    ExpectFlat("frame memory", &Sample::frame_memory, std::size_t{8} << 20);
  }

  void ExpectMemoryFlat() {
    constexpr std::size_t kHeap = 64 << 10;
    constexpr std::size_t kResident = 4 << 20;
    if (samples_.size() <= kSteadyHour) {
      std::cout << "the run is too short to compare memory\n";
      return;
    }
    const Sample& steady = samples_[kSteadyHour - 1];
    EXPECT_LE(samples_.back().heap, steady.heap + kHeap);
    EXPECT_LE(samples_.back().resident, steady.resident + kResident);
  }

  void Print(std::chrono::steady_clock::duration real) const {
    std::cout << samples_.size() << " simulated hours in "
              << std::chrono::duration<double>(real).count() << " s, " << server_.Refreshes()
              << " refreshes, " << server_.Segments() << " segments, " << player_.Video() << " + "
              << player_.Audio() << " frames\n";
    for (std::size_t hour = 0; hour < samples_.size(); ++hour) {
      const Sample& sample = samples_[hour];
      std::cout << "hour " << hour + 1 << ": queued " << sample.queued << ", replaced "
                << sample.replaced << ", known " << sample.known << ", playlists " << sample.sources
                << ", numbers " << sample.remembered << ", frames " << sample.frames
                << ", frame memory " << sample.frame_memory << ", resident " << sample.resident
                << ", heap " << sample.heap << " bytes\n";
    }
  }

  static constexpr std::size_t kTasks = 5;

  std::int64_t masters_a_refresh_ = 0;
  SimulatedClock clock_;
  HlsDayServer server_;
  CountingPlayer player_;
  CStreamDownloader downloader_{&player_};
  std::vector<Sample> samples_;
};

TEST_F(HlsLongRunTest, LivePlaylistPlaysEverySegmentOnceAndNothingGrows) {
  Play(server_.ListUrl(), kHours);
  ExpectTablesFlat();
  ExpectMemoryFlat();
}

TEST_F(HlsLongRunTest, VariantPlaysEverySegmentOnceAndNothingGrows) {
  masters_a_refresh_ = 1;
  Play(server_.MasterUrl(), kVariantHours);
  ExpectTablesFlat();
}

}  // namespace
}  // namespace stream
