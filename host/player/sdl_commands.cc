#include "sdl_commands.h"

#include <SDL.h>

namespace player {
namespace {

Command CommandOfKey(SDL_Keycode key) {
  switch (key) {
    case SDLK_SPACE:
      return Command::kPause;
    case SDLK_LEFT:
      return Command::kBack;
    case SDLK_RIGHT:
      return Command::kForward;
    case SDLK_f:
      return Command::kFullScreen;
    case SDLK_q:
    case SDLK_ESCAPE:
      return Command::kEnd;
    default:
      return Command::kNothing;
  }
}

Command CommandOf(const SDL_Event& event) {
  if (event.type == SDL_QUIT) return Command::kEnd;
  if (event.type == SDL_WINDOWEVENT) return Command::kRedraw;
  if (event.type != SDL_KEYDOWN) return Command::kNothing;
  const Command command = CommandOfKey(event.key.keysym.sym);
  // Repeats of a key held down are ignored, except for seek keys.
  const bool moves = command == Command::kBack || command == Command::kForward;
  return event.key.repeat != 0 && !moves ? Command::kNothing : command;
}

}  // namespace

std::optional<Command> SdlCommands::Wait(double seconds) {
  SDL_Event event;
  // Rounded down: polling once too often is better than showing a picture late.
  if (SDL_WaitEventTimeout(&event, static_cast<int>(seconds * 1000)) == 0) return std::nullopt;
  return CommandOf(event);
}

}  // namespace player
