// The host's player. It counts, prints and dumps everything inside the call and keeps no frame.
//
// The library's threads call it concurrently. Video counts, audio counts and texts each have their
// own lock. No lock is held while a file or the screen is written. Values that the runner polls are
// atomics.
//
// Call OpenRun before a download starts, and Record after EndDownload has returned: from then on no
// thread of the library calls the player. The screen, the dump and the report are borrowed; the
// dump and the report may be null.
#ifndef HOST_CONSOLE_STATS_PLAYER_H_
#define HOST_CONSOLE_STATS_PLAYER_H_

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

class StatsPlayer final : public CStreamPlayerImp {
 public:
  StatsPlayer(const Clock& clock, Screen& screen, Dump* dump, Report* report = nullptr)
      : clock_(clock), screen_(screen), dump_(dump), report_(report) {}

  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

  // Clears everything recorded in the previous run.
  void OpenRun();

  // Whether frames and numbers are counted, dumped and reported. Off while --start plays up to the
  // seek; then only status lines and results are kept, for the summary and the report. Change it
  // only while nothing is being downloaded.
  void SetRecording(bool recording) { recording_ = recording; }

  // Watches for a message or result that begins with `start`. Call it before the first start.
  void ExpectLine(std::string start) { expected_line_ = std::move(start); }

  // Everything recorded since OpenRun.
  RunRecord Record() const;
  PlayTotals Totals() const;

  // Frames since OpenRun, recorded or not.
  std::uint64_t FramesSeen() const { return frames_seen_.load(); }
  // Frames since OpenRun that were recorded.
  std::uint64_t FramesRecorded() const { return frames_recorded_.load(); }
  // Whether the expected line was received while recording, since OpenRun.
  bool HasExpectedLine() const { return has_expected_line_.load(); }
  // The time of the last call from the library, by the host's clock; 0 before the first call.
  double LastArrivalMs() const { return last_arrival_ms_.load(); }

 private:
  struct Kind {
    mutable std::mutex mutex;
    KindTotals totals;                     // guarded by mutex
    std::optional<double> first_frame_ms;  // guarded by mutex
  };

  double RecordArrival();
  // The report, or null while recording is off.
  Report* RecordingReport() const;
  void RecordFrame(FrameKind kind, Kind& state, const MediaFrame& frame);
  void RecordNumber(const char* event, std::optional<float> PlayTotals::*newest, float seconds);
  void RecordLine(const char* event, std::vector<std::string> RunRecord::*texts,
                  std::string&& line);

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

#endif  // HOST_CONSOLE_STATS_PLAYER_H_
