// RunId: identifies one run of something that is started again and again: the tasks of a pipeline,
// the frame queues, the FLV stream, the MP4 restart file. Work that may outlast its run keeps the
// id and checks it, so that what an older start left behind does nothing to the current one.
#ifndef COMMON_RUN_ID_H_
#define COMMON_RUN_ID_H_

#include <atomic>
#include <cstdint>

namespace stream {

// Compare only ids of the same RunCounter.
enum class RunId : std::uint64_t {};

// Issues the ids of one such thing. Safe from any thread.
class RunCounter {
 public:
  // Ends the current run and begins the next one. Returns the id of the new run.
  RunId Next() { return RunId{++current_}; }

  RunId Current() const { return RunId{current_.load()}; }
  bool IsCurrent(RunId run) const { return run == Current(); }

 private:
  std::atomic<std::uint64_t> current_{0};
};

}  // namespace stream

#endif  // COMMON_RUN_ID_H_
