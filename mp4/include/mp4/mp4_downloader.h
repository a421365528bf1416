// The MP4 pipeline: plays an MP4 address over HTTP, HTTPS or from a local file while it downloads
// into a restart file, and resumes there when the same address is started again. Four tasks run on
// its pool: download, play (reads the file in passes), video delivery, audio delivery.
//
// The facade creates one for the first address that is of no other format, and forwards its
// operations to it. Much of the state is process-wide (mp4_state.h): one MP4 pipeline plays at a
// time. The player is borrowed.
//
// Threads: call the members from one thread at a time, never from inside a call to the player.
#ifndef MP4_MP4_DOWNLOADER_H_
#define MP4_MP4_DOWNLOADER_H_

#include <atomic>
#include <string>

#include "common/pipeline.h"
#include "common/player_port.h"
#include "common/run_id.h"
#include "common/thread_pool.h"
#include "mp4/mp4_track_reader.h"

class CMp4Downloader {
 public:
  explicit CMp4Downloader(CStreamPlayerImp* player);
  ~CMp4Downloader();
  CMp4Downloader(const CMp4Downloader&) = delete;
  CMp4Downloader& operator=(const CMp4Downloader&) = delete;

  // Starts to play `url`, which must be cleaned. The address that played last continues where it
  // stopped, or where SetStartPostion moved it. Another address starts from its beginning, and so
  // does the same address if another pipeline has played since. Always returns true. A second start
  // without a stop adds four tasks to the running ones.
  bool BeginDownload(const std::string& url);

  // Stops and joins the tasks and drops what is queued. Returns false if nothing was running.
  // Resets the start position to 0 in any case.
  bool EndDownload();

  // Sets the position before which samples are dropped, and makes the next start continue from
  // there, as far as the file's index is known, unless another pipeline has played since. Always
  // returns true.
  bool SetStartPostion(float seconds);

 private:
  stream::RunId UseUrl(const std::string& url);
  bool OwnsFile() const;
  void Seek(float seconds);
  static void RunDownload(const std::string& url, stream::RunId run,
                          std::atomic<bool>& downloading);

  const stream::PlayerPort player_;
  std::string url_;
  stream::RunId run_{};  // of the restart file, begun by the address that was started last
  std::atomic<float> start_position_{0};
  stream::Mp4TrackReader reader_;
  stream::CThreadPool pool_;
  stream::Pipeline pipeline_;  // last: no task may outlive the other members
};

#endif  // MP4_MP4_DOWNLOADER_H_
