// Plays the address once and as often again as asked: the order of Begin, End and SetStart, and the
// wait for the end of each run.
//
// All on the calling thread; everything given is borrowed.
#ifndef HOST_CONSOLE_PLAY_RUN_H_
#define HOST_CONSOLE_PLAY_RUN_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "clock.h"
#include "downloader.h"
#include "end_rule.h"
#include "host_player.h"
#include "options.h"
#include "screen.h"

namespace host {

struct RunReport {
  RunRecord record;
  EndReason reason = EndReason::kIdle;
  double elapsed_ms = 0;
  std::optional<double> time_to_first_frame_ms;  // from the last BeginDownload of the run
  std::vector<double> stop_ms;                   // how long each EndDownload took
};

class PlayRunner {
 public:
  struct Surroundings {
    Downloader& downloader;
    HostPlayer& player;
    Clock& clock;
    Screen& screen;
    std::function<bool()> interrupted;
  };

  PlayRunner(const Options& options, const Surroundings& around);

  // Plays all runs; an interruption leaves out the rest of them.
  std::vector<RunReport> PlayAll();

 private:
  RunReport PlayOnce();
  // Plays until a frame came, and stops: a position can only be given to a pipeline that exists.
  std::optional<EndReason> PlayToFirstFrame();
  EndReason PlayToEnd();

  // Whether the frames or the line that the run ends with have been recorded.
  bool HasExpected() const;

  bool Begin();
  void End();
  void SetStart();
  // Waits until `met` holds (nothing is returned) or the run has to end.
  std::optional<EndReason> WaitUntil(const std::function<bool()>& met);

  const Options options_;
  const EndRule rule_;
  const Surroundings around_;
  bool has_pipeline_ = false;
  std::size_t run_ = 0;
  double run_began_ms_ = 0;
  double download_began_ms_ = 0;
  std::optional<double> expected_since_ms_;
  std::vector<double> stop_ms_;  // of the run
};

}  // namespace host

#endif  // HOST_CONSOLE_PLAY_RUN_H_
