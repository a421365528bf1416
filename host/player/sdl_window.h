// The window, implemented with SDL. Main thread only.
#ifndef HOST_PLAYER_SDL_WINDOW_H_
#define HOST_PLAYER_SDL_WINDOW_H_

#include <SDL.h>

#include <memory>
#include <string>

#include "picture_converter.h"
#include "window.h"

namespace player {

class SdlWindow final : public Window {
 public:
  // Returns null if there is no display; `error` then says why. SDL's video must be initialised
  // before.
  static std::unique_ptr<SdlWindow> Open(std::string& error);

  bool Prepare(const AVFrame& frame) override;
  bool Show(const AVFrame& frame) override;
  void Redraw() override;
  void SetTitle(const std::string& title) override;
  void ToggleFullScreen() override;

 private:
  struct Destroy {
    void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
    void operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
    void operator()(SDL_Texture* texture) const { SDL_DestroyTexture(texture); }
  };

  SdlWindow() = default;
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

#endif  // HOST_PLAYER_SDL_WINDOW_H_
