// Fetches playlists. Bodies are received into g_playlistText and g_variantText of HlsStream.
#ifndef HLS_PLAYLIST_FETCH_H_
#define HLS_PLAYLIST_FETCH_H_

#include <cstddef>
#include <optional>
#include <string>

#include "hls/hls_task_state.h"

namespace stream {

// A transfer fails when its text would exceed this size.
inline constexpr std::size_t kMaxPlaylistSize = std::size_t{16} << 20;

// Text that earlier downloads left is dropped before the next download if it is longer than this.
inline constexpr std::size_t kMaxPlaylistLeftover = std::size_t{1} << 20;

struct PlaylistRequest {
  std::string url;
  bool with_user_agent;
};

// Fetches the top-level playlist. Returns its body, preceded by any text that earlier downloads
// left in g_playlistText, and clears g_playlistText. Returns nullopt if the transfer failed or the
// pipeline was stopped; bytes received so far stay in g_playlistText.
std::optional<std::string> FetchPlaylist(HlsTaskState& hls, const PlaylistRequest& request)
    EXCLUDES(hls.stream.playlist_mutex);

// Puts a fetched text that is not a playlist back at the front of g_playlistText.
void PutBackPlaylistBody(HlsStream& stream, const std::string& text)
    EXCLUDES(stream.playlist_mutex);

// Fetches a variant playlist and appends it to g_variantText. Returns whether the transfer
// succeeded.
bool FetchVariant(HlsTaskState& hls, const std::string& url) REQUIRES(hls.stream.playlist_mutex);

// The write callbacks. `user` points to the HlsStream. They do not refuse an HTML page; it is
// reported later as not being a playlist. The caller that performs the transfer holds
// playlist_mutex.
std::size_t OnPlaylistBytes(char* data, std::size_t size, std::size_t count, void* user);
std::size_t OnVariantBytes(char* data, std::size_t size, std::size_t count, void* user);

}  // namespace stream

#endif  // HLS_PLAYLIST_FETCH_H_
