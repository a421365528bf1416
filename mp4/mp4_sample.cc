#include "mp4/mp4_sample.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>

#include "common/frame_queue.h"
#include "common/queue_limit.h"
#include "mp4/mp4_state.h"

namespace stream {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 4> kStartCode = {0, 0, 0, 1};

enum class Kind { kFirstVideo, kVideo, kAudio };

// Queues a frame that consists of these parts, one after another. Returns false if the frame is too
// large or memory runs out, or if the first video frame must be queued before this one because
// another start has replaced the queues.
bool EmitFrame(const Mp4Sample& sample, Kind kind, std::initializer_list<Bytes> parts) {
  constexpr std::uint64_t kTicksPerMillisecond = 90;
  const bool is_video = kind != Kind::kAudio;
  std::size_t size = 0;
  for (const Bytes part : parts) size += part.size();
  if (size > std::numeric_limits<std::int32_t>::max()) return false;
  FrameRecord frame;
  if (AllocateFrameNode(frame, sample.time * kTicksPerMillisecond,
                        sample.start * kTicksPerMillisecond, static_cast<std::int32_t>(size),
                        is_video, true) != 0) {
    return false;
  }
  frame.playTime = sample.time * kTicksPerMillisecond;
  std::uint8_t* end = frame.data;
  for (const Bytes part : parts) end = std::copy(part.begin(), part.end(), end);
  const MutexLock lock(g_frameQueueMutex);
  FrameQueue* const queue = EnsureQueue(is_video);
  const bool is_late = kind == Kind::kVideo && queue != nullptr && queue->pushed == 0;
  if (!is_late && PushFrame(frame, queue) == 0) return true;
  ReleasePayload(frame);
  return false;
}

// Returns whether a stream may begin with this NAL unit (ISO/IEC 14496-10, table 7-1).
bool BeginsStream(Bytes nal_unit) {
  constexpr std::uint8_t kTypeMask = 0x1F;
  constexpr std::uint8_t kIdrSlice = 5;
  constexpr std::uint8_t kSei = 6;
  constexpr std::uint8_t kSps = 7;
  if (nal_unit.empty()) return false;
  const auto type = static_cast<std::uint8_t>(nal_unit.front() & kTypeMask);
  return type == kIdrSlice || type == kSei || type == kSps;
}

// The start code for a parameter set; empty if the set is empty.
Bytes StartCodeOf(Bytes parameter_set) { return parameter_set.empty() ? Bytes() : kStartCode; }

// A stop does not interrupt a sample, since a sample is not read a second time after the stop. Only
// a sample with more NAL units than any video frame has is interrupted.
bool MayContinue(int units) {
  constexpr int kMaxUnitsOfAFrame = 4096;
  return units < kMaxUnitsOfAFrame || g_mp4Running.load();
}

// Removes the first NAL unit and the length before it from `left`. Returns false if there is none
// or if it is incomplete.
bool SplitNalUnit(Bytes& left, Bytes& nal_unit) {
  constexpr std::size_t kLengthSize = 4;
  if (left.size() < kLengthSize) return false;
  std::size_t size = 0;
  for (const std::uint8_t byte : left.first(kLengthSize)) size = size << 8 | byte;
  left = left.subspan(kLengthSize);
  if (size > left.size()) return false;
  nal_unit = left.first(size);
  left = left.subspan(size);
  return true;
}

}  // namespace

std::uint64_t Mp4Sample::PresentationTime() const {
  const auto offset = static_cast<std::uint64_t>(rendering_offset);
  if (rendering_offset < 0) return time - std::min(time, 0 - offset);
  return time + std::min(offset, std::numeric_limits<std::uint64_t>::max() - time);
}

bool Mp4VideoHasBegun() {
  const MutexLock lock(g_frameQueueMutex);
  return g_videoQueue != nullptr && g_videoQueue->pushed > 0;
}

bool EmitMp4Video(const Mp4Sample& sample, const Mp4ParameterSets& parameter_sets) {
  bool was_first = false;
  Bytes left(sample.bytes.get(), sample.size);
  Bytes nal_unit;
  for (int units = 0; MayContinue(units) && SplitNalUnit(left, nal_unit); ++units) {
    WaitForQueueSpace(g_mp4Running, kDefaultQueueLimit);
    if (Mp4VideoHasBegun()) {  // checked for each unit: another start may happen at any time
      EmitFrame(sample, Kind::kVideo, {kStartCode, nal_unit});
    } else if (BeginsStream(nal_unit)) {
      was_first |=
          EmitFrame(sample, Kind::kFirstVideo,
                    {StartCodeOf(parameter_sets.sps), parameter_sets.sps,
                     StartCodeOf(parameter_sets.pps), parameter_sets.pps, kStartCode, nal_unit});
    }
  }
  return was_first;
}

void EmitMp4Audio(const Mp4Sample& sample, const AdtsFields& fields) {
  WaitForQueueSpace(g_mp4Running, kDefaultQueueLimit);
  const AdtsHeader header = MakeAdtsHeader(fields, sample.size);
  EmitFrame(sample, Kind::kAudio, {header, Bytes(sample.bytes.get(), sample.size)});
}

}  // namespace stream
