// Takes down what a host's player is called with, for the report: each method notes the time of the
// call by itself and belongs into the player's operation of that name.
//
// Safe from any thread. A call takes one short lock, copies numbers or a text, and keeps nothing of
// a frame but its numbers. However long a stream runs, the memory is bounded: neighbouring frames
// are joined when there are too many, texts in the middle are dropped; counts and findings stay
// exact.
#ifndef HOST_REPORT_REPORT_RECORDER_H_
#define HOST_REPORT_REPORT_RECORDER_H_

#include <functional>
#include <mutex>
#include <string>

#include "report_record.h"
#include "stream_player.h"

namespace report {

class ReportRecorder {
 public:
  // `now_ms` is the host's clock, which never runs backwards, in milliseconds; it is called from
  // any thread. `host_paces`: see ReportRecord.
  explicit ReportRecorder(std::function<double()> now_ms, bool host_paces = false);

  void Video(const MediaFrame& frame);
  void Audio(const MediaFrame& frame);
  void AudioClock(float seconds);
  void Duration(float seconds);
  void BufferedTime(float seconds);
  void Message(const std::string& line);
  void PlayResult(const std::string& line);

  // Forgets everything and counts time from now on, as a recorder just made: for the next run.
  void Restart();

  // A copy of everything so far.
  ReportRecord Snapshot() const;

 private:
  double NowMs() const { return now_ms_() - start_ms_; }  // with mutex_ held

  const std::function<double()> now_ms_;
  mutable std::mutex mutex_;
  double start_ms_;      // guarded by mutex_
  ReportRecord record_;  // guarded by mutex_
};

}  // namespace report

#endif  // HOST_REPORT_REPORT_RECORDER_H_
