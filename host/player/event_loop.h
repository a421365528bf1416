// What the main thread does while a stream plays: keys, pictures, the title.
#ifndef HOST_PLAYER_EVENT_LOOP_H_
#define HOST_PLAYER_EVENT_LOOP_H_

#include <functional>
#include <string>

#include "clock.h"
#include "keys.h"
#include "play_control.h"
#include "presenter.h"
#include "window.h"

namespace player {

class EventLoop {
 public:
  struct Surroundings {
    Window& window;
    Presenter& presenter;
    PlayControl& control;
    std::function<bool()> interrupted;
  };

  // All are borrowed.
  EventLoop(const Surroundings& around, bool exit_at_end)
      : around_(around), exit_at_end_(exit_at_end) {}

  // Until somebody wishes the end or, with `exit_at_end`, the stream has ended.
  void Run();

 private:
  bool WaitsForMore() const;
  void TakeEvents(double patience_seconds);
  void Obey(Wish wish);

  const Surroundings around_;
  const bool exit_at_end_;
  bool end_wished_ = false;
  double move_seconds_ = 0;  // wished and not done yet
};

}  // namespace player

#endif  // HOST_PLAYER_EVENT_LOOP_H_
