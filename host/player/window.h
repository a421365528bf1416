// The window with the picture in it. For the main thread only.
#ifndef HOST_PLAYER_WINDOW_H_
#define HOST_PLAYER_WINDOW_H_

#include <string>

#include "av_memory.h"

namespace player {

class Window {
 public:
  virtual ~Window() = default;

  // Makes ready for pictures like this one. The first gives the window its size.
  virtual bool Prepare(const AVFrame& frame) = 0;

  // Returns when the picture can be seen. False when it is of no kind that can be shown.
  virtual bool Show(const AVFrame& frame) = 0;
  // The last picture once more: the window was moved, resized or uncovered.
  virtual void Redraw() = 0;

  virtual void SetTitle(const std::string& title) = 0;
  virtual void ToggleFullScreen() = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_WINDOW_H_
