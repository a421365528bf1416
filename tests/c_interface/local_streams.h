// Short streams in local files, and waits for their delivery. Each file needs its own name, because
// an address that was played before continues where it was stopped.
#ifndef TESTS_C_INTERFACE_LOCAL_STREAMS_H_
#define TESTS_C_INTERFACE_LOCAL_STREAMS_H_

#include <cstddef>
#include <string>

#include "tests/support/flv_tags.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/recording_player.h"

namespace stream {

namespace c_interface_test {

inline constexpr std::size_t kFrames = 12;                   // of each kind in a stream
inline constexpr std::size_t kFlvVideoFrames = kFrames + 2;  // and the two parameter sets

// Writes an FLV stream to a file and returns its address.
inline std::string LocalFlv(const std::string& name) {
  return "file://" + WriteLocalFile(name + ".flv", flv_test::MakeStream(kFrames));
}

// Writes an MP4 movie to a file and returns its address. Its playback calls every callback.
inline std::string LocalMp4(const std::string& name) {
  mp4_test::Shape shape;
  shape.samples = kFrames;
  const mp4_test::Movie movie = mp4_test::MakeMovie(shape);
  return "file://" + WriteLocalFile(name + ".mp4", mp4_test::BuildMp4(movie).bytes);
}

// Wait until all frames of the stream are delivered. False if the time limit expires first.
inline bool PlayedFlv(RecordingPlayer& player) {
  return player.WaitFor([](const RecordingPlayer::Record& record) {
    return record.video.size() >= kFlvVideoFrames && record.audio.size() >= kFrames;
  });
}
inline bool PlayedMp4(RecordingPlayer& player) {
  return player.WaitFor([](const RecordingPlayer::Record& record) {
    return record.video.size() >= kFrames && record.audio.size() >= kFrames &&
           !record.results.empty();
  });
}

}  // namespace c_interface_test

}  // namespace stream

#endif  // TESTS_C_INTERFACE_LOCAL_STREAMS_H_
