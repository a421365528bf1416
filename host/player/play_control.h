// Controls the stream being played: start, seek, position and end. Main thread only.
#ifndef HOST_PLAYER_PLAY_CONTROL_H_
#define HOST_PLAYER_PLAY_CONTROL_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "audio_output.h"
#include "clock.h"
#include "downloader.h"
#include "frame_receiver.h"
#include "play_counts.h"
#include "playback.h"
#include "title_text.h"

namespace player {

class PlayControl {
 public:
  struct Dependencies {
    host::Downloader& downloader;
    FrameReceiver& receiver;
    AudioOutput& output;
    const host::Clock& clock;
    PlayCounts& counts;
    std::function<void()> before_start;  // called before each start, including those after seeks
  };

  struct Settings {
    std::string address;
    std::optional<double> start_seconds;
    // Seconds without a call from the component after which the stream counts as ended. The
    // decoders are then drained, and frames that still arrive are shown from the next key picture
    // on.
    double idle_seconds = 10;
  };

  // All dependencies are borrowed.
  PlayControl(Settings settings, const Dependencies& dependencies);
  ~PlayControl() { End(); }

  PlayControl(const PlayControl&) = delete;
  PlayControl& operator=(const PlayControl&) = delete;

  // Returns false if the address was refused.
  bool Begin();
  void End();

  // Call it repeatedly while the stream plays.
  void Tick();

  void TogglePause();
  // Seeks by `seconds`, backwards if negative. Does nothing where seeking is not possible: before
  // the first frame, and in FLV.
  void SeekBy(double seconds);

  // Null while nothing plays.
  Playback* playback() { return playback_.get(); }
  // Whether the stream has ended and everything received has been played.
  bool HasEnded() const { return ended_; }

  TitleFacts Facts() const;

 private:
  bool StartDownload();
  void SeekTo(double seconds);
  void StopDownload();
  bool CanSeek() const;
  double IdleLimitMs() const;
  std::uint64_t FramesSoFar() const;
  bool IsSilent() const;
  double Now() const { return dependencies_.clock.NowMs() / 1000; }
  std::optional<double> FromOrigin(std::optional<double> stream_seconds) const;

  Settings settings_;  // start_seconds is cleared once it was used
  const Dependencies dependencies_;
  std::unique_ptr<Playback> playback_;
  double began_ms_ = 0;
  double position_ = 0;  // the last known position
  bool paused_ = false;
  bool started_before_ = false;
  bool seeked_ = false;
  std::uint64_t frames_before_ = 0;  // frames received before the last start
  bool ended_ = false;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAY_CONTROL_H_
