#include "decode_times.h"

#include <array>
#include <cstddef>

namespace report {
namespace {

constexpr std::uint64_t kMaxReorderTicks = 900'000;  // ten seconds

using TimeField = std::array<std::uint8_t, 5>;

// The 33 bits of a timestamp in a PES header (ISO/IEC 13818-1, 2.4.3.7).
std::uint64_t TimeIn(const TimeField& field) {
  const auto bits = [&field](std::size_t at, int dropped, std::uint64_t mask, int shift) {
    return (std::uint64_t{field.at(at)} >> dropped & mask) << shift;
  };
  return bits(0, 1, 7, 30) | bits(1, 0, 0xFF, 22) | bits(2, 1, 0x7F, 15) | bits(3, 0, 0xFF, 7) |
         bits(4, 1, 0x7F, 0);
}

// The five bytes after a PTS: `stuffing` stuffing bytes, then the payload.
TimeField BytesAfterPts(const MediaFrame& frame, std::size_t stuffing) {
  TimeField field{};
  const auto size =
      static_cast<std::size_t>(frame.data == nullptr || frame.size < 0 ? 0 : frame.size);
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (i < stuffing) {
      field.at(i) = 0xFF;
    } else if (i - stuffing < size) {
      field.at(i) = frame.data[i - stuffing];
    }
  }
  return field;
}

bool IsReadFromPayload(const MediaFrame& frame) {
  for (std::size_t stuffing = 0; stuffing <= TimeField().size(); ++stuffing) {
    if (frame.dts == TimeIn(BytesAfterPts(frame, stuffing))) return true;
  }
  return false;
}

bool IsPlausible(const MediaFrame& frame) {
  return frame.dts <= frame.pts && frame.pts - frame.dts <= kMaxReorderTicks;
}

}  // namespace

std::uint64_t DecodeTimes::DecodeTimeOf(const MediaFrame& frame) {
  if (frame.dts == frame.pts) return frame.pts;
  if (!IsPlausible(frame) || IsReadFromPayload(frame)) return frame.pts;
  if (HasValidDts() && last_) {
    const bool is_stuck = frame.pts > last_->pts && frame.dts <= last_->dts;
    frames_without_progress_ = is_stuck ? frames_without_progress_ + 1 : 0;
  }
  last_ = Times{frame.pts, frame.dts};
  return frame.dts;
}

}  // namespace report
