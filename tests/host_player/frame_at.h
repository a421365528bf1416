// A frame as the component delivers it.
#ifndef TESTS_HOST_PLAYER_FRAME_AT_H_
#define TESTS_HOST_PLAYER_FRAME_AT_H_

#include <cstdint>
#include <string_view>

#include "stream_player.h"

namespace player {

// The frame refers to `payload` and does not copy it, as with frames of the component.
inline MediaFrame FrameAt(std::uint64_t pts, std::string_view payload) {
  MediaFrame frame{};
  frame.pts = pts;
  frame.dts = pts / 2;
  frame.size = static_cast<std::int32_t>(payload.size());
  frame.data = reinterpret_cast<const std::uint8_t*>(payload.data());
  return frame;
}

}  // namespace player

#endif  // TESTS_HOST_PLAYER_FRAME_AT_H_
