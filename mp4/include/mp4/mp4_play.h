// The play task of the MP4 pipeline: reads the growing file in passes and reports the result.
#ifndef MP4_MP4_PLAY_H_
#define MP4_MP4_PLAY_H_

#include <atomic>
#include <memory>
#include <string>

#include "common/player_port.h"
#include "common/run_id.h"
#include "mp4/mp4_track_reader.h"

namespace stream {

struct Mp4Play {
  std::string url;
  RunId run;  // of the restart file; the task ends when the next run begins
  PlayerPort player;
  Mp4TrackReader& reader;
  std::shared_ptr<const std::atomic<bool>> downloading;  // cleared when the download has ended
  const std::atomic<float>& start_position;              // seconds
};

// Reads in passes until the download has ended and a last pass has followed, or until g_mp4Running
// is cleared. Then reports to the player whether there was video. Blocks.
void PlayMp4(const Mp4Play& play);

// The path that is read for an address: the local file itself, or the restart file.
std::string Mp4MediaPath(const std::string& url);

}  // namespace stream

#endif  // MP4_MP4_PLAY_H_
