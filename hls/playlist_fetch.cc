#include "hls/playlist_fetch.h"

#include <mutex>
#include <utility>

#include "common/user_agent.h"
#include "hls/hls_state.h"

namespace {

std::size_t Take(std::string& text, const char* data, std::size_t length) {
  if (!ActiveM3u8Runs() || length > kMaxPlaylistSize - text.size()) return 0;
  if (length > 0) text.append(data, length);
  return length;
}

// Truncates the rest of an earlier body after its last complete line, or clears it if it is too
// long. Otherwise it could grow without limit, and its partial last line would merge with the first
// line of the next body, which would then not be recognized as a playlist.
void TruncateLeftover(std::string& leftover) {
  const std::size_t end = leftover.find_last_of('\n');
  const bool too_long = leftover.size() > kMaxPlaylistLeftover;
  leftover.resize(end == std::string::npos || too_long ? 0 : end + 1);
}

bool Perform(CURL* handle, const Transfer& transfer, bool with_user_agent) {
  if (handle == nullptr || !transfer.running.load()) return false;
  SetUpTransfer(handle, transfer);
  if (with_user_agent) SetUserAgent(handle, transfer.url);
  return PerformTransfer(handle, transfer) == CURLE_OK;
}

}  // namespace

std::size_t TakePlaylistBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  return Take(*g_playlistText, data, size * count);
}

std::size_t TakeVariantBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  return Take(*g_variantText, data, size * count);
}

std::optional<std::string> FetchPlaylist(HlsPipeline& pipeline, const PlaylistRequest& request) {
  const std::lock_guard lock(g_playlistMutex);
  TruncateLeftover(*g_playlistText);
  if (!Perform(pipeline.playlistHandle.get(),
               {request.url, GuardedCallback<TakePlaylistBytes>, nullptr, pipeline.running,
                pipeline.silence_limit},
               request.with_user_agent)) {
    return std::nullopt;
  }
  return std::exchange(*g_playlistText, {});
}

void PutBackPlaylistBody(const std::string& text) {
  const std::lock_guard lock(g_playlistMutex);
  g_playlistText->insert(0, text);
}

bool FetchVariant(HlsPipeline& pipeline, const std::string& url) {
  TruncateLeftover(*g_variantText);
  return Perform(
      pipeline.variantHandle.get(),
      {url, GuardedCallback<TakeVariantBytes>, nullptr, pipeline.running, pipeline.silence_limit},
      true);
}
