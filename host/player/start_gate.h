// When playing may begin: when there is both a picture and sound, so that they begin in step. A
// stream may lack one of them, or bring it late: then the other does not wait for ever.
#ifndef HOST_PLAYER_START_GATE_H_
#define HOST_PLAYER_START_GATE_H_

#include <optional>

namespace player {

struct StartFacts {
  std::optional<double> first_picture;  // stream time in seconds; nothing while there is none
  std::optional<double> first_sound;
  double waited = 0;  // seconds since the first of them was there
  bool full = false;  // whether no more frames can come before some are played
};

// The stream time to begin at; nothing while it is better to wait.
std::optional<double> StartTime(const StartFacts& facts);

}  // namespace player

#endif  // HOST_PLAYER_START_GATE_H_
