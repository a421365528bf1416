// Decoded audio in the only format that the player uses.
#ifndef HOST_PLAYER_AUDIO_CHUNK_H_
#define HOST_PLAYER_AUDIO_CHUNK_H_

#include <cstddef>
#include <vector>

namespace player {

inline constexpr int kAudioSampleRate = 48'000;
inline constexpr int kAudioChannels = 2;

struct AudioChunk {
  std::vector<float> samples;  // interleaved samples of the two channels
  double seconds = 0;          // stream time of the first sample

  std::size_t Frames() const { return samples.size() / kAudioChannels; }
};

}  // namespace player

#endif  // HOST_PLAYER_AUDIO_CHUNK_H_
