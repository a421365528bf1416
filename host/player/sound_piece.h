// Decoded audio in the only format that the player uses.
#ifndef HOST_PLAYER_SOUND_PIECE_H_
#define HOST_PLAYER_SOUND_PIECE_H_

#include <cstddef>
#include <vector>

namespace player {

inline constexpr int kSoundRate = 48'000;
inline constexpr int kSoundChannels = 2;

struct AudioPiece {
  std::vector<float> samples;  // interleaved samples of the two channels
  double seconds = 0;          // stream time of the first sample

  std::size_t Frames() const { return samples.size() / kSoundChannels; }
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_PIECE_H_
