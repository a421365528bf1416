// The requests for playlists. Bodies come in g_playlistText and g_variantText.
#ifndef HLS_PLAYLIST_FETCH_H_
#define HLS_PLAYLIST_FETCH_H_

#include <cstddef>
#include <optional>
#include <string>

#include "hls/hls_pipeline.h"

// A playlist that goes on beyond this ends its transfer.
inline constexpr std::size_t kMaxPlaylistSize = std::size_t{16} << 20;

// What an earlier download left behind is dropped before the next one when it is longer than this.
inline constexpr std::size_t kMaxPlaylistLeftover = std::size_t{1} << 20;

struct PlaylistRequest {
  std::string url;
  bool with_user_agent;  // whether SetUserAgent is asked for one
};

// The body of the top-level playlist, behind what earlier ones left in g_playlistText, which is
// empty afterwards. Nothing when the transfer failed, or was not begun since the pipeline had been
// stopped; what had come of it stays then. Takes g_playlistMutex.
std::optional<std::string> FetchPlaylist(HlsPipeline& pipeline, const PlaylistRequest& request);

// Puts the text of a fetch that was no playlist back, in front of what came since. Takes
// g_playlistMutex.
void LeavePlaylist(const std::string& text);

// Appends a variant playlist to g_variantText. With g_playlistMutex held.
bool FetchVariant(HlsPipeline& pipeline, const std::string& url);

// The write callbacks. An HTML page is not refused here: it is told as no playlist. With
// g_playlistMutex held by whoever performs the transfer.
std::size_t TakePlaylistBytes(char* data, std::size_t size, std::size_t count, void* user);
std::size_t TakeVariantBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // HLS_PLAYLIST_FETCH_H_
