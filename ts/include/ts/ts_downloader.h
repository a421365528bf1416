// The TS pipeline: plays a plain MPEG transport stream over HTTP, HTTPS or from a local file while
// it downloads. Four tasks run on its pool: download, parse, video delivery, audio delivery.
//
// The facade creates one for the first ".ts" address and forwards its own operations to it. Most of
// the state is process-wide (ts_state.h): one TS pipeline plays at a time. The player is borrowed
// until EndDownload has returned.
//
// Threads: call the members from one thread at a time, never from inside a call to the player.
#ifndef TS_TS_DOWNLOADER_H_
#define TS_TS_DOWNLOADER_H_

#include <atomic>
#include <string>

#include "common/pipeline.h"
#include "common/player_port.h"
#include "common/thread_pool.h"

class CTsDownloader : private stream::CThreadPool {
 public:
  explicit CTsDownloader(CStreamPlayerImp* player);
  ~CTsDownloader();

  // Starts to play `url`, which is already cleaned. If it is the address that played last, its
  // download resumes where it stopped; another address starts at its beginning. Always returns
  // true. A second start without a stop adds four tasks to those that run.
  bool BeginDownload(const std::string& url);

  // Stops, joins the tasks and drops the queued frames. Returns false if nothing was running. The
  // start position becomes 0 in any case.
  bool EndDownload();

  // Sets the position before which frames are dropped, and makes the next start fetch the stream
  // from its beginning. Restarts nothing. Always returns true.
  bool SetStartPostion(float seconds);

 private:
  void UseUrl(const std::string& url);
  bool IsWanted(const stream::FrameRecord& frame) const;
  void RunDownload(const std::string& url);

  const stream::PlayerPort player_;
  std::atomic<float> startSeconds{0};
  std::atomic<bool> downloading{true};  // Kept for compatibility: nothing reads it
  stream::Pipeline pipeline_;           // last: no task may outlive the other members
};

#endif  // TS_TS_DOWNLOADER_H_
