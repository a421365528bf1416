// What is counted while playing, over all starts of a run of the program. Safe from any thread.
#ifndef HOST_PLAYER_PLAY_COUNTS_H_
#define HOST_PLAYER_PLAY_COUNTS_H_

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace player {

struct PlayCounts {
  using Count = std::atomic<std::uint64_t>;

  Count video_frames{0};  // calls of OnVideoFrame
  Count access_units{0};  // what they were put together to
  Count left_out{0};      // access units before the first that decoding can begin with
  Count pictures{0};      // decoded
  Count shown{0};
  Count passed_over{0};               // decoded, but too late to be shown
  Count audio_frames{0};              // calls of OnAudioFrame
  Count sounds{0};                    // AAC frames decoded
  Count errors{0};                    // complaints of the decoders
  std::atomic<double> apart{0};       // seconds: the largest distance of picture and sound
  std::atomic<bool> compared{false};  // whether there ever were both

  // A picture of the stream time `picture` is shown while the sound of the time `sound` is heard.
  void Compare(double picture, double sound);
};

// One line.
std::string CountsText(const PlayCounts& counts);

}  // namespace player

#endif  // HOST_PLAYER_PLAY_COUNTS_H_
