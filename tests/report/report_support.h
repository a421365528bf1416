// What the tests of the report share.
#ifndef TESTS_REPORT_REPORT_SUPPORT_H_
#define TESTS_REPORT_REPORT_SUPPORT_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/report/findings.h"
#include "host/report/report_record.h"

namespace report {

inline constexpr std::uint64_t kTicksOfFrame = 3600;  // at 25 frames a second
inline constexpr double kMsOfFrame = 40;

inline constexpr std::array<std::uint8_t, 100> kPayload{};

// A frame of 100 bytes whose PTS, DTS and play time are all `ticks`.
inline MediaFrame FrameAt(std::uint64_t ticks) {
  MediaFrame frame{};
  frame.pts = frame.dts = frame.playTime = ticks;
  frame.size = static_cast<std::int32_t>(kPayload.size());
  frame.data = kPayload.data();
  return frame;
}

// The timestamp of the n-th frame of a stream without faults, which begins at one second.
inline std::uint64_t TicksOf(int n) {
  return 90'000 + static_cast<std::uint64_t>(n) * kTicksOfFrame;
}

// Adds the frames first to last - 1 of such a stream, each at the time at which it is played.
inline void AddSteadyVideo(ReportRecord& record, int first, int last) {
  for (int n = first; n < last; ++n) record.AddVideo(n * kMsOfFrame, FrameAt(TicksOf(n)));
}

inline void AddSteadyAudio(ReportRecord& record, int first, int last) {
  for (int n = first; n < last; ++n) record.AddAudio(n * kMsOfFrame, FrameAt(TicksOf(n)));
}

// The title of each finding about a stream.
inline std::vector<std::string> TitlesOf(const ReportRecord& record) {
  std::vector<std::string> titles;
  for (const Finding& finding : FindingsOf(record)) titles.push_back(finding.title);
  return titles;
}

}  // namespace report

#endif  // TESTS_REPORT_REPORT_SUPPORT_H_
