// What the MP4 pipeline needs to know about a file's tracks: which one is the video, which one is
// the audio, and what a decoder must know about them.
#ifndef MP4_MP4_TRACKS_H_
#define MP4_MP4_TRACKS_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/adts.h"

namespace stream {

struct Mp4VideoTrack {
  MP4TrackId id = MP4_INVALID_TRACK_ID;
  std::string codec;         // "H264", "H265", or the name of its sample entry
  bool has_headers = false;  // H.264 parameter sets; without them the track is not played
  // Parameter sets without start codes, as the file lists them.
  std::vector<std::vector<std::uint8_t>> sps;
  std::vector<std::vector<std::uint8_t>> pps;
};

struct Mp4AudioTrack {
  MP4TrackId id = MP4_INVALID_TRACK_ID;
  std::uint32_t sample_rate = 0;  // for the ADTS header, in Hz
  std::uint16_t channels = 0;     // for the ADTS header: a channel configuration
};

// Returns the first track of the handler type ("vide", "soun") that can be played. A track without
// a sample entry or a time scale is ignored. If all others lack their samples or their H.264
// parameter sets, returns the first of these. Returns MP4_INVALID_TRACK_ID if there is none.
MP4TrackId FindMp4Track(MP4FileHandle file, const char* type);

Mp4VideoTrack DescribeVideoTrack(MP4FileHandle file, MP4TrackId id);
Mp4AudioTrack DescribeAudioTrack(MP4FileHandle file, MP4TrackId id);

// Duration of the movie in seconds.
float Mp4DurationSeconds(MP4FileHandle file);

// Sets the sampling frequency index for a rate (ISO/IEC 14496-3, table 1.18). Some rates leave it
// unchanged, among them 96000, 88200 and 64000 Hz. Kept for compatibility.
void SetSamplingFrequencyIndex(AdtsFields& fields, std::uint32_t rate);

}  // namespace stream

#endif  // MP4_MP4_TRACKS_H_
