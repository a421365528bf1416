// Plays the address once and repeats it as often as requested: calls Begin, End and SetStart in
// order and waits for the end of each run.
//
// Runs entirely on the calling thread. All references are borrowed.
#ifndef HOST_CONSOLE_PLAY_RUN_H_
#define HOST_CONSOLE_PLAY_RUN_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "clock.h"
#include "downloader.h"
#include "end_rule.h"
#include "options.h"
#include "screen.h"
#include "stats_player.h"

namespace host {

struct RunReport {
  RunRecord record;
  EndReason reason = EndReason::kIdle;
  double elapsed_ms = 0;
  std::optional<double> time_to_first_frame_ms;  // since the last BeginDownload of the run
  std::vector<double> stop_ms;                   // how long each EndDownload took
};

class PlayRunner {
 public:
  struct Dependencies {
    Downloader& downloader;
    StatsPlayer& player;
    Clock& clock;
    Screen& screen;
    std::function<bool()> interrupted;
  };

  PlayRunner(const Options& options, const Dependencies& dependencies);

  // Plays all runs. An interruption cancels the remaining runs.
  std::vector<RunReport> PlayAll();

 private:
  RunReport PlayOnce();
  // Plays until the first frame is received, then stops: only an existing pipeline accepts a
  // position.
  std::optional<EndReason> PlayToFirstFrame();
  EndReason PlayToEnd();

  // Whether the expected frames or the expected line have been recorded.
  bool HasExpected() const;

  bool Begin();
  void End();
  void SetStart();
  // Waits until `met` returns true (returns nullopt) or the run has to end (returns the reason).
  std::optional<EndReason> WaitUntil(const std::function<bool()>& met);

  const Options options_;
  const EndRule rule_;
  const Dependencies dependencies_;
  bool has_pipeline_ = false;
  std::size_t run_ = 0;
  double run_began_ms_ = 0;
  double download_began_ms_ = 0;
  std::optional<double> expected_since_ms_;
  std::vector<double> stop_ms_;  // of the current run
};

}  // namespace host

#endif  // HOST_CONSOLE_PLAY_RUN_H_
