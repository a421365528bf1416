// The stream that is played: begins it, moves in it, tells how far it is, and ends it. All on the
// main thread.
#ifndef HOST_PLAYER_PLAY_CONTROL_H_
#define HOST_PLAYER_PLAY_CONTROL_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "clock.h"
#include "downloader.h"
#include "frame_receiver.h"
#include "play_counts.h"
#include "playback.h"
#include "sound_output.h"
#include "title_text.h"

namespace player {

class PlayControl {
 public:
  struct Dependencies {
    host::Downloader& downloader;
    FrameReceiver& receiver;
    SoundOutput& output;
    const host::Clock& clock;
    PlayCounts& counts;
    std::function<void()> before_start;  // called before each start, the first and those of seeks
  };

  struct Settings {
    std::string address;
    std::optional<double> start_seconds;
    // Of silence, after which the stream counts as ended. The decoders are emptied then, and what
    // comes all the same is seen from its next key picture on.
    double idle_seconds = 10;
  };

  // All dependencies are borrowed.
  PlayControl(Settings settings, const Dependencies& dependencies);
  ~PlayControl() { End(); }

  PlayControl(const PlayControl&) = delete;
  PlayControl& operator=(const PlayControl&) = delete;

  // False when the address is refused.
  bool Begin();
  void End();

  // To be called again and again while it plays.
  void Tick();

  void TogglePause();
  // So many seconds on or, when negative, back. Nothing happens where a stream cannot be moved in:
  // before its first frame, and in FLV.
  void Move(double seconds);

  // Null when nothing plays.
  Playback* playback() { return playback_.get(); }
  // Whether nothing comes any more and all that came was played.
  bool HasEnded() const { return ended_; }

  TitleFacts Facts() const;

 private:
  bool StartDownload();
  void SeekTo(double seconds);
  void StopDownload();
  bool CanMove() const;
  double PatienceMs() const;
  std::uint64_t FramesSoFar() const;
  bool NothingComes() const;
  double Now() const { return dependencies_.clock.NowMs() / 1000; }
  std::optional<double> FromOrigin(std::optional<double> stream_seconds) const;

  Settings settings_;  // the start position goes once it was taken
  const Dependencies dependencies_;
  std::unique_ptr<Playback> playback_;
  double began_ms_ = 0;
  double position_ = 0;  // the last that was known
  bool paused_ = false;
  bool started_before_ = false;
  bool has_moved_ = false;
  std::uint64_t frames_before_ = 0;  // that came before the last start
  bool ended_ = false;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAY_CONTROL_H_
