// Mp4TrackReader: turns an MP4 file (ISO/IEC 14496-12) that may be downloaded in part only into
// frames in the global frame queues: NAL units of H.264 with a start code in front, AAC frames with
// an ADTS header. It is run in passes: each reads the samples that follow those read so far, as far
// as their bytes are there. What it reads with is behind <mp4v2/mp4v2.h>.
//
// What it knows of a file lives until another address is started: the same one goes on where it got
// to, or where Seek put it.
//
// Threads: passes are run by the play tasks, one at a time; the rest is called from the host's
// thread, also while a pass runs. No lock is held while the player is called.
#ifndef MP4_MP4_TRACK_READER_H_
#define MP4_MP4_TRACK_READER_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "common/adts.h"
#include "common/player_port.h"
#include "mp4/downloaded_ranges.h"
#include "mp4/mp4_file_handle.h"
#include "mp4/mp4_sample.h"
#include "mp4/mp4_time_index.h"
#include "mp4/mp4_tracks.h"

class Mp4TrackReader {
 public:
  explicit Mp4TrackReader(PlayerPort player) : player_(player) {}

  // Before the tasks of a start: the video has not begun.
  void Begin();

  // Forgets the file that was read before, for the address of this number. The parameter sets and
  // the fields of the ADTS header stay until the next file replaces them, as far as it has its own
  // (kept on purpose).
  void Reset(std::uint64_t address);

  // What a pass reads.
  struct Source {
    std::uint64_t address = 0;   // number of the address
    std::string url;             // for the status lines
    std::string path;            // of the file, in the system code page
    ByteRange there;             // which of its bytes are there
    std::uint64_t revision = 0;  // of the ranges
    // Seconds; samples before it are read, and not queued.
    const std::atomic<float>& start_position;
  };

  // Whether a pass could find anything that the last one did not.
  bool MayFindMore(const Source& source) const;

  // Reads what is there, until g_mp4Running is cleared. Tells the player the duration and the codec
  // when it finds the tracks, and how far the video is buffered. False, with nothing done, while
  // another pass is under way.
  bool RunPass(const Source& source);

  // Puts both tracks at their first sample at or behind `seconds`, as far as it is known, and
  // returns the file offset from which both can be read.
  std::uint64_t Seek(float seconds, const std::string& path);

  // Lets go of the file, which otherwise may stay open between passes.
  void Close();

 private:
  struct Track {
    MP4TrackId id = MP4_INVALID_TRACK_ID;
    MP4SampleId next = 1;
    Mp4TimeIndex index;
    std::optional<ByteRange> missing;  // for want of these bytes it could not be read further
  };

  // One pass under way.
  struct Pass {
    const Source& source;
    std::shared_ptr<void> file;  // the handle
    std::uint64_t changes;       // what changes_ was
  };

  bool LacksATrack() const;
  bool Open(Pass& pass);
  bool Discover(const Pass& pass);
  std::optional<std::string> DiscoverVideo(MP4FileHandle file);
  void DiscoverAudio(MP4FileHandle file);
  void Adopt(const Mp4VideoTrack& track);
  void ReadSamples(Pass& pass);
  bool ReadNextVideo(Pass& pass);
  bool ReadNextAudio(Pass& pass);
  bool AudioMustWait() const;
  std::optional<Mp4Sample> TakeNext(Pass& pass, Track& track);
  std::optional<Mp4Sample> ReadSample(Pass& pass, Track& track);
  static bool IsThere(const Pass& pass, Track& track, std::uint64_t offset, std::uint64_t size);
  void EndPass(const Pass& pass, bool was_read);
  static std::uint64_t SeekTrack(MP4FileHandle file, Track& track, float milliseconds);

  const PlayerPort player_;

  // Of the pass under way alone.
  Mp4ParameterSets parameter_sets_;
  AdtsFields adts_fields_;

  // When the video began, in milliseconds: audio before it is not queued.
  std::atomic<std::uint64_t> key_time_{0};

  mutable std::mutex mutex_;
  // All guarded by mutex_.
  bool pass_under_way_ = false;
  Track video_;
  Track audio_;
  std::uint64_t address_ = 0;
  std::uint64_t changes_ = 0;              // counts the seeks and the addresses
  bool refused_ = false;                   // the video track has no H.264 parameter sets
  bool discovered_ = false;                // the index of the file has been read at least once
  std::optional<std::uint64_t> revision_;  // of the ranges that the last pass has seen
  std::shared_ptr<void> open_file_;
};

#endif  // MP4_MP4_TRACK_READER_H_
