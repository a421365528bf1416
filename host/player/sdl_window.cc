#include "sdl_window.h"

#include <algorithm>

namespace player {
namespace {

constexpr int kFirstWidth = 960;
constexpr int kFirstHeight = 540;

// The display width of a picture: its pixels need not be square.
int ShownWidth(const AVFrame& frame) {
  const AVRational dot = frame.sample_aspect_ratio;
  if (dot.num <= 0 || dot.den <= 0) return frame.width;
  const std::int64_t width = std::int64_t{frame.width} * dot.num / dot.den;
  return static_cast<int>(std::clamp<std::int64_t>(width, 1, 16'384));
}

SDL_YUV_CONVERSION_MODE ConversionOf(const AVFrame& frame) {
  if (frame.color_range == AVCOL_RANGE_JPEG) return SDL_YUV_CONVERSION_JPEG;
  if (frame.colorspace == AVCOL_SPC_BT709) return SDL_YUV_CONVERSION_BT709;
  if (frame.colorspace == AVCOL_SPC_UNSPECIFIED) return SDL_YUV_CONVERSION_AUTOMATIC;
  return SDL_YUV_CONVERSION_BT601;
}

}  // namespace

std::unique_ptr<SdlWindow> SdlWindow::Open(std::string& error) {
  std::unique_ptr<SdlWindow> made(new SdlWindow);
  made->window_.reset(SDL_CreateWindow("stream_player", SDL_WINDOWPOS_CENTERED,
                                       SDL_WINDOWPOS_CENTERED, kFirstWidth, kFirstHeight,
                                       SDL_WINDOW_RESIZABLE));
  if (made->window_ != nullptr) {
    made->renderer_.reset(SDL_CreateRenderer(made->window_.get(), -1, 0));
  }
  if (made->renderer_ == nullptr) {
    error = SDL_GetError();
    return nullptr;
  }
  made->Redraw();
  return made;
}

bool SdlWindow::Prepare(const AVFrame& frame) {
  UseConversion(ConversionOf(frame));
  if (!PrepareTexture(frame)) return false;
  FitToPicture(ShownWidth(frame), frame.height);
  return true;
}

bool SdlWindow::Show(const AVFrame& frame) {
  const AVFrame* planes = converter_.ToPlanes(frame);
  if (planes == nullptr) return false;
  if (!Prepare(*planes)) return false;
  SDL_UpdateYUVTexture(texture_.get(), nullptr, planes->data[0], planes->linesize[0],
                       planes->data[1], planes->linesize[1], planes->data[2], planes->linesize[2]);
  Redraw();
  return true;
}

void SdlWindow::Redraw() {
  SDL_SetRenderDrawColor(renderer_.get(), 0, 0, 0, SDL_ALPHA_OPAQUE);
  SDL_RenderClear(renderer_.get());
  if (texture_ != nullptr) SDL_RenderCopy(renderer_.get(), texture_.get(), nullptr, nullptr);
  SDL_RenderPresent(renderer_.get());
}

void SdlWindow::SetTitle(const std::string& title) {
  if (title == title_) return;
  title_ = title;
  SDL_SetWindowTitle(window_.get(), title.c_str());
}

void SdlWindow::ToggleFullScreen() {
  full_screen_ = !full_screen_;
  SDL_SetWindowFullscreen(window_.get(), full_screen_ ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
}

// A renderer may read the mode only when it creates a texture.
void SdlWindow::UseConversion(SDL_YUV_CONVERSION_MODE mode) {
  if (SDL_GetYUVConversionMode() == mode) return;
  SDL_SetYUVConversionMode(mode);
  texture_.reset();
}

bool SdlWindow::PrepareTexture(const AVFrame& frame) {
  if (texture_ != nullptr && width_ == frame.width && height_ == frame.height) return true;
  SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
  texture_.reset(SDL_CreateTexture(renderer_.get(), SDL_PIXELFORMAT_IYUV,
                                   SDL_TEXTUREACCESS_STREAMING, frame.width, frame.height));
  width_ = frame.width;
  height_ = frame.height;
  return texture_ != nullptr;
}

// The renderer keeps this aspect ratio and adds bars if the window has another.
void SdlWindow::FitToPicture(int width, int height) {
  SDL_RenderSetLogicalSize(renderer_.get(), width, height);
  if (has_picture_size_) return;
  has_picture_size_ = true;
  SDL_Rect usable{};
  if (SDL_GetDisplayUsableBounds(SDL_GetWindowDisplayIndex(window_.get()), &usable) != 0) return;
  const double fits = std::min({1.0, usable.w * 0.9 / width, usable.h * 0.9 / height});
  SDL_SetWindowSize(window_.get(), std::max(static_cast<int>(width * fits), 1),
                    std::max(static_cast<int>(height * fits), 1));
  SDL_SetWindowPosition(window_.get(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
}

}  // namespace player
