#include "event_loop.h"

#include <utility>

namespace player {
namespace {

constexpr double kLongestWait = 0.01;
constexpr double kMoveSeconds = 10;

}  // namespace

void EventLoop::Run() {
  double patience = 0;
  while (WaitsForMore()) {
    TakeCommands(patience);
    dependencies_.presenter.Prepare(*dependencies_.control.playback());
    dependencies_.control.Tick();
    patience = dependencies_.presenter.ShowDue(*dependencies_.control.playback(), kLongestWait);
    dependencies_.window.SetTitle(TitleText(dependencies_.control.Facts()));
  }
}

bool EventLoop::WaitsForMore() const {
  if (is_ending_ || dependencies_.interrupted()) return false;
  return !exit_at_end_ || !dependencies_.control.HasEnded();
}

void EventLoop::TakeCommands(double patience_seconds) {
  for (auto command = dependencies_.commands.Wait(patience_seconds); command && !is_ending_;
       command = dependencies_.commands.Wait(0)) {
    Handle(*command);
  }
  // A key held down repeats, and each seek restarts the stream, so the moves are added up first.
  const double move = std::exchange(move_seconds_, 0);
  if (!is_ending_ && move != 0) dependencies_.control.Move(move);
}

void EventLoop::Handle(Command command) {
  switch (command) {
    case Command::kNothing:
      break;
    case Command::kPause:
      dependencies_.control.TogglePause();
      break;
    case Command::kBack:
      move_seconds_ -= kMoveSeconds;
      break;
    case Command::kForward:
      move_seconds_ += kMoveSeconds;
      break;
    case Command::kFullScreen:
      dependencies_.window.ToggleFullScreen();
      break;
    case Command::kRedraw:
      dependencies_.window.Redraw();
      break;
    case Command::kEnd:
      is_ending_ = true;
      break;
  }
}

}  // namespace player
