#include "mp4/mp4_sample.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <future>
#include <limits>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "mp4/mp4_state.h"
#include "tests/golden/frame_dump.h"
#include "tests/support/claimed_backlog.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

using mp4_boxes::kPps;
using mp4_boxes::kSps;
using mp4_test::AddStartCode;
using mp4_test::Bytes;
using mp4_test::Filler;
using mp4_test::Join;
using mp4_test::LengthPrefixed;
using mp4_test::Nal;
using mp4_test::ParameterSets;
using mp4_test::U32;
using mp4_test::WithAdtsHeader;

constexpr std::uint64_t kTimeMs = 120;
constexpr std::uint64_t kStartMs = 80;

// The interval at which the parser checks for queue space.
constexpr Clock::Duration kPace{1};

class Mp4SampleTest : public testing::Test {
 protected:
  Mp4SampleTest() {
    ResetFrameQueues();
    g_mp4Running = true;
  }
  ~Mp4SampleTest() override { g_mp4Running = false; }

  // A block that ends with its last byte, as the library returns it.
  static Mp4Sample SampleOf(const Bytes& bytes) {
    Mp4Sample sample;
    sample.bytes.reset(static_cast<std::uint8_t*>(std::malloc(bytes.size())));
    if (!bytes.empty()) std::memcpy(sample.bytes.get(), bytes.data(), bytes.size());
    sample.size = static_cast<std::uint32_t>(bytes.size());
    sample.time = kTimeMs;
    sample.start = kStartMs;
    return sample;
  }

  static std::vector<Bytes> Emit(const Bytes& bytes, const Mp4ParameterSets& sets = {kSps, kPps}) {
    EmitMp4Video(SampleOf(bytes), sets);
    return Payloads(PopQueuedFrames().video);
  }

  static std::vector<Bytes> Payloads(const std::vector<DumpedFrame>& frames) {
    std::vector<Bytes> payloads;
    for (const DumpedFrame& frame : frames) payloads.push_back(frame.payload);
    return payloads;
  }

  // Begins the stream and removes its first frame.
  static void Begin() { ASSERT_EQ(Emit(LengthPrefixed({Nal(5)})).size(), 1U); }
};

TEST_F(Mp4SampleTest, ParameterSetsPrecedeOnlyTheFirstUnit) {
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5, 9), Nal(5, 8)})),
            (std::vector<Bytes>{Join({ParameterSets(), AddStartCode(Nal(5, 9))}),
                                AddStartCode(Nal(5, 8))}));
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5, 7)})), std::vector<Bytes>{AddStartCode(Nal(5, 7))});
}

TEST_F(Mp4SampleTest, FirstUnitStandsAloneWithoutParameterSets) {
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5)}), {}), std::vector<Bytes>{AddStartCode(Nal(5))});
}

TEST_F(Mp4SampleTest, MissingParameterSetLeavesNoStartCode) {
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5)}), {{}, kPps}),
            std::vector<Bytes>{Join({AddStartCode(kPps), AddStartCode(Nal(5))})});
  ResetFrameQueues();
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5)}), {kSps, {}}),
            std::vector<Bytes>{Join({AddStartCode(kSps), AddStartCode(Nal(5))})});
}

TEST_F(Mp4SampleTest, StreamBeginsOnlyWithAnIdrSliceSeiOrSps) {
  for (unsigned type = 0; type < 32; ++type) {
    ResetFrameQueues();
    const bool begins = type >= 5 && type <= 7;
    EXPECT_EQ(Emit(LengthPrefixed({Nal(type)})).size(), begins ? 1U : 0U) << "type " << type;
    EXPECT_EQ(Mp4VideoHasBegun(), begins) << "type " << type;
  }
}

TEST_F(Mp4SampleTest, OnlyUnitsBeforeTheFirstAreDropped) {
  EXPECT_EQ(Emit(LengthPrefixed({Nal(9), Nal(1), Nal(6), Nal(1, 5), Nal(5, 6)})),
            (std::vector<Bytes>{Join({ParameterSets(), AddStartCode(Nal(6))}),
                                AddStartCode(Nal(1, 5)), AddStartCode(Nal(5, 6))}));
}

TEST_F(Mp4SampleTest, UnitsOfEveryTypeAreQueuedOnceTheStreamHasBegun) {
  Begin();
  for (unsigned type = 0; type < 32; ++type) {
    EXPECT_EQ(Emit(LengthPrefixed({Nal(type)})), std::vector<Bytes>{AddStartCode(Nal(type))});
  }
}

TEST_F(Mp4SampleTest, FirstUnitIsReportedOnce) {
  EXPECT_FALSE(EmitMp4Video(SampleOf(LengthPrefixed({Nal(1)})), {}));
  EXPECT_TRUE(EmitMp4Video(SampleOf(LengthPrefixed({Nal(1), Nal(5)})), {}));
  EXPECT_FALSE(EmitMp4Video(SampleOf(LengthPrefixed({Nal(5)})), {}));
}

TEST_F(Mp4SampleTest, StreamHasBegunEvenIfAllFramesAreDelivered) {
  Begin();
  EXPECT_TRUE(Mp4VideoHasBegun());
  ResetFrameQueues();
  EXPECT_FALSE(Mp4VideoHasBegun());
  ReleaseFrameQueues();
  EXPECT_FALSE(Mp4VideoHasBegun());
}

TEST_F(Mp4SampleTest, LengthBeyondTheSampleDropsTheRest) {
  Begin();
  const Bytes good = LengthPrefixed({Nal(1, 30)});
  const Bytes rest = Nal(1, 9);
  for (const std::uint64_t false_length :
       {std::uint64_t{11}, std::uint64_t{0x7FFFFFFF}, std::uint64_t{0x80000000},
        std::uint64_t{0xFFFFFFFC}, std::uint64_t{0xFFFFFFFF}}) {
    EXPECT_EQ(Emit(Join({good, U32(false_length), rest})),
              std::vector<Bytes>{AddStartCode(Nal(1, 30))})
        << false_length;
  }
}

TEST_F(Mp4SampleTest, LengthUpToTheEndOfTheSampleIsValid) {
  Begin();
  EXPECT_EQ(Emit(Join({U32(10), Nal(1, 9)})), std::vector<Bytes>{AddStartCode(Nal(1, 9))});
}

TEST_F(Mp4SampleTest, IncompleteLengthIsDropped) {
  Begin();
  for (std::size_t left = 0; left < 4; ++left) {
    EXPECT_EQ(Emit(Join({LengthPrefixed({Nal(1)}), Bytes(left)})).size(), 1U) << left;
    EXPECT_TRUE(Emit(Bytes(left)).empty()) << left;
  }
}

TEST_F(Mp4SampleTest, EmptyUnitYieldsABareStartCode) {
  Begin();
  EXPECT_EQ(Emit(LengthPrefixed({{}, Nal(1), {}})),
            (std::vector<Bytes>{AddStartCode({}), AddStartCode(Nal(1)), AddStartCode({})}));
}

TEST_F(Mp4SampleTest, EmptyUnitDoesNotBeginTheStream) {
  EXPECT_TRUE(Emit(LengthPrefixed({{}, {}})).empty());
  EXPECT_EQ(Emit(LengthPrefixed({{}, Nal(5)})).size(), 1U);
}

// Whatever the lengths are, nothing outside the block is read. The address sanitizer checks this.
TEST_F(Mp4SampleTest, EveryTruncationOfASampleIsHandled) {
  Begin();
  const Bytes whole = LengthPrefixed({Nal(1, 6), Nal(1, 5)});
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const auto units = Emit({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
    EXPECT_EQ(units.size(), size == whole.size() ? 2U : size >= 11 ? 1U : 0U) << size;
  }
}

TEST_F(Mp4SampleTest, FramesHaveTheTimesOfTheirSample) {
  EmitMp4Video(SampleOf(LengthPrefixed({Nal(6), Nal(5)})), {});
  EmitMp4Audio(SampleOf({1, 2, 3}), {});
  const FrameDump dump = PopQueuedFrames();
  ASSERT_EQ(dump.video.size(), 2U);
  ASSERT_EQ(dump.audio.size(), 1U);
  for (const DumpedFrame& frame : {dump.video[0], dump.video[1], dump.audio[0]}) {
    EXPECT_EQ(frame.pts, kTimeMs * 90);
    EXPECT_EQ(frame.play, kTimeMs * 90);
    EXPECT_EQ(frame.dts, kStartMs * 90);
    EXPECT_TRUE(frame.intact);
  }
  EXPECT_TRUE(dump.video[0].is_video);
  EXPECT_FALSE(dump.audio[0].is_video);
}

TEST_F(Mp4SampleTest, RenderingOffsetAffectsOnlyThePresentationTime) {
  Mp4Sample sample = SampleOf(LengthPrefixed({Nal(5)}));
  sample.rendering_offset = 40;
  EXPECT_EQ(sample.PresentationTime(), kTimeMs + 40);
  EmitMp4Video(sample, {});
  EXPECT_EQ(PopQueuedFrames().video.at(0).pts, kTimeMs * 90);
}

TEST_F(Mp4SampleTest, PresentationTimeNeverWraps) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  const auto presented = [](std::uint64_t time, std::int64_t offset) {
    Mp4Sample sample;
    sample.time = time;
    sample.rendering_offset = offset;
    return sample.PresentationTime();
  };
  EXPECT_EQ(presented(1000, -80), 920U);
  EXPECT_EQ(presented(80, -80), 0U);
  EXPECT_EQ(presented(79, -80), 0U);
  EXPECT_EQ(presented(0, kLeast), 0U);
  EXPECT_EQ(presented(kMost, kLeast), kMost / 2);
  EXPECT_EQ(presented(kMost - 1, 1), kMost);
  EXPECT_EQ(presented(kMost, 1), kMost);
}

TEST_F(Mp4SampleTest, AudioFrameFollowsItsAdtsHeader) {
  for (const std::size_t size : {0U, 1U, 100U, 8184U}) {
    EmitMp4Audio(SampleOf(Filler(size, 3)), {4, 2});
    EXPECT_EQ(Payloads(PopQueuedFrames().audio),
              std::vector<Bytes>{WithAdtsHeader(Filler(size, 3), 4, 2)});
  }
}

TEST_F(Mp4SampleTest, AudioFrameTooLongForItsHeaderIsCompleteAndItsLengthIsTruncated) {
  EmitMp4Audio(SampleOf(Filler(8185, 3)), {4, 2});
  const auto payloads = Payloads(PopQueuedFrames().audio);
  ASSERT_EQ(payloads.size(), 1U);
  EXPECT_EQ(payloads[0], WithAdtsHeader(Filler(8185, 3), 4, 2));
  EXPECT_EQ(payloads[0].size(), 8192U);
}

TEST_F(Mp4SampleTest, ExcessChannelsChangeNoOtherField) {
  EmitMp4Audio(SampleOf({1}), {3, 0xFFFF});
  EXPECT_EQ(Payloads(PopQueuedFrames().audio), std::vector<Bytes>{WithAdtsHeader({1}, 3, 7)});
}

// The sample would not be read again after the stop.
TEST_F(Mp4SampleTest, SampleReadBeforeAStopIsQueuedWhole) {
  g_mp4Running = false;
  EXPECT_EQ(Emit(LengthPrefixed({Nal(5), Nal(1)})).size(), 2U);
}

TEST_F(Mp4SampleTest, SampleOfVeryManyUnitsDoesNotDelayAStop) {
  Bytes bytes = LengthPrefixed({Nal(5)});
  bytes.resize(bytes.size() + std::size_t{4} * 5000);  // empty units
  EXPECT_EQ(Emit(bytes).size(), 5001U);
  g_mp4Running = false;
  EXPECT_EQ(Emit(bytes).size(), 4096U);
}

TEST_F(Mp4SampleTest, MissingQueuesAreCreated) {
  ReleaseFrameQueues();
  EmitMp4Video(SampleOf(LengthPrefixed({Nal(5)})), {});
  EmitMp4Audio(SampleOf({1}), {});
  const FrameDump dump = PopQueuedFrames();
  EXPECT_EQ(dump.video.size(), 1U);
  EXPECT_EQ(dump.audio.size(), 1U);
}

TEST_F(Mp4SampleTest, StartInTheMiddleOfASampleBeginsWithAValidFirstUnit) {
  Begin();
  ClaimTooManyBytes();
  SimulatedClock clock;
  const std::future<void> emitted = std::async(std::launch::async, [] {
    EmitMp4Video(SampleOf(LengthPrefixed({Nal(1), Nal(9), Nal(5), Nal(1, 7)})), {kSps, kPps});
  });
  EXPECT_TRUE(StillPolls(clock, kPace));
  ResetFrameQueues();
  clock.Release();
  emitted.wait();
  EXPECT_EQ(
      Payloads(PopQueuedFrames().video),
      (std::vector<Bytes>{Join({ParameterSets(), AddStartCode(Nal(5))}), AddStartCode(Nal(1, 7))}));
}

// --- More frames than are delivered ---

struct Backlog {
  const char* name;
  std::uint32_t frames;  // the limit, or 0 if the other limit is tested
  std::uint64_t bytes;
};

void PrintTo(const Backlog& backlog, std::ostream* out) { *out << backlog.name; }

class Mp4BacklogTest : public Mp4SampleTest, public testing::WithParamInterface<Backlog> {
 protected:
  static void ClaimTooMuch() {
    const Backlog& most = GetParam();
    ClaimBacklog(most.frames == 0 ? 0 : most.frames + 1, most.bytes == 0 ? 0 : most.bytes + 1);
  }
  static std::future<void> Emit() {
    return std::async(std::launch::async, [] {
      EmitMp4Audio(SampleOf({1}), {});
      EmitMp4Video(SampleOf(LengthPrefixed({Nal(5)})), {});
    });
  }
  void ExpectToWait() {
    EXPECT_TRUE(StillPolls(clock_, kPace));
    const std::lock_guard lock(g_frameQueueMutex);
    EXPECT_EQ(g_audioQueue->pushed + g_videoQueue->pushed, 0U);
  }

  SimulatedClock clock_;
};

TEST_P(Mp4BacklogTest, WaitsForQueueSpace) {
  ClaimTooMuch();
  const std::future<void> emitted = Emit();
  ExpectToWait();
  ClaimNothing();
  clock_.Advance(kPace);
  emitted.wait();
  const FrameDump dump = PopQueuedFrames();
  EXPECT_EQ(dump.audio.size(), 1U);
  EXPECT_EQ(dump.video.size(), 1U);
}

TEST_P(Mp4BacklogTest, DoesNotWaitAtTheLimit) {
  ClaimBacklog(GetParam().frames, GetParam().bytes);
  EmitMp4Audio(SampleOf({1}), {});
  ClaimNothing();
  EXPECT_EQ(PopQueuedFrames().audio.size(), 1U);
}

TEST_P(Mp4BacklogTest, DoesNotDelayAStop) {
  ClaimTooMuch();
  const std::future<void> emitted = Emit();
  ExpectToWait();
  g_mp4Running = false;
  clock_.Release();
  emitted.wait();
  ClaimNothing();
}

INSTANTIATE_TEST_SUITE_P(Backlogs, Mp4BacklogTest,
                         testing::Values(Backlog{"Frames", kDefaultQueueLimit.frames, 0},
                                         Backlog{"Bytes", 0, kDefaultQueueLimit.bytes}),
                         [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace stream
