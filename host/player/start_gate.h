// When playing may begin: when both a picture and audio are available, so that they begin in sync.
// A stream may lack one of them, or deliver it late, so the wait for the other is limited.
#ifndef HOST_PLAYER_START_GATE_H_
#define HOST_PLAYER_START_GATE_H_

#include <optional>

namespace player {

struct StartFacts {
  std::optional<double> first_picture;  // stream time in seconds; nullopt if there is none
  std::optional<double> first_audio;
  double waited = 0;  // seconds since the first of them was available
  bool full = false;  // whether no more frames can be received before some are played
};

// The stream time to begin at; nullopt while it is better to wait.
std::optional<double> StartTime(const StartFacts& facts);

}  // namespace player

#endif  // HOST_PLAYER_START_GATE_H_
