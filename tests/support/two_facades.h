// A second facade with its own player, in addition to the facade of a Play fixture.
#ifndef TESTS_SUPPORT_TWO_FACADES_H_
#define TESTS_SUPPORT_TWO_FACADES_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"

inline bool WaitForFrames(RecordingPlayer& player, std::size_t count) {
  return player.WaitFor(
      [count](const RecordingPlayer::Record& record) { return record.video.size() >= count; });
}

// Plays `url` on another facade until its player receives a message that begins with `line`. Then
// the facade is destroyed, which stops it, and after it its player.
inline void PlayOnAnotherFacade(const std::string& url, const std::string& line) {
  RecordingPlayer player;
  CStreamDownloader facade(&player);
  facade.BeginDownload(url);
  EXPECT_TRUE(player.WaitFor([&line](const RecordingPlayer::Record& record) {
    return !record.MessagesWith(line).empty();
  }));
}

#endif  // TESTS_SUPPORT_TWO_FACADES_H_
