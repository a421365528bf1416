// Truncated streams: wherever a stream is cut, its frames are the first frames of the whole stream
// and contain only its bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Join;

bool SameFrame(const DumpedFrame& a, const DumpedFrame& b) {
  return a.payload == b.payload && a.pts == b.pts && a.dts == b.dts && a.play == b.play;
}

void ExpectFirstOf(const std::vector<DumpedFrame>& some, const std::vector<DumpedFrame>& all) {
  ASSERT_LE(some.size(), all.size());
  EXPECT_TRUE(std::equal(some.begin(), some.end(), all.begin(), SameFrame));
}

void ExpectPrefixes(const Bytes& stream) {
  const FrameDump whole = ParseFlv(stream).frames;
  FrameDump before;
  for (std::size_t size = 0; size <= stream.size(); ++size) {
    SCOPED_TRACE("cut after " + std::to_string(size));
    Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
    cut.shrink_to_fit();  // so that a sanitizer detects a read after the end
    const FrameDump dump = ParseFlv(cut).frames;
    ExpectFirstOf(dump.video, whole.video);
    ExpectFirstOf(dump.audio, whole.audio);
    // More bytes never yield fewer frames.
    EXPECT_GE(dump.video.size(), before.video.size());
    EXPECT_GE(dump.audio.size(), before.audio.size());
    before = dump;
  }
  EXPECT_EQ(before.video.size(), whole.video.size());
  EXPECT_EQ(before.audio.size(), whole.audio.size());
}

TEST(FlvTruncationTest, CutAtEveryByteOfTheFirstTags) {
  const Bytes stream = flv_test::MakeStream(2, 30);
  const FrameDump whole = ParseFlv(stream).frames;
  ASSERT_EQ(whole.video.size(), 4U);
  ASSERT_EQ(whole.audio.size(), 2U);
  ExpectPrefixes(stream);
}

TEST(FlvTruncationTest, CutAtEveryByteOfATagWithSeveralNalUnits) {
  ExpectPrefixes(Join({flv_test::Header(), flv_test::NalTag(40, {{6, 1}, {0x65, 2, 3}, {0x65}}),
                       flv_test::LastBackPointer()}));
}

TEST(FlvTruncationTest, CutAtEveryByteOfOtherAudio) {
  const Bytes stream =
      Join({flv_test::Header(), flv_test::Tag(flv_test::kAudio, 5, Bytes(40, 0x2F)),
            flv_test::Tag(flv_test::kAudio, 9, Bytes(40, 0x3F))});
  ExpectPrefixes(stream);
}

// The extra bytes of a header are skipped, even if they look like a tag. But if they are truncated,
// nothing is skipped.
TEST(FlvTruncationTest, TruncatedLongHeaderIsReadAsTheTagsItResembles) {
  const Bytes extra = Join({flv_test::NalTag(1, {{0x65, 1}}), {0, 0, 0}});
  const Bytes stream = Join({flv_test::Header(extra), flv_test::NalTag(40, {{0x65, 2}})});
  const FrameDump whole = ParseFlv(stream).frames;
  ASSERT_EQ(whole.video.size(), 1U);
  EXPECT_EQ(whole.video.front().payload, (Bytes{0, 0, 0, 1, 0x65, 2}));
  const Bytes cut(stream.begin(), stream.begin() + flv_test::kHeaderSize +
                                      static_cast<std::ptrdiff_t>(extra.size()) - 1);
  const FrameDump dump = ParseFlv(cut).frames;
  ASSERT_EQ(dump.video.size(), 1U);
  EXPECT_EQ(dump.video.front().payload, (Bytes{0, 0, 0, 1, 0x65, 1}));
}

TEST(FlvTruncationTest, FramesNeverHoldMoreBytesThanTheStream) {
  std::mt19937 random(5);  // NOLINT: the same run every time
  for (int run = 0; run < 500; ++run) {
    Bytes stream = flv_test::MakeStream(6, 40);
    for (int change = 0; change < 4; ++change) {
      stream[9 + random() % (stream.size() - 9)] = static_cast<std::uint8_t>(random());
    }
    stream.resize(random() % (stream.size() + 1));
    std::size_t bytes = 0;
    const FrameDump dump = ParseFlv(stream).frames;
    for (const DumpedFrame& frame : dump.video) bytes += frame.payload.size() - 4;
    for (const DumpedFrame& frame : dump.audio) bytes += frame.payload.size() - 7;
    EXPECT_LE(bytes, stream.size());
  }
}

TEST(FlvTruncationTest, FramesOfADamagedStreamHoldItsBytesInOrder) {
  std::mt19937 random(6);  // NOLINT: the same run every time
  for (int run = 0; run < 500; ++run) {
    Bytes stream = flv_test::MakeStream(6, 40);
    stream[9 + random() % (stream.size() - 9)] = static_cast<std::uint8_t>(random());
    auto from = stream.begin();
    for (const DumpedFrame& frame : ParseFlv(stream).frames.video) {
      const auto found =
          std::search(from, stream.end(), frame.payload.begin() + 4, frame.payload.end());
      ASSERT_TRUE(found != stream.end() || frame.payload.size() == 4) << "run " << run;
      from = found + static_cast<std::ptrdiff_t>(frame.payload.size() - 4);
    }
  }
}

// A PreviousTagSize field separates two tags. Its bytes occur nowhere else in the stream.
TEST(FlvTruncationTest, NoFrameOfADamagedStreamExtendsIntoTheNextTag) {
  constexpr std::uint8_t kBetween[] = {0x70, 0x71, 0x72, 0x73};
  std::mt19937 random(7);  // NOLINT: the same run every time
  for (int run = 0; run < 2000; ++run) {
    Bytes stream = flv_test::MakeStream(6, 40);
    // Damages only bodies, because the size in a tag header determines where the tag ends.
    std::size_t at = flv_test::kHeaderSize;
    for (int tag = static_cast<int>(random() % 14); tag > 0; --tag) {
      at += flv_test::kBackPointerSize + flv_test::kTagHeaderSize + stream[at + 7];
    }
    const std::size_t body = at + flv_test::kBackPointerSize + flv_test::kTagHeaderSize;
    if (body >= stream.size()) continue;
    const std::size_t size = stream[at + 7];
    for (int change = 0; change < 3; ++change) {
      stream[body + random() % size] = static_cast<std::uint8_t>(random() % 64);
    }
    const FrameDump dump = ParseFlv(stream).frames;
    for (const auto* frames : {&dump.video, &dump.audio}) {
      for (const DumpedFrame& frame : *frames) {
        const Bytes& payload = frame.payload;
        EXPECT_EQ(
            std::search(payload.begin(), payload.end(), std::begin(kBetween), std::end(kBetween)),
            payload.end())
            << "run " << run;
      }
    }
  }
}

}  // namespace
}  // namespace stream
