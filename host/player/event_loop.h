// The loop of the main thread while a stream plays: commands, pictures, window title.
#ifndef HOST_PLAYER_EVENT_LOOP_H_
#define HOST_PLAYER_EVENT_LOOP_H_

#include <functional>

#include "command.h"
#include "play_control.h"
#include "presenter.h"
#include "window.h"

namespace player {

class EventLoop {
 public:
  struct Dependencies {
    CommandSource& commands;
    Window& window;
    Presenter& presenter;
    PlayControl& control;
    std::function<bool()> interrupted;
  };

  // All references are borrowed.
  EventLoop(const Dependencies& dependencies, bool exit_at_end)
      : dependencies_(dependencies), exit_at_end_(exit_at_end) {}

  // Runs until a kEnd command or an interruption or, with `exit_at_end`, until the stream has
  // ended.
  void Run();

 private:
  bool WaitsForMore() const;
  void HandleCommands(double max_wait_seconds);
  void Handle(Command command);

  const Dependencies dependencies_;
  const bool exit_at_end_;
  bool is_ending_ = false;
  double seek_seconds_ = 0;  // requested, but not performed yet
};

}  // namespace player

#endif  // HOST_PLAYER_EVENT_LOOP_H_
