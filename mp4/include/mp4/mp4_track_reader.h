// Mp4TrackReader: converts an MP4 file (ISO/IEC 14496-12), which may be downloaded only in part,
// into frames in the global frame queues: NAL units of H.264 with a start code before them, AAC
// frames with an ADTS header. It runs in passes: each reads the samples that follow those read so
// far, as far as their bytes are available. It reads files through <mp4v2/mp4v2.h>.
//
// What it knows about a file is kept until another address is started: the same address continues
// where it stopped, or where Seek moved it.
//
// Threads: the play tasks run the passes, one at a time. The host's thread calls the other members,
// even during a pass. No lock is held while the player is called.
#ifndef MP4_MP4_TRACK_READER_H_
#define MP4_MP4_TRACK_READER_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/adts.h"
#include "common/frame_memory.h"
#include "common/frame_queue.h"
#include "common/player_port.h"
#include "common/run_id.h"
#include "mp4/downloaded_ranges.h"
#include "mp4/mp4_file_handle.h"
#include "mp4/mp4_sample.h"
#include "mp4/mp4_time_index.h"
#include "mp4/mp4_tracks.h"
#include "platform/mutex.h"

namespace stream {

class Mp4TrackReader {
 public:
  explicit Mp4TrackReader(PlayerPort player) : player_(player) {}

  // Resets the time at which the video began. Call this before the tasks of a start run.
  void Begin();

  // Forgets the previous file and switches to this run of the restart file. The parameter sets and
  // the fields of the ADTS header stay until the next file replaces them, as far as it has its own.
  // Kept for compatibility.
  void Reset(RunId run);

  // What a pass reads.
  struct Source {
    RunId run{};                 // of the restart file
    std::string url;             // for the status lines
    std::string path;            // of the file, in the system code page
    ByteRange available;         // which of its bytes are available
    std::uint64_t revision = 0;  // of the downloaded ranges
    // In seconds. Samples before it are read, but not queued.
    const std::atomic<float>& start_position;
  };

  // Returns whether a pass could find anything that the last one did not.
  bool MayFindMore(const Source& source) const;

  // Reads the available samples; ends early if g_mp4Running is cleared. Reports to the player the
  // duration and the codec when it finds the tracks, and how far the video is buffered. Returns
  // false, and does nothing, while another pass is running.
  bool RunPass(const Source& source);

  // Moves both tracks to their first sample at or after `seconds`, as far as it is known, and
  // returns the file offset from which both can be read.
  std::uint64_t Seek(float seconds, const std::string& path);

  // Closes the file, which may otherwise stay open between passes.
  void Close();

 private:
  struct Track {
    MP4TrackId id = MP4_INVALID_TRACK_ID;
    MP4SampleId next = 1;
    Mp4TimeIndex index;
    std::optional<ByteRange> missing;  // bytes that the next sample lacked
  };

  // One running pass.
  struct ReadPass {
    const Source& source;
    std::shared_ptr<void> file;  // the handle
    std::uint64_t repositions;   // repositions_ when the pass began
  };

  bool LacksATrack() const REQUIRES(mutex_);
  bool Open(ReadPass& pass);
  bool Discover(const ReadPass& pass);
  std::optional<std::string> DiscoverVideo(MP4FileHandle file) REQUIRES(mutex_);
  void DiscoverAudio(MP4FileHandle file) REQUIRES(mutex_);
  void Adopt(const Mp4VideoTrack& track);
  void ReadSamples(ReadPass& pass);
  bool ReadNextVideo(ReadPass& pass);
  bool ReadNextAudio(ReadPass& pass);
  bool AudioMustWait() const;
  std::optional<Mp4Sample> ReadNext(ReadPass& pass, PayloadKind kind);
  std::optional<Mp4Sample> ReadSample(ReadPass& pass, Track& track) REQUIRES(mutex_);
  static bool IsAvailable(const ReadPass& pass, Track& track, std::uint64_t offset,
                          std::uint64_t size);
  void EndPass(const ReadPass& pass, bool was_read);
  static std::uint64_t SeekTrack(MP4FileHandle file, Track& track, float milliseconds);

  const PlayerPort player_;

  // Used by the running pass only.
  Mp4ParameterSets parameter_sets_;
  AdtsFields adts_fields_;

  // The time at which the video began, in milliseconds: earlier audio is not queued.
  std::atomic<std::uint64_t> key_time_{0};

  mutable Mutex mutex_ ACQUIRED_BEFORE(g_frameQueueMutex);
  bool pass_running_ GUARDED_BY(mutex_) = false;
  Track video_ GUARDED_BY(mutex_);
  Track audio_ GUARDED_BY(mutex_);
  RunId run_ GUARDED_BY(mutex_){};
  // Counts the calls of Seek and Reset.
  std::uint64_t repositions_ GUARDED_BY(mutex_) = 0;
  // The video track has no H.264 parameter sets.
  bool refused_ GUARDED_BY(mutex_) = false;
  // The index of the file was read at least once.
  bool discovered_ GUARDED_BY(mutex_) = false;
  // Of the ranges that the last pass used.
  std::optional<std::uint64_t> revision_ GUARDED_BY(mutex_);
  std::shared_ptr<void> open_file_ GUARDED_BY(mutex_);
};

}  // namespace stream

#endif  // MP4_MP4_TRACK_READER_H_
