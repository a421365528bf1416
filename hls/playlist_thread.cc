#include "hls/playlist_thread.h"

#include <mutex>
#include <optional>

#include "common/address.h"
#include "common/console.h"
#include "hls/hls_state.h"
#include "hls/playlist_fetch.h"
#include "hls/segment_queue.h"

namespace {

// What matters of a playlist's text, wherever in it the words stand: kept on purpose.
struct PlaylistTraits {
  bool is_m3u;
  bool cache_no;
  bool says_failed;  // the error page of a server
  bool has_end;
};

PlaylistTraits TraitsOfPlaylist() {
  const std::lock_guard lock(g_playlistMutex);
  const auto contains = [](const char* words) {
    return g_playlistText->find(words) != std::string::npos;
  };
  return {contains("#EXTM3U"), contains("#EXT-X-ALLOW-CACHE:NO"), contains("failed"),
          contains("#EXT-X-ENDLIST")};
}

// The request that succeeded, which is the one that refreshes repeat. The second one goes to the
// cleaned address, at once, and without a user agent: kept on purpose.
std::optional<PlaylistRequest> FetchFirstPlaylist(HlsPipeline& pipeline, const std::string& url) {
  const PlaylistRequest first{url, true};
  if (FetchPlaylist(pipeline, first)) return first;
  pipeline.player.Message("PLAY Try:" + url);
  const PlaylistRequest second{CleanUrl(url), false};
  if (FetchPlaylist(pipeline, second)) return second;
  pipeline.player.Message("PLAY Failed:" + url);
  return std::nullopt;
}

const char* Outcome(const PlaylistTraits& traits) {
  if (!traits.is_m3u) return "M3U8 NO:";
  return traits.cache_no ? "M3U8 CACHE_NO OK:" : "M3U8 OK:";
}

void Refresh(HlsPipeline& pipeline, const PlaylistRequest& request, const std::string& url) {
  QueueSegmentsFromPlaylist(pipeline, url);
  while (pipeline.running.load()) {
    if (FetchPlaylist(pipeline, request)) QueueSegmentsFromPlaylist(pipeline, url);
    PauseBetweenRefreshes(pipeline);
  }
}

void QueueOnDemand(HlsPipeline& pipeline, const std::string& url) {
  M3u8Header header;
  std::int64_t mediaSequence = 0;
  M3u8Table entries;
  {
    const std::lock_guard lock(g_playlistMutex);
    if (!ParseM3u8(header, url, *g_playlistText, mediaSequence, entries)) return;
    g_playlistText->clear();
  }
  QueueAllSegments(pipeline, entries);
}

void FollowPlaylist(HlsPipeline& pipeline, const std::string& url) {
  const auto request = FetchFirstPlaylist(pipeline, url);
  if (!request) return;
  const PlaylistTraits traits = TraitsOfPlaylist();
  pipeline.player.Message(std::string("PLAY ") + Outcome(traits) + url);
  pipeline.player.PlayResult(std::string("PLAY:") + Outcome(traits) + url);
  if (traits.says_failed) return;
  if (traits.has_end) {
    QueueOnDemand(pipeline, url);
  } else {
    Refresh(pipeline, *request, url);
  }
}

}  // namespace

void PlaylistThread(HlsPipeline& pipeline, const std::string& url) {
  FollowPlaylist(pipeline, url);
  ConsoleLine("m3u8 Download thread stop.");
}
