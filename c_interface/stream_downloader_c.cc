#include "stream_downloader_c.h"

#include <new>
#include <string>

#include "callback_player.h"
#include "callback_scope.h"
#include "stream_downloader.h"

struct sd_downloader {
  explicit sd_downloader(const sd_callbacks& callbacks) : player(callbacks), facade(&player) {}

  CallbackPlayer player;  // must outlive the facade
  CStreamDownloader facade;
};

namespace {

// Runs `call`, unless the calling thread is inside a callback. Converts exceptions to results.
template <typename Function>
sd_result Guarded(const Function& call) noexcept {
  if (CallbackScope::IsInside()) return SD_ERROR_IN_CALLBACK;
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return SD_ERROR_OUT_OF_MEMORY;
  } catch (...) {
    return SD_ERROR_OTHER;
  }
}

// As Guarded, with the facade of a downloader. Refuses null.
template <typename Function>
sd_result GuardedCallOf(sd_downloader* downloader, const Function& call) noexcept {
  return Guarded([&] {
    if (downloader == nullptr) return SD_ERROR_NULL_DOWNLOADER;
    return call(downloader->facade);
  });
}

}  // namespace

sd_result sd_create(const sd_callbacks* callbacks, sd_downloader** out) {
  if (out != nullptr) *out = nullptr;
  return Guarded([&] {
    if (out == nullptr) return SD_ERROR_NULL_OUT;
    if (callbacks == nullptr) return SD_ERROR_NULL_CALLBACKS;
    if (callbacks->size != sizeof(sd_callbacks)) return SD_ERROR_CALLBACKS_SIZE;
    *out = new sd_downloader(*callbacks);
    return SD_OK;
  });
}

sd_result sd_destroy(sd_downloader* downloader) {
  return Guarded([&] {
    if (downloader == nullptr) return SD_ERROR_NULL_DOWNLOADER;
    downloader->facade.EndDownload();  // an exception in the destructor would end the process
    delete downloader;
    return SD_OK;
  });
}

sd_result sd_begin_download(sd_downloader* downloader, const char* url, size_t length) {
  return GuardedCallOf(downloader, [&](CStreamDownloader& facade) {
    if (url == nullptr) return SD_ERROR_NULL_ADDRESS;
    if (length == 0) return SD_ERROR_EMPTY_ADDRESS;
    if (length > std::string().max_size()) return SD_ERROR_OUT_OF_MEMORY;  // for example (size_t)-1
    return facade.BeginDownload(std::string(url, length)) ? SD_OK : SD_ERROR_UNKNOWN_SCHEME;
  });
}

sd_result sd_end_download(sd_downloader* downloader) {
  return GuardedCallOf(downloader, [](CStreamDownloader& facade) {
    return facade.EndDownload() ? SD_OK : SD_NOT_PLAYING;
  });
}

sd_result sd_set_start_position(sd_downloader* downloader, float seconds) {
  return GuardedCallOf(downloader, [seconds](CStreamDownloader& facade) {
    return facade.SetStartPostion(seconds) ? SD_OK : SD_NOTHING_STARTED;
  });
}
