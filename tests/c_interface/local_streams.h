// Short streams in local files, and waiting until they are played whole. Each file has a name of
// its own, since an address that was played before goes on where it was stopped.
#ifndef TESTS_C_INTERFACE_LOCAL_STREAMS_H_
#define TESTS_C_INTERFACE_LOCAL_STREAMS_H_

#include <cstddef>
#include <string>

#include "tests/support/flv_tags.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/recording_player.h"

namespace c_interface_test {

inline constexpr std::size_t kFrames = 12;  // pictures of a stream, and audio frames
inline constexpr std::size_t kFlvVideoFrames = kFrames + 2;  // and two parameter sets

// The address of a file that holds an FLV stream.
inline std::string LocalFlv(const std::string& name) {
  return "file://" + WriteLocalFile(name + ".flv", flv_test::MakeStream(kFrames));
}

// The address of a file that holds an MP4 movie: it makes the component use every callback.
inline std::string LocalMp4(const std::string& name) {
  mp4_test::Shape shape;
  shape.samples = kFrames;
  const mp4_test::Movie movie = mp4_test::MakeMovie(shape);
  return "file://" + WriteLocalFile(name + ".mp4", mp4_test::BuildMp4(movie).bytes);
}

// Wait until all frames of one are delivered. False if that does not happen.
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

#endif  // TESTS_C_INTERFACE_LOCAL_STREAMS_H_
