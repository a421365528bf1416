#include "title_text.h"

#include <algorithm>
#include <cmath>

#include "text.h"

namespace player {
namespace {

std::string TwoDigits(long long number) {
  std::string digits = number < 10 ? "0" : "";
  return digits.append(std::to_string(number));
}

const char* StateText(PlayState state) {
  switch (state) {
    case PlayState::kWaiting:
      return " (waiting)";
    case PlayState::kPaused:
      return " (paused)";
    case PlayState::kEnded:
      return " (ended)";
    case PlayState::kPlaying:
      break;
  }
  return "";
}

}  // namespace

std::string TimeText(double seconds) {
  constexpr double kLongest = 1e12;  // well within the range of long long
  const double bounded = std::isfinite(seconds) ? std::clamp(seconds, 0.0, kLongest) : 0;
  const auto whole = static_cast<long long>(bounded);
  const long long hours = whole / 3600;
  const long long minutes = whole / 60 % 60;
  if (hours == 0) return std::to_string(minutes) + ':' + TwoDigits(whole % 60);
  return std::to_string(hours) + ':' + TwoDigits(minutes) + ':' + TwoDigits(whole % 60);
}

std::string TitleText(const TitleFacts& facts) {
  std::string title = facts.position ? TimeText(*facts.position) : "-:--";
  if (facts.duration) title += " / " + TimeText(*facts.duration);
  if (facts.buffered) title += ", buffered to " + TimeText(*facts.buffered);
  title += StateText(facts.state);
  if (!facts.status.empty()) title += " - " + host::PrintableText(facts.status);
  return title;
}

}  // namespace player
