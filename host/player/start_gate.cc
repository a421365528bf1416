#include "start_gate.h"

#include <algorithm>

#include "play_clock.h"

namespace player {

std::optional<double> StartTime(const StartFacts& facts) {
  constexpr double kPatience = 1;
  if (facts.first_picture && facts.first_sound) {
    // If picture and audio are far apart, begin with the audio.
    const double earlier = std::min(*facts.first_picture, *facts.first_sound);
    return *facts.first_sound - earlier > kFarApart ? *facts.first_sound : earlier;
  }
  if (!facts.full && facts.waited < kPatience) return std::nullopt;
  return facts.first_picture ? facts.first_picture : facts.first_sound;
}

}  // namespace player
