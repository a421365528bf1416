// The HLS pipeline: plays an HTTP Live Streaming address (RFC 8216) whose segments are MPEG
// transport streams, on demand or live. Five tasks run on its pool: playlist, segments, parse,
// video delivery, audio delivery.
//
// The facade creates one for the first "m3u8" address, forwards its operations to it and destroys
// it. Most of the state is process-wide (hls_stream.h): one HLS pipeline plays at a time. The
// player is borrowed.
//
// Threads: call the members from one thread at a time, never from inside a call to the player.
#ifndef HLS_M3U8_DOWNLOADER_H_
#define HLS_M3U8_DOWNLOADER_H_

#include <ctime>
#include <string>

#include "common/pipeline.h"
#include "common/thread_pool.h"
#include "hls/hls_task_state.h"

namespace stream {

// The date and time in the console lines of a start and a stop, for example "2024Y1M9D 8:5:0",
// without leading zeros. Y, M and D stand for the GB 2312 characters for year, month and day. The
// encoding does not depend on the console's character set. Kept for compatibility.
std::string DateText(const std::tm& local);

// The GB 2312 character for second.
inline constexpr char kSecondsGb2312[] = "\xC3\xEB";

}  // namespace stream

class CM3u8Downloader {
 public:
  explicit CM3u8Downloader(CStreamPlayerImp* player);
  ~CM3u8Downloader();
  CM3u8Downloader(const CM3u8Downloader&) = delete;
  CM3u8Downloader& operator=(const CM3u8Downloader&) = delete;

  // Starts to play `url`, which must be cleaned, at the start position that was set last. Always
  // returns true. A second start without a stop adds five tasks to the running ones; tasks that
  // find no free worker wait for one.
  bool BeginDownload(const std::string& url);

  // Stops and joins the tasks and clears the stream. Returns false if nothing was running. Resets
  // the start position to 0 in any case.
  bool EndDownload();

  // Sets the start position. Segments that end before it are skipped; single frames are not. Always
  // returns true.
  bool SetStartPostion(float seconds);

 private:
  void StartDownload(const std::string& url);

  stream::HlsTaskState hls_;
  std::time_t start_time_;  // of the current run
  stream::CThreadPool pool_;
  stream::Pipeline pipeline_;  // last: no task may outlive the other members
};

#endif  // HLS_M3U8_DOWNLOADER_H_
