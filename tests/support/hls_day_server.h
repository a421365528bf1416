// An HTTP server in the test's process with a live HLS stream that lasts for days. Nothing is
// stored: playlists and segments are generated from the time, which the test sets.
//
// A segment of ten seconds holds three video and three audio frames; their payload is their number
// in the whole stream. Segment names and media sequence numbers start again when the encoder
// restarts. The query of every address changes each second. From time to time an old copy of the
// playlist is sent.
#ifndef TESTS_SUPPORT_HLS_DAY_SERVER_H_
#define TESTS_SUPPORT_HLS_DAY_SERVER_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "tests/support/local_server.h"

namespace stream {

class HlsDayServer final : public LocalServer {
 public:
  static constexpr std::int64_t kSegmentSeconds = 10;
  static constexpr std::int64_t kFramesPerSegment = 3;  // of each kind
  static constexpr std::int64_t kWindow = 5;            // segments in a playlist
  static constexpr std::int64_t kRestart = 3'000;       // seconds after the first playlist
  static constexpr std::int64_t kOldCopyEvery = 61;     // seconds
  static constexpr std::int64_t kOldCopyAge = 27;       // seconds

  HlsDayServer();
  ~HlsDayServer() { Close(); }

  // Both addresses play the same segments.
  std::string ListUrl() const { return Url("/list.m3u8"); }
  std::string MasterUrl() const { return Url("/master.m3u8"); }

  // Sets the time, in seconds since the start of the stream.
  void SetTime(std::int64_t seconds) { time_ = seconds; }

  std::int64_t Refreshes() const { return refreshes_.load(); }      // of the media playlist
  std::int64_t Masters() const { return masters_.load(); }          // of the master playlist
  std::int64_t Segments() const { return segments_.load(); }        // requested in order
  std::int64_t OutOfOrder() const { return out_of_order_.load(); }  // other segment requests
  static std::int64_t SegmentsUntil(std::int64_t seconds) {
    return kWindow + seconds / kSegmentSeconds;
  }

 private:
  explicit HlsDayServer(Cold cold) : LocalServer(cold) { SetUpReplies(); }

  static bool WarmUp();
  void SetUpReplies();
  std::string Playlist() const;
  std::string MasterPlaylist() const;
  std::string Segment(std::int64_t name);

  std::atomic<std::int64_t> time_{0};
  std::atomic<std::int64_t> refreshes_{0};
  std::atomic<std::int64_t> masters_{0};
  std::atomic<std::int64_t> segments_{0};
  std::atomic<std::int64_t> out_of_order_{0};
};

}  // namespace stream

#endif  // TESTS_SUPPORT_HLS_DAY_SERVER_H_
