// The FLV pipeline: plays an FLV address over HTTP, HTTPS or from a local file while it downloads.
// Four tasks run on its pool: download, play (the parser), video delivery, audio delivery.
//
// The facade creates one for the first ".flv" address and forwards its operations to it. Most of
// the state is process-wide (flv_stream.h): one FLV pipeline plays at a time. The player is
// borrowed.
//
// Threads: call the members from one thread at a time, never from inside a call to the player.
#ifndef FLV_FLV_DOWNLOADER_H_
#define FLV_FLV_DOWNLOADER_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "common/pipeline.h"
#include "common/player_port.h"
#include "common/run_id.h"
#include "common/thread_pool.h"

class CFlvDownloader {
 public:
  explicit CFlvDownloader(CStreamPlayerImp* player);
  ~CFlvDownloader();
  CFlvDownloader(const CFlvDownloader&) = delete;
  CFlvDownloader& operator=(const CFlvDownloader&) = delete;

  // Starts to play `url`, which must be cleaned, from its beginning. Always returns true. After a
  // second start without a stop, the first stream queues nothing more, but its delivery tasks run
  // until the stop. The pool has capacity for four starts.
  bool BeginDownload(const std::string& url);

  // Stops and joins the tasks and drops what is queued. Returns false if nothing was running.
  bool EndDownload();

  // Accepts a position and reports it to the player. It has no other effect: an FLV stream always
  // plays from its beginning. Kept for compatibility. Always returns true.
  bool SetStartPostion(float seconds);

 private:
  void UseUrl(const std::string& url);
  static void RunDownload(const std::string& url, stream::RunId run);

  const stream::PlayerPort player_;
  std::string url_;
  std::atomic<std::uint16_t> audio_config_{0};
  stream::CThreadPool pool_;
  stream::Pipeline pipeline_;  // last: no task may outlive the other members
};

#endif  // FLV_FLV_DOWNLOADER_H_
