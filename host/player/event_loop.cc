#include "event_loop.h"

#include <SDL.h>

#include <utility>

namespace player {
namespace {

constexpr double kLongestWait = 0.01;
constexpr double kMoveSeconds = 10;

}  // namespace

void EventLoop::Run() {
  double patience = 0;
  while (WaitsForMore()) {
    TakeEvents(patience);
    around_.presenter.Prepare(*around_.control.playback());
    around_.control.Tick();
    patience = around_.presenter.ShowDue(*around_.control.playback(), kLongestWait);
    around_.window.SetTitle(TitleText(around_.control.Facts()));
  }
}

bool EventLoop::WaitsForMore() const {
  if (end_wished_ || around_.interrupted()) return false;
  return !exit_at_end_ || !around_.control.HasEnded();
}

void EventLoop::TakeEvents(double patience_seconds) {
  SDL_Event event;
  // Rounded down: rather a look too many than a picture too late.
  if (SDL_WaitEventTimeout(&event, static_cast<int>(patience_seconds * 1000)) == 0) return;
  do {
    Obey(WishOf(event));
  } while (!end_wished_ && SDL_PollEvent(&event) != 0);
  // A key held down comes many times, and each move begins the stream anew.
  const double move = std::exchange(move_seconds_, 0);
  if (!end_wished_ && move != 0) around_.control.Move(move);
}

void EventLoop::Obey(Wish wish) {
  switch (wish) {
    case Wish::kNothing:
      break;
    case Wish::kPause:
      around_.control.TogglePause();
      break;
    case Wish::kBack:
      move_seconds_ -= kMoveSeconds;
      break;
    case Wish::kForward:
      move_seconds_ += kMoveSeconds;
      break;
    case Wish::kFullScreen:
      around_.window.ToggleFullScreen();
      break;
    case Wish::kRedraw:
      around_.window.Redraw();
      break;
    case Wish::kEnd:
      end_wished_ = true;
      break;
  }
}

}  // namespace player
