// PlayerPort: the host's player as the pipelines see it. It does nothing where there is no player,
// so that a pipeline reports and delivers without asking, and it is the one place below the facade
// that knows the player interface.
//
// A player must not throw. What one of this library's own compiler throws ends here, on whatever
// thread, so that a task, a transfer or a stop goes on: the call counts as returned, and the first
// one of a start is logged. An exception of another compiler may end the process.
//
// It borrows the player and may be copied freely. Its calls go straight to the host's code on the
// calling thread: never make one with a lock held.
#ifndef COMMON_PLAYER_PORT_H_
#define COMMON_PLAYER_PORT_H_

#include <cstdint>
#include <string>

#include "common/frame_queue.h"
#include "common/player_lines.h"

// The play time in whole seconds: the fraction is dropped on purpose, for the audio clock and for
// comparisons with the start position alike.
float WholeSeconds(std::uint64_t play_time);

class PlayerPort {
 public:
  PlayerPort() = default;
  explicit PlayerPort(CStreamPlayerImp* player);

  explicit operator bool() const { return player_ != nullptr; }

  void Message(std::string line) const;
  void PlayResult(std::string line) const;
  void Duration(float seconds) const;
  void BufferedTime(float seconds) const;

  void VideoFrame(const FrameRecord& frame) const;
  void AudioFrame(const FrameRecord& frame) const;  // the audio clock first, then the frame

 private:
  // Makes the call, if there is a player. `where` begins the line about what it throws.
  template <typename Function>
  void Call(const char* where, const Function& call) const noexcept;

  CStreamPlayerImp* player_ = nullptr;
  const PlayerLines* lines_ = nullptr;  // set where there is a player
};

#endif  // COMMON_PLAYER_PORT_H_
