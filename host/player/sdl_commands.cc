#include "keys.h"

namespace player {
namespace {

Wish WishOfKey(SDL_Keycode key) {
  switch (key) {
    case SDLK_SPACE:
      return Wish::kPause;
    case SDLK_LEFT:
      return Wish::kBack;
    case SDLK_RIGHT:
      return Wish::kForward;
    case SDLK_f:
      return Wish::kFullScreen;
    case SDLK_q:
    case SDLK_ESCAPE:
      return Wish::kEnd;
    default:
      return Wish::kNothing;
  }
}

}  // namespace

Wish WishOf(const SDL_Event& event) {
  if (event.type == SDL_QUIT) return Wish::kEnd;
  if (event.type == SDL_WINDOWEVENT) return Wish::kRedraw;
  if (event.type != SDL_KEYDOWN) return Wish::kNothing;
  const Wish wish = WishOfKey(event.key.keysym.sym);
  // A key held down repeats: that is meant for moving only.
  const bool moves = wish == Wish::kBack || wish == Wish::kForward;
  return event.key.repeat != 0 && !moves ? Wish::kNothing : wish;
}

}  // namespace player
