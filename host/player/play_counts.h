// Counters of playing, totalled over all starts of a program run. Safe from any thread.
#ifndef HOST_PLAYER_PLAY_COUNTS_H_
#define HOST_PLAYER_PLAY_COUNTS_H_

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace player {

struct PlayCounts {
  using Count = std::atomic<std::uint64_t>;

  Count video_frames{0};   // calls of OnVideoFrame
  Count access_units{0};   // access units sent to the decoder
  Count skipped_units{0};  // access units before the first at which decoding can begin
  Count pictures{0};       // decoded
  Count shown{0};
  Count late_pictures{0};             // decoded, but too late to be shown
  Count audio_frames{0};              // calls of OnAudioFrame
  Count decoded_audio_frames{0};      // AAC frames decoded
  Count errors{0};                    // decoding and display errors, and exceptions in player calls
  std::atomic<double> apart{0};       // seconds: largest distance between picture and audio
  std::atomic<bool> compared{false};  // whether a picture was ever compared with audio

  // Records that a picture of the stream time `picture` was shown while audio of `audio` was heard.
  void Compare(double picture, double audio);
};

// One line.
std::string CountsText(const PlayCounts& counts);

}  // namespace player

#endif  // HOST_PLAYER_PLAY_COUNTS_H_
