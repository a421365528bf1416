// The MP4 pipeline: plays an MP4 address over HTTP, HTTPS or from a local file while it downloads
// into a restart file, and resumes there when the same address is started again. Four tasks run on
// its pool: download, play (passes over the file), video delivery, audio delivery.
//
// The facade makes one, on the first address that is of no other format, and forwards its own
// operations to it. Much of the state is process-wide (mp4_state.h): one MP4 pipeline plays at a
// time. The player is borrowed.
//
// Threads: call the members from one thread at a time, never from inside a call to the player.
#ifndef MP4_MP4_DOWNLOADER_H_
#define MP4_MP4_DOWNLOADER_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "common/player_port.h"
#include "common/task_gate.h"
#include "common/thread_pool.h"
#include "mp4/mp4_track_reader.h"

class CMp4Downloader {
 public:
  explicit CMp4Downloader(CStreamPlayerImp* player);
  ~CMp4Downloader();
  CMp4Downloader(const CMp4Downloader&) = delete;
  CMp4Downloader& operator=(const CMp4Downloader&) = delete;

  // Starts to play `url`, already cleaned. The address that played last goes on where it got to, or
  // where SetStartPostion put it; another one starts from its beginning, and so does the same one
  // when another pipeline has played meanwhile. Always true. A second start without a stop adds
  // four tasks to those that run.
  bool BeginDownload(const std::string& url);

  // Stops, joins the tasks and drops what is queued. False when nothing ran; the start position
  // goes back to 0 in any case.
  bool EndDownload();

  // Sets the position below which samples are dropped, and makes the next start go on from there,
  // as far as the file's index is known, unless another pipeline has played meanwhile. Always true.
  bool SetStartPostion(float seconds);

 private:
  std::uint64_t UseUrl(const std::string& url);
  bool OwnsFile() const;
  void Seek(float seconds);
  static void RunDownload(const std::string& url, std::uint64_t address,
                          std::atomic<bool>& downloading);
  void AddGated(CThreadPool::Task task) { pool_.AddTask(gate_.Admit(std::move(task))); }

  const PlayerPort player_;
  std::string url_;
  std::uint64_t address_ = 0;  // number of the address that it started last
  std::atomic<float> start_position_{0};
  Mp4TrackReader reader_;
  TaskGate gate_;
  CThreadPool pool_;
};

#endif  // MP4_MP4_DOWNLOADER_H_
