// Records the calls that a host's player receives, for the report. Call each method from the player
// operation of the same name; it reads the time of the call itself.
//
// Safe to call from any thread. A call takes one short lock, copies numbers or a text, and does not
// keep the payload of a frame. Memory is bounded however long a stream runs: neighbouring frames
// are joined when there are too many, and texts in the middle are dropped. Counts and findings stay
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
  // `now_ms` is the host's clock in milliseconds, which never goes back. It is called from any
  // thread. `host_paces`: see ReportRecord.
  explicit ReportRecorder(std::function<double()> now_ms, bool host_paces = false);

  void Video(const MediaFrame& frame);
  void Audio(const MediaFrame& frame);
  void AudioClock(float seconds);
  void Duration(float seconds);
  void BufferedTime(float seconds);
  void Message(const std::string& line);
  void PlayResult(const std::string& line);

  // Clears the record and restarts the time at 0, for the next run.
  void Restart();

  // A copy of the record so far.
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
