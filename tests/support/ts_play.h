// A facade, a recording player and a server, for tests that play transport streams.
#ifndef TESTS_SUPPORT_TS_PLAY_H_
#define TESTS_SUPPORT_TS_PLAY_H_

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"
#include "tests/support/test_server.h"
#include "tests/support/ts_packets.h"

class TsPlay : public testing::Test {
 protected:
  using Record = RecordingPlayer::Record;

  // What EndDownload may take, whatever the server does.
  static constexpr std::chrono::milliseconds kStopLimit{1500};

  bool WaitForVideo(std::size_t count) {
    return player_.WaitFor([count](const Record& record) { return record.video.size() >= count; });
  }
  bool WaitForAudio(std::size_t count) {
    return player_.WaitFor([count](const Record& record) { return record.audio.size() >= count; });
  }
  bool WaitForMessage(const std::string& line) {
    return player_.WaitFor([&line](const Record& record) { return record.HasMessage(line); });
  }

  // Stops, checks that it was quick, and lets nothing come after it.
  bool Stop() {
    const auto before = std::chrono::steady_clock::now();
    const bool was_running = downloader_.EndDownload();
    EXPECT_LT(std::chrono::steady_clock::now() - before, kStopLimit);
    player_.Close();
    return was_running;
  }

  TestServer server_;
  RecordingPlayer player_;
  CStreamDownloader downloader_{&player_};
};

#endif  // TESTS_SUPPORT_TS_PLAY_H_
