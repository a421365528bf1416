#include "common/start_position.h"

#include <limits>

#include "common/format_text.h"
#include "common/player_port.h"

namespace stream {

int PositionMilliseconds(float seconds) {
  const float milliseconds = seconds * 1000.0F;
  constexpr float kLimit = 2147483648.0F;  // 2^31: values must be between -2^31 and 2^31
  if (!(milliseconds > -kLimit && milliseconds < kLimit)) return std::numeric_limits<int>::min();
  return static_cast<int>(milliseconds);
}

bool IsBeforeStart(float start_seconds, std::uint64_t play_time) {
  return start_seconds > WholeSeconds(play_time);
}

std::string StartPositionLine(const char* format, float seconds) {
  const int ms = PositionMilliseconds(seconds);
  return FormatText("PLAY %s StartPostion:%02d:%02d:%02d.%03d", format, ms / 1000 / 60 / 60 % 60,
                    ms / 1000 / 60 % 60, ms / 1000 % 60, ms % 1000);
}

std::string StartPositionLine(const char* format, float seconds, std::clock_t elapsed) {
  return StartPositionLine(format, seconds) +
         " Q:" + FixedText(static_cast<double>(elapsed) / 1000.0) + "s";
}

}  // namespace stream
