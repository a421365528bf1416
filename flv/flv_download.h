// The download side of the FLV pipeline: fetches the stream with libcurl, from the network or from
// a local file, into g_flvStream.
#ifndef FLV_FLV_DOWNLOAD_H_
#define FLV_FLV_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

// Fetches `url` from its beginning into the stream with this number, until its end or until
// g_flvRunning is cleared. Blocks.
void DownloadFlv(const std::string& url, std::uint64_t stream);

// One download. Used on the thread that performs the transfer.
class FlvTransfer {
 public:
  explicit FlvTransfer(std::uint64_t stream) : stream_(stream) {}

  // Stages a piece of the body. Returns the number of accepted bytes; 0 ends the transfer. An HTML
  // page is refused.
  std::size_t Take(const char* data, std::size_t length);

 private:
  const std::uint64_t stream_;
  std::uint64_t offset_ = 0;  // of the next byte
};

#endif  // FLV_FLV_DOWNLOAD_H_
