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
std::optional<FirstPlaylist> FetchFirstPlaylist(HlsTaskState& hls, const std::string& url) {
  const PlaylistRequest first{url, true};
  if (auto text = FetchPlaylist(hls, first)) return FirstPlaylist{first, std::move(*text)};
  hls.player.Message("PLAY Try:" + url);
  const PlaylistRequest second{CleanUrl(url), false};
  if (auto text = FetchPlaylist(hls, second)) return FirstPlaylist{second, std::move(*text)};
  hls.player.Message("PLAY Failed:" + url);
  return std::nullopt;
}

const char* Outcome(const PlaylistTraits& traits) {
  if (!traits.is_m3u) return "M3U8 NO";
  return traits.cache_no ? "M3U8 CACHE_NO OK" : "M3U8 OK";
}

// A text that is not a playlist stays, and the next body is appended to it. Kept for compatibility.
void QueueLive(HlsTaskState& hls, const std::string& url, const std::string& text) {
  if (!QueueSegmentsFromPlaylist(hls, url, text)) PutBackPlaylistBody(hls.stream, text);
}

void Refresh(HlsTaskState& hls, const FirstPlaylist& first, const std::string& url) {
  QueueLive(hls, url, first.text);
  while (hls.running.load()) {
    if (const auto text = FetchPlaylist(hls, first.request)) QueueLive(hls, url, *text);
    PauseBetweenRefreshes(hls);
  }
}

void QueueOnDemand(HlsTaskState& hls, const std::string& url, const std::string& text) {
  M3u8Header header;
  std::int64_t media_sequence = 0;
  M3u8Table entries;
  if (ParseM3u8(header, url, text, media_sequence, entries)) {
    QueueAllSegments(hls, entries);
  } else {
    PutBackPlaylistBody(hls.stream, text);
  }
}

void FollowPlaylist(HlsTaskState& hls, const std::string& url) {
  const auto first = FetchFirstPlaylist(hls, url);
  if (!first) return;
  const PlaylistTraits traits = TraitsOf(first->text);
  ReportOutcome(hls.player, Outcome(traits), url);
  if (traits.contains_failed) {
    PutBackPlaylistBody(hls.stream, first->text);
  } else if (traits.has_end) {
    QueueOnDemand(hls, url, first->text);
  } else {
    Refresh(hls, *first, url);
  }
}

}  // namespace

void PlaylistThread(HlsTaskState& hls, const std::string& url) {
  FollowPlaylist(hls, url);
  ConsoleLine("m3u8 Download thread stop.");
}

void PauseBetweenRefreshes(const HlsTaskState& hls) {
  constexpr std::chrono::milliseconds kInterval{1000};
  HlsStream& stream = hls.stream;
  const MutexLock lock(stream.g_segmentQueueMutex);
  CurrentClock().WaitFor(stream.g_segmentQueueCond, stream.g_segmentQueueMutex, kInterval,
                         [&hls] { return !hls.running.load(); });
}

}  // namespace stream
