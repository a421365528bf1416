// The window with the picture in it. For the main thread only.
#ifndef HOST_PLAYER_WINDOW_H_
#define HOST_PLAYER_WINDOW_H_

#include <SDL.h>

#include <memory>
#include <string>

#include "av_memory.h"
#include "picture_converter.h"

namespace player {

class Window {
 public:
  // Null when there is no display; then `error` says why. SDL's video must be initialised before.
  static std::unique_ptr<Window> Open(std::string& error);

  // Makes ready for pictures like this one. The first gives the window its size.
  bool Prepare(const AVFrame& frame);

  // False when the picture is of no kind that can be shown.
  bool Show(const AVFrame& frame);
  // The last picture once more: the window was moved, resized or uncovered.
  void Redraw();

  void SetTitle(const std::string& title);
  void ToggleFullScreen();

 private:
  struct Destroy {
    void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
    void operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
    void operator()(SDL_Texture* texture) const { SDL_DestroyTexture(texture); }
  };

  Window() = default;
  void UseConversion(SDL_YUV_CONVERSION_MODE mode);
  bool PrepareTexture(const AVFrame& frame);
  void FitToPicture(int width, int height);

  std::unique_ptr<SDL_Window, Destroy> window_;
  std::unique_ptr<SDL_Renderer, Destroy> renderer_;
  std::unique_ptr<SDL_Texture, Destroy> texture_;
  PictureConverter converter_;
  int width_ = 0;  // of the texture
  int height_ = 0;
  bool has_picture_size_ = false;
  bool full_screen_ = false;
  std::string title_;
};

}  // namespace player

#endif  // HOST_PLAYER_WINDOW_H_
