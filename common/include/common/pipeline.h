// Pipeline: what the pipelines of all formats share: the run flag and the worker pool, the two
// delivery tasks, the order of a stop, and the lines that a start reports. A format adds a download
// task and a parse task:
//
//   pipeline.Start();
//   ResetFrameQueues();
//   if (!pipeline.ReportIfSameAddress(url, last_url)) ...  // begin at the start of another stream
//   pipeline.AddTask(...);                           // downloads
//   pipeline.AddTask(...);                           // parses, pushes frames
//   pipeline.AddDeliveryTasks();
//
// Each task ends soon after the run flag was cleared. ReportOutcome reports how the start went;
// each format decides when.
//
// Ownership: player, flag and pool are borrowed. A class that owns a Pipeline declares it as its
// last member, so that no task outlives the members that it uses.
//
// Threads: call the members from one thread at a time and not from a task of the same pipeline.
#ifndef COMMON_PIPELINE_H_
#define COMMON_PIPELINE_H_

#include <atomic>
#include <functional>
#include <string>

#include "common/frame_delivery.h"
#include "common/player_port.h"
#include "common/task_gate.h"
#include "common/thread_pool.h"

namespace stream {

// Texts that differ between the formats.
struct PipelineTexts {
  std::string console;  // begins the console lines: "ts", "flv", ...
  std::string status;   // in the player's status lines: "TS", "FLV", ...
  // Whether the player also gets the lines that report the end of a delivery task.
  bool sends_delivery_ends = false;
};

class Pipeline {
 public:
  // The tasks of the pipeline check `running`.
  Pipeline(PipelineTexts texts, const PlayerPort& player, std::atomic<bool>& running,
           CThreadPool& pool);
  ~Pipeline();  // joins the tasks that run; call Stop first
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Sets the run flag and starts the workers, unless they run.
  void Start();

  // Adds a task, which is dropped if the pipeline is stopped before a worker has started it.
  void AddTask(CThreadPool::Task task);

  // Adds the tasks that pass video frames and audio frames to the player.
  void AddDeliveryTasks(const FrameFilters& wanted = {});

  // Reports "PLAY FLV RE:" and the address if the last start had the same one. Returns whether it
  // had.
  bool ReportIfSameAddress(const std::string& url, const std::string& last_url) const;

  // Calls `accept`, which stores a new start position, and reports the position together with the
  // processor time that the call took.
  void MoveStart(float seconds, const std::function<void()>& accept) const;

  // Reports a start position without a time.
  void ReportStart(float seconds) const;

  // Stops the pipeline: clears the run flag, calls `wake`, which notifies the tasks in other ways,
  // joins the tasks, and releases the frames left in the two queues. Blocks until no task runs.
  //
  // If the flag is already clear, it returns false, logs nothing and does not touch the queues. It
  // still wakes and joins the tasks: another pipeline that shares the flag may have cleared it, and
  // the host may destroy the player after the return.
  bool Stop(const std::function<void()>& wake);

 private:
  using DeliverFunction = void (*)(const DeliveryLoop&);

  void AddDeliveryTask(DeliverFunction deliver, const FrameFilter& wanted, const char* end);
  void JoinTasks(const std::function<void()>& wake);

  const PipelineTexts texts_;
  const PlayerPort player_;
  std::atomic<bool>& running_;
  CThreadPool& pool_;
  TaskGate gate_;
};

// Reports how a start went, for example for the outcome "FLV OK": the message "PLAY FLV OK:" and
// then the play result "PLAY:FLV OK:", each followed by the address.
void ReportOutcome(const PlayerPort& player, const std::string& outcome, const std::string& url);

}  // namespace stream

#endif  // COMMON_PIPELINE_H_
