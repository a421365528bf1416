// The host's player: counts, prints and dumps what the library hands over, in the call and without
// keeping anything of the frame.
//
// The library's threads call it concurrently. Video and audio are counted behind locks of their
// own, texts behind a third; none is held while a file or the screen is written. What the runner
// reads in its loop are atomics.
//
// A run is opened before anything is started and closed after EndDownload has returned, when no
// thread of the library calls any more. The screen, the dump and the report are borrowed; the last
// two may be null.
#ifndef HOST_CONSOLE_HOST_PLAYER_H_
#define HOST_CONSOLE_HOST_PLAYER_H_

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "clock.h"
#include "dump.h"
#include "report.h"
#include "screen.h"
#include "stream_player.h"
#include "totals.h"

namespace host {

class HostPlayer final : public CStreamPlayerImp {
 public:
  HostPlayer(const Clock& clock, Screen& screen, Dump* dump, Report* report = nullptr)
      : clock_(clock), screen_(screen), dump_(dump), report_(report) {}

  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

  // Forgets the run before.
  void OpenRun();

  // Whether frames and numbers are counted, dumped and reported. What comes before the seek of
  // --start is not, only its texts are kept for the summary and the report. Changed while nothing
  // is being downloaded.
  void SetRecording(bool recording) { recording_ = recording; }

  // Watches for a message or result that begins so. Called before anything is started.
  void ExpectLine(std::string start) { expected_line_ = std::move(start); }

  // What was recorded since OpenRun.
  RunRecord Record() const;
  PlayTotals Totals() const;

  // Frames since OpenRun, recorded or not.
  std::uint64_t FramesSeen() const { return frames_seen_.load(); }
  // The same without those that were not recorded.
  std::uint64_t FramesRecorded() const { return frames_recorded_.load(); }
  // Whether the expected line was received while recording, since OpenRun.
  bool HasExpectedLine() const { return has_expected_line_.load(); }
  // When anything came last, by the clock; 0 when nothing ever came.
  double LastArrivalMs() const { return last_arrival_ms_.load(); }

 private:
  struct Kind {
    mutable std::mutex mutex;
    KindTotals totals;                     // guarded by mutex
    std::optional<double> first_frame_ms;  // guarded by mutex
  };

  double Arrival();
  // The report while it takes part, else null.
  Report* RecordingReport() const;
  void TakeFrame(FrameKind kind, Kind& state, const MediaFrame& frame);
  void TakeNumber(const char* event, std::optional<float> PlayTotals::*newest, float seconds);
  void TakeText(const char* event, std::vector<std::string> RunRecord::*texts, std::string&& line);

  const Clock& clock_;
  Screen& screen_;
  Dump* const dump_;
  Report* const report_;
  std::atomic<bool> recording_{true};
  std::atomic<std::uint64_t> frames_seen_{0};
  std::atomic<std::uint64_t> frames_recorded_{0};
  std::atomic<bool> has_expected_line_{false};
  std::atomic<double> last_arrival_ms_{0};
  std::string expected_line_;  // empty: none
  Kind video_;
  Kind audio_;
  mutable std::mutex mutex_;
  RunRecord events_;  // numbers and texts; guarded by mutex_
};

}  // namespace host

#endif  // HOST_CONSOLE_HOST_PLAYER_H_
