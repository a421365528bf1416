// Counts, numbers and texts of a run. Plain values without locks.
#ifndef HOST_CONSOLE_TOTALS_H_
#define HOST_CONSOLE_TOTALS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "stream_player.h"

namespace host {

inline constexpr double kTicksPerSecond = 90'000;

enum class FrameKind { kVideo, kAudio };

// "video" or "audio".
const char* NameOf(FrameKind kind);

struct KindTotals {
  std::uint64_t frames = 0;
  std::uint64_t bytes = 0;
  // The smallest and the largest PTS, in 90 kHz ticks: frames are delivered in decode order.
  std::optional<std::uint64_t> first_pts;
  std::optional<std::uint64_t> last_pts;
  std::uint64_t last_play_time = 0;  // 90 kHz

  void Add(const MediaFrame& frame);
  void Add(const KindTotals& other);

  // In seconds; nullopt before the first frame.
  std::optional<double> FirstSeconds() const;
  std::optional<double> LastSeconds() const;
  std::optional<double> SpanSeconds() const;
};

struct PlayTotals {
  KindTotals video;
  KindTotals audio;
  // The latest value of each, in seconds.
  std::optional<float> duration;
  std::optional<float> buffered_time;
  std::optional<float> audio_clock;

  std::uint64_t Frames() const { return video.frames + audio.frames; }
  std::uint64_t Bytes() const { return video.bytes + audio.bytes; }
  void Add(const PlayTotals& later);
};

struct RunRecord {
  PlayTotals totals;
  std::optional<double> first_frame_ms;  // arrival of the first frame, by the host's clock
  std::vector<std::string> messages;
  std::vector<std::string> results;
};

}  // namespace host

#endif  // HOST_CONSOLE_TOTALS_H_
