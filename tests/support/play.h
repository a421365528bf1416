// A facade, a recording player and a server: the common base of the tests that play a stream.
#ifndef TESTS_SUPPORT_PLAY_H_
#define TESTS_SUPPORT_PLAY_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"

template <typename Server>
class Play : public testing::Test {
 protected:
  using Record = RecordingPlayer::Record;

  bool WaitForVideo(std::size_t count) {
    return player_.WaitFor([count](const Record& record) { return record.video.size() >= count; });
  }
  bool WaitForAudio(std::size_t count) {
    return player_.WaitFor([count](const Record& record) { return record.audio.size() >= count; });
  }
  bool WaitForMessage(const std::string& line) {
    return player_.WaitFor([&line](const Record& record) { return record.HasMessage(line); });
  }

  // Stops. Every later call of the player fails the test.
  bool Stop() {
    const bool was_running = downloader_.EndDownload();
    player_.Close();
    return was_running;
  }

  Server server_;
  RecordingPlayer player_;
  CStreamDownloader downloader_{&player_};
};

// The recorded frames as text, video first, without anything that depends on the time of delivery.
inline std::vector<std::string> Dump(const RecordingPlayer::Record& record) {
  std::vector<std::string> lines;
  for (const auto* frames : {&record.video, &record.audio}) {
    for (const RecordedFrame& frame : *frames) {
      lines.push_back(std::to_string(frame.pts) + " " + std::to_string(frame.dts) + " " +
                      std::string(frame.payload.begin(), frame.payload.end()));
    }
  }
  return lines;
}

#endif  // TESTS_SUPPORT_PLAY_H_
