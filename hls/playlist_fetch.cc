#include "hls/playlist_fetch.h"

#include <utility>

#include "common/user_agent.h"

namespace stream {
namespace {

std::size_t Append(std::string& text, HlsStream& stream, const char* data, std::size_t length) {
  if (!stream.ActiveRuns() || length > kMaxPlaylistSize - text.size()) return 0;
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

std::size_t OnPlaylistBytes(char* data, std::size_t size, std::size_t count, void* user) {
  HlsStream& stream = *static_cast<HlsStream*>(user);
  stream.playlist_mutex.AssumeHeld();
  return Append(stream.g_playlistText, stream, data, size * count);
}

std::size_t OnVariantBytes(char* data, std::size_t size, std::size_t count, void* user) {
  HlsStream& stream = *static_cast<HlsStream*>(user);
  stream.playlist_mutex.AssumeHeld();
  return Append(stream.g_variantText, stream, data, size * count);
}

std::optional<std::string> FetchPlaylist(HlsTaskState& hls, const PlaylistRequest& request) {
  const MutexLock lock(hls.stream.playlist_mutex);
  TruncateLeftover(hls.stream.g_playlistText);
  const Transfer transfer{request.url, GuardedCallback<OnPlaylistBytes>, &hls.stream, hls.running,
                          hls.silence_limit};
  if (!Perform(hls.playlistHandle.get(), transfer, request.with_user_agent)) {
    return std::nullopt;
  }
  return std::exchange(hls.stream.g_playlistText, {});
}

void PutBackPlaylistBody(HlsStream& stream, const std::string& text) {
  const MutexLock lock(stream.playlist_mutex);
  stream.g_playlistText.insert(0, text);
}

bool FetchVariant(HlsTaskState& hls, const std::string& url) {
  TruncateLeftover(hls.stream.g_variantText);
  const Transfer transfer{url, GuardedCallback<OnVariantBytes>, &hls.stream, hls.running,
                          hls.silence_limit};
  return Perform(hls.variantHandle.get(), transfer, true);
}

}  // namespace stream
