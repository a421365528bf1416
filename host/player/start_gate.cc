#include "start_gate.h"

#include <algorithm>

#include "play_clock.h"

namespace player {

std::optional<double> StartTime(const StartFacts& facts) {
  constexpr double kMaxWait = 1;
  if (facts.first_picture && facts.first_audio) {
    // If picture and audio are far apart, begin with the audio.
    const double earlier = std::min(*facts.first_picture, *facts.first_audio);
    return *facts.first_audio - earlier > kFarApart ? *facts.first_audio : earlier;
  }
  if (!facts.full && facts.waited < kMaxWait) return std::nullopt;
  return facts.first_picture ? facts.first_picture : facts.first_audio;
}

}  // namespace player
