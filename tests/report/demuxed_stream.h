// Frames that the demultiplexer makes of a transport stream, for the tests of the report.
#ifndef TESTS_REPORT_DEMUXED_STREAM_H_
#define TESTS_REPORT_DEMUXED_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "common/frame_queue.h"
#include "tests/report/report_support.h"
#include "tests/support/ts_packets.h"
#include "ts/ts_demux.h"

namespace report {

// The payload of a video PES packet: an access unit delimiter, then a slice.
inline const stream::ts_test::Bytes kAccessUnit = {0, 0, 0,    1, 0x09, 0xF0, 0, 0,
                                                   0, 1, 0x41, 1, 2,    3,    4};

struct PesTimes {
  std::uint64_t pts;
  std::optional<std::uint64_t> dts;  // nullopt: the PES packet has only a PTS
};

// PES packets in decoding order, 40 ms apart from `first_pts` on. As in streams of ffmpeg, they
// have a DTS only if it differs from the PTS.
inline std::vector<PesTimes> PesOrder(const std::vector<int>& shown, std::uint64_t first_pts) {
  std::vector<PesTimes> order;
  for (std::size_t n = 0; n < shown.size(); ++n) {
    const std::uint64_t pts = first_pts + static_cast<std::uint64_t>(shown[n]) * kTicksOfFrame;
    const std::uint64_t dts = first_pts - kTicksOfFrame + n * kTicksOfFrame;
    order.push_back({pts, pts == dts ? std::nullopt : std::optional(dts)});
  }
  return order;
}

inline std::vector<PesTimes> WithoutBFrames(int count, std::uint64_t first_pts) {
  std::vector<PesTimes> order;
  for (int n = 0; n < count; ++n) {
    order.push_back({first_pts + static_cast<std::uint64_t>(n) * kTicksOfFrame, std::nullopt});
  }
  return order;
}

// I P B P B ...: the DTS of each B-frame equals its PTS.
inline std::vector<PesTimes> WithBFrames(int count, std::uint64_t first_pts) {
  std::vector<int> shown = {0};
  for (int n = 1; n + 1 < count; n += 2) {
    shown.push_back(n + 1);
    shown.push_back(n);
  }
  return PesOrder(shown, first_pts);
}

// The bytes after the timestamps in the PES header.
using HeaderBytes = stream::ts_test::Bytes;

// Demultiplexes a program with this video and one audio frame beside each video frame. Record()
// passes on a frame of each kind every `ms_of_frame` milliseconds, as to a host without pacing or,
// with kMsOfFrame, to one with pacing.
class DemuxedStream {
 public:
  explicit DemuxedStream(const std::vector<PesTimes>& video, const HeaderBytes& header = {}) {
    const stream::TsDemuxLock feeding;
    stream::ProcessTsDemuxer().Reset();
    stream::ResetFrameQueues();
    Feed(stream::ts_test::MakePat());
    Feed(stream::ts_test::MakePmt());
    for (std::size_t n = 0; n < video.size(); ++n) {
      FeedPes(stream::ts_test::kVideoPid, n, Pes(video[n], header));
      const PesTimes audio{video.front().pts + n * kTicksOfFrame, std::nullopt};
      stream::ts_test::Bytes adts(60, 0x55);
      adts[0] = 0xFF;
      adts[1] = 0xF1;
      FeedPes(stream::ts_test::kAudioPid, n, stream::ts_test::MakePes(audio.pts, adts));
    }
  }
  ~DemuxedStream() { stream::ProcessTsDemuxer().Reset(); }
  DemuxedStream(const DemuxedStream&) = delete;
  DemuxedStream& operator=(const DemuxedStream&) = delete;

  ReportRecord Record(double ms_of_frame) {
    ReportRecord record;
    for (double ms = 0;; ms += ms_of_frame) {
      const stream::FrameNodePtr video = stream::PopVideoFrame();
      const stream::FrameNodePtr audio = stream::PopAudioFrame();
      if (video) record.AddVideo(ms, FrameOf(*video));
      if (audio) record.AddAudio(ms, FrameOf(*audio));
      if (!video && !audio) return record;
    }
  }

 private:
  static void Feed(const stream::ts_test::Packet& packet) {
    stream::ts_demux_feed(packet.data(), stream::kTsPacketSize);
  }

  static void FeedPes(std::uint16_t pid, std::size_t counter, const stream::ts_test::Bytes& pes) {
    for (const auto& packet : stream::ts_test::Packetize(pid, pes, static_cast<int>(counter)))
      Feed(packet);
  }

  static stream::ts_test::Bytes Pes(const PesTimes& times, const HeaderBytes& header) {
    constexpr std::size_t kHeaderLengthAt = 8;
    stream::ts_test::Bytes pes = stream::ts_test::MakePes(times.pts, {}, times.dts);
    pes[kHeaderLengthAt] = static_cast<std::uint8_t>(pes[kHeaderLengthAt] + header.size());
    stream::ts_test::Append(pes, header);
    stream::ts_test::Append(pes, kAccessUnit);
    return pes;
  }

  static MediaFrame FrameOf(const stream::FrameNode& node) {
    MediaFrame frame{};
    frame.pts = node.pts;
    frame.dts = node.dts;
    frame.playTime = node.playTime;
    frame.size = node.size;
    frame.data = node.data;
    return frame;
  }
};

}  // namespace report

#endif  // TESTS_REPORT_DEMUXED_STREAM_H_
