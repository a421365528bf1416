#include "sdl_system.h"

#include <SDL.h>

#include <string_view>

namespace player {
namespace {

void IgnoreAlsaError(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                     const char* /*form*/, ...) {}

// ALSA prints many lines about a missing device. The player prints one line instead.
void KeepAlsaQuiet() {
  using Handler = void (*)(const char*, int, const char*, int, const char*, ...);
  void* const library = SDL_LoadObject("libasound.so.2");
  if (library == nullptr) return;
  void* const set_handler = SDL_LoadFunction(library, "snd_lib_error_set_handler");
  if (set_handler != nullptr) reinterpret_cast<int (*)(Handler)>(set_handler)(IgnoreAlsaError);
  // The library stays loaded, because the handler is set in it.
}

// Without a display, SDL may choose a driver that shows nothing.
bool ShowsNothing() {
  const char* const driver = SDL_GetCurrentVideoDriver();
  const std::string_view name = driver == nullptr ? "" : driver;
  return name == "offscreen" || name == "dummy" || name == "evdev";
}

// Without this directory there is no Wayland, and its library would print an error. Other systems
// have other drivers.
void KeepWaylandQuiet() {
  if (std::string_view(SDL_GetPlatform()) != "Linux") return;
  if (SDL_getenv("XDG_RUNTIME_DIR") == nullptr) SDL_SetHint(SDL_HINT_VIDEODRIVER, "x11,KMSDRM");
}

std::string StartDisplay() {
  KeepWaylandQuiet();
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
    return std::string("neither X11 nor Wayland can be used (") + SDL_GetError() + ")";
  }
  if (ShowsNothing()) return "neither X11 nor Wayland can be used";
  return "";
}

}  // namespace

SdlSystem::SdlSystem() {
  SDL_SetMainReady();
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "0");
  display_error_ = StartDisplay();
  if (!display_error_.empty()) return;
  KeepAlsaQuiet();
  if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) audio_error_ = SDL_GetError();
}

SdlSystem::~SdlSystem() { SDL_Quit(); }

}  // namespace player
