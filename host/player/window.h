// The window that shows the pictures. Main thread only.
#ifndef HOST_PLAYER_WINDOW_H_
#define HOST_PLAYER_WINDOW_H_

#include <string>

#include "av_memory.h"

namespace player {

class Window {
 public:
  virtual ~Window() = default;

  // Prepares for pictures like this one. The first call sets the size of the window.
  virtual bool Prepare(const AVFrame& frame) = 0;

  // Returns when the picture is visible. False if its format cannot be shown.
  virtual bool Show(const AVFrame& frame) = 0;
  // Shows the last picture again, after the window was moved, resized or uncovered.
  virtual void Redraw() = 0;

  virtual void SetTitle(const std::string& title) = 0;
  virtual void ToggleFullScreen() = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_WINDOW_H_
