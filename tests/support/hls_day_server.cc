#include "tests/support/hls_day_server.h"

#include <httplib.h>

#include <algorithm>
#include <vector>

#include "tests/support/hls_playlists.h"
#include "tests/support/ts_packets.h"

namespace stream {
namespace {

using ts_test::Bytes;

// The first segment of the encoder run that contains `segment`. Segments are counted from the
// beginning of the stream.
std::int64_t RunOf(std::int64_t segment) {
  constexpr std::int64_t kSecondRun =
      HlsDayServer::kWindow + HlsDayServer::kRestart / HlsDayServer::kSegmentSeconds - 1;
  return segment < kSecondRun ? 0 : kSecondRun;
}

// The media sequence number of a segment. The second run starts again at 0.
std::int64_t NumberOf(std::int64_t segment) {
  constexpr std::int64_t kFirstNumber = 100'000;
  return RunOf(segment) == 0 ? kFirstNumber + segment : segment - RunOf(segment);
}

std::int64_t NewestAt(std::int64_t seconds) { return HlsDayServer::SegmentsUntil(seconds) - 1; }

// Four bytes, most significant first.
Bytes NumberBytes(std::int64_t number) {
  const auto value = static_cast<std::uint64_t>(number);
  return {ts_test::Low(value >> 24), ts_test::Low(value >> 16), ts_test::Low(value >> 8),
          ts_test::Low(value)};
}

// The transport stream of a segment. Each frame fills one packet, so continuity counters continue
// from segment to segment.
std::string Packets(std::int64_t segment) {
  constexpr std::uint64_t kTicks = 90'000;
  std::string stream;
  const auto add = [&stream](const ts_test::Packet& packet) {
    stream.append(packet.begin(), packet.end());
  };
  add(ts_test::MakePat());
  add(ts_test::MakePmt());
  for (std::int64_t i = 0; i < HlsDayServer::kFramesPerSegment; ++i) {
    const std::int64_t frame = segment * HlsDayServer::kFramesPerSegment + i;
    const std::int64_t seconds = (segment - RunOf(segment)) * HlsDayServer::kSegmentSeconds + 3 * i;
    const std::uint64_t pts = (static_cast<std::uint64_t>(seconds) + 1) * kTicks;
    const int counter = static_cast<int>(frame % 16);
    const Bytes payload = NumberBytes(frame);
    add(ts_test::Packetize(ts_test::kVideoPid, ts_test::MakePes(pts, payload, pts), counter)[0]);
    add(ts_test::Packetize(ts_test::kAudioPid, ts_test::MakePes(pts, payload), counter)[0]);
  }
  return stream;
}

}  // namespace

HlsDayServer::HlsDayServer() : LocalServer(WarmUp) {
  SetUpReplies();
  Open();
}

bool HlsDayServer::WarmUp() {
  HlsDayServer server{Cold()};
  server.Open();
  return server.Answers({"/list.m3u8", "/master.m3u8", "/seg0.ts", "/nowhere"});
}

void HlsDayServer::SetUpReplies() {
  KeepConnections();
  server_->Get("/list.m3u8", [this](const auto&, auto& response) {
    ++refreshes_;
    response.set_content(Playlist(), "text/plain");
  });
  server_->Get("/master.m3u8", [this](const auto&, auto& response) {
    ++masters_;
    response.set_content(MasterPlaylist(), "text/plain");
  });
  server_->Get("/seg(\\d+).ts", [this](const auto& request, auto& response) {
    response.set_content(Segment(std::stoll(request.matches[1])), "video/mp2t");
  });
}

std::string HlsDayServer::Playlist() const {
  const std::int64_t now = time_.load();
  const bool is_old = now % kOldCopyEvery == kOldCopyEvery - 1;
  const std::int64_t newest = NewestAt(is_old ? now - kOldCopyAge : now);
  const std::int64_t oldest = std::max(RunOf(newest), newest - kWindow + 1);
  hls_test::Uris uris;
  for (std::int64_t segment = oldest; segment <= newest; ++segment) {
    uris.push_back("seg" + std::to_string(segment - RunOf(segment)) +
                   ".ts?token=" + std::to_string(now));
  }
  return hls_test::LivePlaylist(NumberOf(oldest), uris);
}

std::string HlsDayServer::MasterPlaylist() const {
  return hls_test::MasterPlaylist({{500'000, "list.m3u8?token=" + std::to_string(time_.load())}});
}

// Segment names are counted within the current run of the encoder.
std::string HlsDayServer::Segment(std::int64_t name) {
  const std::int64_t segment = RunOf(NewestAt(time_.load())) + name;
  ++(segment == segments_.load() ? segments_ : out_of_order_);
  return Packets(segment);
}

}  // namespace stream
