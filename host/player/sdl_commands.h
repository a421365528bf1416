// Commands from the keyboard and the window, through SDL. Main thread only.
#ifndef HOST_PLAYER_SDL_COMMANDS_H_
#define HOST_PLAYER_SDL_COMMANDS_H_

#include <optional>

#include "command.h"

namespace player {

class SdlCommands final : public CommandSource {
 public:
  std::optional<Command> Wait(double seconds) override;
};

}  // namespace player

#endif  // HOST_PLAYER_SDL_COMMANDS_H_
