#include "event_loop.h"

#include <utility>

namespace player {
namespace {

constexpr double kLongestWait = 0.01;
constexpr double kSeekStepSeconds = 10;

}  // namespace

void EventLoop::Run() {
  double max_wait = 0;
  while (WaitsForMore()) {
    HandleCommands(max_wait);
    dependencies_.presenter.Prepare(*dependencies_.control.playback());
    dependencies_.control.Tick();
    max_wait = dependencies_.presenter.ShowDue(*dependencies_.control.playback(), kLongestWait);
    dependencies_.window.SetTitle(TitleText(dependencies_.control.Facts()));
  }
}

bool EventLoop::WaitsForMore() const {
  if (is_ending_ || dependencies_.interrupted()) return false;
  return !exit_at_end_ || !dependencies_.control.HasEnded();
}

void EventLoop::HandleCommands(double max_wait_seconds) {
  for (auto command = dependencies_.commands.Wait(max_wait_seconds); command && !is_ending_;
       command = dependencies_.commands.Wait(0)) {
    Handle(*command);
  }
  // A key held down repeats, and each seek restarts the stream, so the seeks are added up first.
  const double seek = std::exchange(seek_seconds_, 0);
  if (!is_ending_ && seek != 0) dependencies_.control.SeekBy(seek);
}

void EventLoop::Handle(Command command) {
  switch (command) {
    case Command::kNothing:
      break;
    case Command::kPause:
      dependencies_.control.TogglePause();
      break;
    case Command::kBack:
      seek_seconds_ -= kSeekStepSeconds;
      break;
    case Command::kForward:
      seek_seconds_ += kSeekStepSeconds;
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
