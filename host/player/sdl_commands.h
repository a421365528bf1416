// What keys and the window ask for.
#ifndef HOST_PLAYER_KEYS_H_
#define HOST_PLAYER_KEYS_H_

#include <SDL.h>

namespace player {

enum class Wish { kNothing, kPause, kBack, kForward, kFullScreen, kRedraw, kEnd };

Wish WishOf(const SDL_Event& event);

}  // namespace player

#endif  // HOST_PLAYER_KEYS_H_
