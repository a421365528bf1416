// The text of the window title.
#ifndef HOST_PLAYER_TITLE_TEXT_H_
#define HOST_PLAYER_TITLE_TEXT_H_

#include <optional>
#include <string>

namespace player {

enum class PlayState { kWaiting, kPlaying, kPaused, kEnded };

// All in seconds from the beginning of the stream.
struct TitleFacts {
  PlayState state = PlayState::kWaiting;
  std::optional<double> position;
  std::optional<double> duration;
  std::optional<double> buffered;
  std::string status;  // the last status line; any bytes
};

// "1:02:03", "2:03"; negative times count as 0.
std::string TimeText(double seconds);

// "0:05 / 0:12, buffered to 0:09 (paused) - PLAY TS OK:http://..."
std::string TitleText(const TitleFacts& facts);

}  // namespace player

#endif  // HOST_PLAYER_TITLE_TEXT_H_
