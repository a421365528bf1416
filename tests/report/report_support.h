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

// A frame of 100 bytes whose times are one.
inline MediaFrame FrameAt(std::uint64_t ticks) {
  MediaFrame frame{};
  frame.pts = frame.dts = frame.playTime = ticks;
  frame.size = static_cast<std::int32_t>(kPayload.size());
  frame.data = kPayload.data();
  return frame;
}

// Time stamp of the n-th frame of a stream without fault, which begins at one second.
inline std::uint64_t TicksOf(int n) {
  return 90'000 + static_cast<std::uint64_t>(n) * kTicksOfFrame;
}

// Frames first to last - 1 of such a stream, each as fast as it is played.
inline void AddSteadyVideo(ReportRecord& record, int first, int last) {
  for (int n = first; n < last; ++n) record.AddVideo(n * kMsOfFrame, FrameAt(TicksOf(n)));
}

inline void AddSteadyAudio(ReportRecord& record, int first, int last) {
  for (int n = first; n < last; ++n) record.AddAudio(n * kMsOfFrame, FrameAt(TicksOf(n)));
}

// What is odd about a stream, the heading of each finding.
inline std::vector<std::string> TitlesOf(const ReportRecord& record) {
  std::vector<std::string> titles;
  for (const Finding& finding : FindingsOf(record)) titles.push_back(finding.title);
  return titles;
}

}  // namespace report

#endif  // TESTS_REPORT_REPORT_SUPPORT_H_
