// Arbitrary bytes through FlvTagParser. Nothing is read or written out of bounds. A frame contains
// only bytes of the stream after its start code or header, and each byte is in at most one frame.
// The frames do not depend on the source. -close_fd_mask=1 suppresses the parser's console lines.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "common/adts.h"
#include "common/frame_queue.h"
#include "flv/flv_stream.h"
#include "flv/flv_tag_parser.h"
#include "tests/support/flv_memory_source.h"

namespace stream {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Ends the process, which libFuzzer reports as a crash.
void Require(bool condition) {
  if (!condition) std::abort();
}

struct Frame {
  std::uint64_t time;
  std::vector<std::uint8_t> payload;

  bool operator==(const Frame&) const = default;
};

struct Frames {
  std::vector<Frame> video;
  std::vector<Frame> audio;

  bool operator==(const Frames&) const = default;
};

std::vector<Frame> PopAll(FrameNodePtr (*pop)()) {
  std::vector<Frame> frames;
  while (const FrameNodePtr node = pop()) {
    Require(node->pts == node->dts && node->pts == node->playTime && node->isVideo == 1);
    frames.push_back({node->pts, {node->data, node->data + node->size}});
  }
  return frames;
}

Frames Parse(FlvSource& source) {
  ResetFrameQueues();
  std::atomic<std::uint16_t> audio_config{0x1190};
  FlvTagParser parser(source, audio_config);
  if (parser.ReadHeader()) {
    while (parser.ReadTag()) {
    }
  }
  std::vector<Frame> video = PopAll(PopVideoFrame);
  return {std::move(video), PopAll(PopAudioFrame)};
}

// Copies the stream into a block of its own, so that a read past its end is detected.
Frames ParseFromMemory(Bytes stream) {
  const std::vector<std::uint8_t> copy(stream.begin(), stream.end());
  FlvMemorySource source(copy);
  return Parse(source);
}

// Parses the stream from the pipeline's buffer, to which it was appended in pieces of `piece_size`
// bytes.
Frames ParseFromStream(Bytes stream, std::size_t piece_size) {
  g_flvRunning = true;
  const RunId run = g_flvStream->Begin();
  for (std::size_t at = 0; at < stream.size(); at += piece_size) {
    const Bytes part = stream.subspan(at, std::min(piece_size, stream.size() - at));
    Require(g_flvStream->Stage(run, at, part.data(), static_cast<std::uint32_t>(part.size())));
  }
  g_flvStream->MarkEndOfInput(run);
  FlvStreamSource source(run);
  return Parse(source);
}

// Checks that the frames' bytes occur in the stream in this order. Returns the number of these
// bytes.
std::size_t RequireBytesOf(Bytes stream, const std::vector<Frame>& frames, Bytes prefix) {
  std::size_t total = 0;
  auto from = stream.begin();
  for (const Frame& frame : frames) {
    Require(frame.payload.size() >= prefix.size());
    const Bytes body = Bytes(frame.payload).subspan(prefix.size());
    from = std::search(from, stream.end(), body.begin(), body.end());
    Require(body.empty() || from != stream.end());
    from += static_cast<std::ptrdiff_t>(body.size());
    total += body.size();
  }
  return total;
}

void RequirePrefixes(const Frames& frames) {
  constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};
  for (const Frame& frame : frames.video) {
    Require(std::equal(kStartCode.begin(), kStartCode.end(), frame.payload.begin()));
  }
  for (const Frame& frame : frames.audio) {
    Require(frame.payload[0] == 0xFF && frame.payload[1] == 0xF1);
    const std::uint32_t length = (frame.payload[3] & 3U) << 11 |
                                 std::uint32_t{frame.payload[4]} << 3 | frame.payload[5] >> 5;
    Require(length == (frame.payload.size() & 0x1FFF));
  }
}

// Whether the file header is complete, also if it declares more than nine bytes.
bool HasWholeHeader(Bytes stream) {
  constexpr std::size_t kHeaderSize = 9;
  if (stream.size() < kHeaderSize) return false;
  std::uint32_t data_offset = 0;
  for (const std::uint8_t byte : stream.subspan(5, 4)) data_offset = data_offset << 8 | byte;
  const auto extra = static_cast<std::int32_t>(data_offset - kHeaderSize);
  return extra <= 0 || static_cast<std::uint32_t>(extra) <= stream.size() - kHeaderSize;
}

// The frames of a truncated stream must be the first frames of the whole stream.
void RequireFirstOf(const std::vector<Frame>& some, const std::vector<Frame>& all) {
  Require(some.size() <= all.size() && std::equal(some.begin(), some.end(), all.begin()));
}

void CheckStream(Bytes stream) {
  constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};
  constexpr std::size_t kPieceSizes[] = {7, 4096};
  const Frames frames = ParseFromMemory(stream);
  const std::size_t bytes = RequireBytesOf(stream, frames.video, kStartCode) +
                            RequireBytesOf(stream, frames.audio, AdtsHeader{});
  Require(bytes <= stream.size());
  RequirePrefixes(frames);
  for (const std::size_t piece_size : kPieceSizes)
    Require(ParseFromStream(stream, piece_size) == frames);
  const Bytes first_half = stream.first(stream.size() / 2);
  if (!HasWholeHeader(first_half)) return;
  const Frames half = ParseFromMemory(first_half);
  RequireFirstOf(half.video, frames.video);
  RequireFirstOf(half.audio, frames.audio);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes stream(data, size);
  CheckStream(stream);
  // The input as tags after a valid header, so that the fuzzer need not find a header first.
  std::vector<std::uint8_t> tags = {'F', 'L', 'V', 1, 5, 0, 0, 0, 9};
  tags.insert(tags.end(), data, data + size);
  CheckStream(tags);
  return 0;
}

}  // namespace stream
