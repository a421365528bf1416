// Movies for tests that play MP4, and the frames expected from them.
//
// Every sample contains its number. A video and an audio sample of the same number have the same
// time, 40 ms after the previous number, so that the result does not depend on the order in which
// bytes are received.
#ifndef TESTS_SUPPORT_MP4_MOVIES_H_
#define TESTS_SUPPORT_MP4_MOVIES_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/golden/frame_dump.h"
#include "tests/support/mp4_boxes.h"

namespace stream {

namespace mp4_test {

using mp4_boxes::Append;
using mp4_boxes::BuildMp4;
using mp4_boxes::Bytes;
using mp4_boxes::Join;
using mp4_boxes::Movie;
using mp4_boxes::Sample;
using mp4_boxes::Track;
using mp4_boxes::U32;

inline constexpr unsigned kSlice = 1;
inline constexpr unsigned kIdrSlice = 5;
inline constexpr unsigned kSei = 6;
inline constexpr std::uint32_t kFrameMs = 40;
inline constexpr std::uint64_t kTicksPerMs = 90;

// Bytes that contain `number` and depend on their position.
inline Bytes Filler(std::size_t size, std::size_t number) {
  Bytes bytes = mp4_boxes::U16(number);
  for (std::size_t i = bytes.size(); i < size; ++i)
    bytes.push_back(static_cast<std::uint8_t>(number * 7 + i));
  bytes.resize(size);
  return bytes;
}

inline Bytes Nal(unsigned type, std::size_t size = 20, std::size_t number = 0) {
  return Join({mp4_boxes::U8(0x60 | type), Filler(size, number)});
}

// The bytes of a video sample: each NAL unit after its length.
inline Bytes LengthPrefixed(const std::vector<Bytes>& nals) {
  Bytes bytes;
  for (const Bytes& nal : nals) Append(bytes, Join({U32(nal.size()), nal}));
  return bytes;
}

// A NAL unit as the player receives it.
inline Bytes AddStartCode(const Bytes& nal) { return Join({{0, 0, 0, 1}, nal}); }

// The parameter sets, which precede the first NAL unit.
inline Bytes ParameterSets() {
  return Join({AddStartCode(mp4_boxes::kSps), AddStartCode(mp4_boxes::kPps)});
}

// An AAC frame as the player receives it.
inline Bytes WithAdtsHeader(const Bytes& frame, unsigned frequency_index = 3,
                            unsigned channels = 2) {
  const std::size_t length = (frame.size() + 7) & 0x1FFF;
  const auto byte = [](std::size_t value) { return static_cast<std::uint8_t>(value); };
  return Join({{0xFF, 0xF1, byte(1U << 6 | frequency_index << 2 | channels >> 2),
                byte((channels & 3) << 6 | length >> 11), byte(length >> 3),
                byte((length & 7) << 5 | 0x1F), 0xFC},
               frame});
}

// --- Tracks ---

struct Shape {
  std::size_t samples = 50;     // of each track
  std::size_t video_size = 60;  // of a slice
  std::size_t audio_size = 30;
  std::size_t key_interval = 1;  // 1: every sample is a key frame
};

inline Track VideoTrack(const Shape& shape = {}) {
  Track track;
  for (std::size_t i = 0; i < shape.samples; ++i) {
    const bool is_key = i % shape.key_interval == 0;
    const Bytes slice = Nal(is_key ? kIdrSlice : kSlice, shape.video_size, i);
    track.samples.push_back({LengthPrefixed({slice}), kFrameMs, 0, is_key});
  }
  return track;
}

inline Track AudioTrack(const Shape& shape = {}, std::uint32_t rate = 48000) {
  Track track;
  track.id = 2;
  track.handler = "soun";
  track.time_scale = rate;
  track.entry = mp4_boxes::AacEntry();
  for (std::size_t i = 0; i < shape.samples; ++i)
    track.samples.push_back({Filler(shape.audio_size, i), rate / 1000 * kFrameMs, 0, true});
  return track;
}

inline Movie MovieOf(std::vector<Track> tracks) {
  Movie movie;
  movie.duration = tracks.empty() ? 0 : tracks.front().samples.size() * kFrameMs;
  movie.tracks = std::move(tracks);
  return movie;
}

inline Movie MakeMovie(const Shape& shape = {}) {
  return MovieOf({VideoTrack(shape), AudioTrack(shape)});
}

// --- Expected frames ---

inline DumpedFrame FrameAt(std::uint64_t ms, bool is_video, Bytes payload) {
  const std::uint64_t ticks = ms * kTicksPerMs;
  return {ticks, ticks, ticks, is_video, true, std::move(payload)};
}

// The NAL units of a video sample with correct lengths.
inline std::vector<Bytes> NalsOf(const Bytes& sample) {
  std::vector<Bytes> nals;
  for (std::size_t at = 0; at < sample.size();) {
    std::size_t size = 0;
    for (int i = 0; i < 4; ++i) size = size << 8 | sample[at++];
    const auto begin = sample.begin() + static_cast<std::ptrdiff_t>(at);
    nals.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(size));
    at += size;
  }
  return nals;
}

// Where a run starts: the number of samples of each track that were read before it.
struct From {
  std::size_t video = 0;
  std::size_t audio = 0;
  std::uint64_t start_ms = 0;  // samples before this time are dropped
};

// The frames expected from a complete movie, one sample of each track in turn, video first. The
// first track is video; the second, if there is one, is audio at 48 kHz.
inline FrameDump ExpectedFrames(const Movie& movie, const From& from = {}) {
  FrameDump dump;
  const auto add_video = [&](std::uint64_t ms, const Bytes& sample) {
    for (const Bytes& nal : NalsOf(sample)) {
      const unsigned type = nal.front() & 0x1FU;
      const bool begins = type >= kIdrSlice && type <= 7;
      if (!dump.video.empty()) {
        dump.video.push_back(FrameAt(ms, true, AddStartCode(nal)));
      } else if (begins) {
        dump.video.push_back(FrameAt(ms, true, Join({ParameterSets(), AddStartCode(nal)})));
      }
    }
  };
  const auto add_audio = [&](std::uint64_t ms, const Bytes& sample) {
    if (!dump.video.empty() && ms * kTicksPerMs >= dump.video.front().pts)
      dump.audio.push_back(FrameAt(ms, false, WithAdtsHeader(sample)));
  };
  const std::size_t count = movie.tracks.front().samples.size();
  for (std::size_t turn = 0; turn < count; ++turn) {
    for (std::size_t t = 0; t < movie.tracks.size() && t < 2; ++t) {
      const std::size_t i = turn + (t == 0 ? from.video : from.audio);
      if (i >= movie.tracks[t].samples.size() || i * kFrameMs < from.start_ms) continue;
      const Bytes& sample = movie.tracks[t].samples[i].data;
      t == 0 ? add_video(i * kFrameMs, sample) : add_audio(i * kFrameMs, sample);
    }
  }
  return dump;
}

}  // namespace mp4_test

}  // namespace stream

#endif  // TESTS_SUPPORT_MP4_MOVIES_H_
