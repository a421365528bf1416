// Records the steps from one frame of a kind to the next by their decode times: where these do not
// advance as they should, and which frames arrive late.
//
//   gap        the decode time advances by more than half a second, and by more than three times
//              the median of the previous steps
//   jump back  it goes back by more than ten milliseconds
//
// A plain value without a lock.
#ifndef HOST_REPORT_STEP_WATCH_H_
#define HOST_REPORT_STEP_WATCH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "points.h"
#include "stream_player.h"

namespace report {

inline constexpr double kGapSeconds = 0.5;
inline constexpr double kGapTimesStep = 3;
inline constexpr double kBackSeconds = 0.01;
inline constexpr std::size_t kMaxJumpsListed = 500;  // of each kind of frame

// A step at which the timestamps do not advance as they should.
struct Jump {
  std::uint64_t index;  // of the frame after the jump, from 0
  double ms;            // when that frame arrived
  std::uint64_t from;   // decode times, 90 kHz
  std::uint64_t to;

  double Seconds() const { return SecondsBetween(from, to); }
};

// All jumps of one sort. Only the first are listed.
struct Jumps {
  std::uint64_t count = 0;
  std::vector<Jump> listed;
  std::optional<Jump> widest;

  void Add(const Jump& jump);
};

// The usual step between neighbouring frames.
class UsualStep {
 public:
  void Add(double seconds);
  // The median of the latest steps; nullopt until there are enough of them.
  std::optional<double> Median() const;

 private:
  std::array<double, 31> newest_{};
  std::size_t count_ = 0;
};

class StepWatch {
 public:
  // Returns the step since the previous frame, in seconds; nullopt for the first frame.
  std::optional<double> Add(double ms, const MediaFrame& frame, std::uint64_t decode_time);

  // How far, in seconds, a player that starts with the first frame can play with the frames
  // received so far. Jumps of the timestamps do not count.
  double PlayedSeconds() const { return played_seconds_; }

  std::uint64_t same_time = 0;          // frames with the decode time of the previous frame
  std::uint64_t without_play_time = 0;  // playTime is 0 although the stream has advanced
  // The largest PTS since the last jump back.
  std::uint64_t reached_pts = 0;

  // The longest time, in seconds, that a player starting with the first frame would have waited for
  // a frame; 0 if every frame arrived in time. Jumps of the timestamps cause no wait.
  double latest_seconds = 0;
  double latest_at_ms = 0;
  std::uint64_t late_frames = 0;  // late by more than a tenth of a second

  Jumps gaps;
  Jumps backs;

 private:
  void AddFirst(double ms, const MediaFrame& frame, std::uint64_t decode_time);
  double AddNext(double ms, const MediaFrame& frame, std::uint64_t decode_time);
  void JudgeStep(double step, double ms, std::uint64_t decode_time);
  void JudgeArrival(double ms);

  UsualStep usual_step_;
  std::uint64_t frames_ = 0;
  double first_ms_ = 0;
  double last_ms_ = 0;
  std::uint64_t first_decode_time_ = 0;
  std::uint64_t last_decode_time_ = 0;
  double played_seconds_ = 0;
};

}  // namespace report

#endif  // HOST_REPORT_STEP_WATCH_H_
