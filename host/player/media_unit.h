// One payload of a stream with its times: the host's copy of a MediaFrame, or an access unit
// assembled from several.
#ifndef HOST_PLAYER_MEDIA_UNIT_H_
#define HOST_PLAYER_MEDIA_UNIT_H_

#include <cstdint>
#include <vector>

namespace player {

enum class Kind { kVideo, kAudio };

inline constexpr double kTicksPerSecond = 90'000;

struct MediaUnit {
  std::vector<std::uint8_t> data;
  std::uint64_t pts = 0;  // 90 kHz
  std::uint64_t dts = 0;  // 90 kHz
};

inline double SecondsOf(std::uint64_t ticks) {
  return static_cast<double>(ticks) / kTicksPerSecond;
}

}  // namespace player

#endif  // HOST_PLAYER_MEDIA_UNIT_H_
