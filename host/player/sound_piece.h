// Decoded sound in the one form that the player works with.
#ifndef HOST_PLAYER_SOUND_PIECE_H_
#define HOST_PLAYER_SOUND_PIECE_H_

#include <cstddef>
#include <vector>

namespace player {

inline constexpr int kSoundRate = 48'000;
inline constexpr int kSoundChannels = 2;

struct SoundPiece {
  std::vector<float> samples;  // of the two channels in turn
  double seconds = 0;          // stream time of the first

  std::size_t Frames() const { return samples.size() / kSoundChannels; }
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_PIECE_H_
