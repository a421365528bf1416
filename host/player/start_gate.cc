#include "start_gate.h"

#include <algorithm>

namespace player {

std::optional<double> StartTime(const StartFacts& facts) {
  constexpr double kPatience = 1;
  // Times further from each other than this do not belong together: begin with the sound.
  constexpr double kApart = 10;
  if (facts.first_picture && facts.first_sound) {
    const double earlier = std::min(*facts.first_picture, *facts.first_sound);
    return *facts.first_sound - earlier > kApart ? *facts.first_sound : earlier;
  }
  if (!facts.full && facts.waited < kPatience) return std::nullopt;
  return facts.first_picture ? facts.first_picture : facts.first_sound;
}

}  // namespace player
