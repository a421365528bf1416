#include "hls/playlist_thread.h"

#include <chrono>
#include <optional>
#include <utility>

#include "common/address.h"
#include "common/clock.h"
#include "common/console.h"
#include "common/pipeline.h"
#include "hls/playlist/m3u8_playlist.h"
#include "hls/playlist_fetch.h"
#include "hls/playlist_ingest.h"

namespace stream {
namespace {

// Words that are searched for anywhere in the playlist's text. Kept for compatibility.
struct PlaylistTraits {
  bool is_m3u;
  bool cache_no;
  bool contains_failed;  // an error page of a server
  bool has_end;
};

PlaylistTraits TraitsOf(const std::string& text) {
  const auto contains = [&text](const char* words) {
    return text.find(words) != std::string::npos;
  };
  return {contains("#EXTM3U"), contains("#EXT-X-ALLOW-CACHE:NO"), contains("failed"),
          contains("#EXT-X-ENDLIST")};
}

struct FirstPlaylist {
  PlaylistRequest request;  // the one that succeeded; refreshes repeat it
  std::string text;
};

// If the first request fails, a second one follows at once, for the cleaned address and without a
// user agent. Kept for compatibility.
std::optional<FirstPlaylist> FetchFirstPlaylist(HlsPipeline& pipeline, const std::string& url) {
  const PlaylistRequest first{url, true};
  if (auto text = FetchPlaylist(pipeline, first)) return FirstPlaylist{first, std::move(*text)};
  pipeline.player.Message("PLAY Try:" + url);
  const PlaylistRequest second{CleanUrl(url), false};
  if (auto text = FetchPlaylist(pipeline, second)) return FirstPlaylist{second, std::move(*text)};
  pipeline.player.Message("PLAY Failed:" + url);
  return std::nullopt;
}

const char* Outcome(const PlaylistTraits& traits) {
  if (!traits.is_m3u) return "M3U8 NO";
  return traits.cache_no ? "M3U8 CACHE_NO OK" : "M3U8 OK";
}

// A text that is not a playlist stays, and the next body is appended to it. Kept for compatibility.
void QueueLive(HlsPipeline& pipeline, const std::string& url, const std::string& text) {
  if (!QueueSegmentsFromPlaylist(pipeline, url, text)) PutBackPlaylistBody(pipeline.stream, text);
}

void Refresh(HlsPipeline& pipeline, const FirstPlaylist& first, const std::string& url) {
  QueueLive(pipeline, url, first.text);
  while (pipeline.running.load()) {
    if (const auto text = FetchPlaylist(pipeline, first.request)) QueueLive(pipeline, url, *text);
    PauseBetweenRefreshes(pipeline);
  }
}

void QueueOnDemand(HlsPipeline& pipeline, const std::string& url, const std::string& text) {
  M3u8Header header;
  std::int64_t media_sequence = 0;
  M3u8Table entries;
  if (ParseM3u8(header, url, text, media_sequence, entries)) {
    QueueAllSegments(pipeline, entries);
  } else {
    PutBackPlaylistBody(pipeline.stream, text);
  }
}

void FollowPlaylist(HlsPipeline& pipeline, const std::string& url) {
  const auto first = FetchFirstPlaylist(pipeline, url);
  if (!first) return;
  const PlaylistTraits traits = TraitsOf(first->text);
  ReportOutcome(pipeline.player, Outcome(traits), url);
  if (traits.contains_failed) {
    PutBackPlaylistBody(pipeline.stream, first->text);
  } else if (traits.has_end) {
    QueueOnDemand(pipeline, url, first->text);
  } else {
    Refresh(pipeline, *first, url);
  }
}

}  // namespace

void PlaylistThread(HlsPipeline& pipeline, const std::string& url) {
  FollowPlaylist(pipeline, url);
  ConsoleLine("m3u8 Download thread stop.");
}

void PauseBetweenRefreshes(const HlsPipeline& pipeline) {
  constexpr std::chrono::milliseconds kInterval{1000};
  HlsStream& stream = pipeline.stream;
  const MutexLock lock(stream.g_segmentQueueMutex);
  CurrentClock().WaitFor(stream.g_segmentQueueCond, stream.g_segmentQueueMutex, kInterval,
                         [&pipeline] { return !pipeline.running.load(); });
}

}  // namespace stream
