// PlayerPort: the host's player as the pipelines use it. Without a player its calls do nothing, so
// pipelines do not check for one. Below the facade, only PlayerPort and player_lines.cc include the
// player interface.
//
// A player must not throw. If a player of this library's own compiler throws, the exception ends
// here, on any thread, so that tasks, transfers and stops continue. The call counts as returned,
// and the first exception of each start is logged. An exception of another compiler may end the
// process.
//
// A PlayerPort borrows the player and may be copied freely. Its calls run the host's code on the
// calling thread: never make one with a lock held.
#ifndef COMMON_PLAYER_PORT_H_
#define COMMON_PLAYER_PORT_H_

#include <cstdint>
#include <string>

#include "common/frame_queue.h"
#include "common/player_lines.h"

namespace stream {

// Returns the play time in whole seconds. Kept for compatibility: the fraction is dropped, both for
// the audio clock and for comparisons with the start position.
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
  void AudioFrame(const FrameRecord& frame) const;  // sends the audio clock, then the frame

 private:
  // Makes the call if there is a player. `where` is the beginning of the line that is logged if it
  // throws.
  template <typename Function>
  void Call(const char* where, const Function& call) const noexcept;

  CStreamPlayerImp* player_ = nullptr;
  const PlayerLines* lines_ = nullptr;  // null without a player
};

}  // namespace stream

#endif  // COMMON_PLAYER_PORT_H_
