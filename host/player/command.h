// The commands that a user gives while a stream plays.
#ifndef HOST_PLAYER_COMMAND_H_
#define HOST_PLAYER_COMMAND_H_

#include <optional>

namespace player {

enum class Command { kNothing, kPause, kBack, kForward, kFullScreen, kRedraw, kEnd };

// For the main thread only.
class CommandSource {
 public:
  virtual ~CommandSource() = default;

  // Waits up to `seconds` for the next command; nullopt if there is none.
  virtual std::optional<Command> Wait(double seconds) = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_COMMAND_H_
