// The download side of the FLV pipeline: from the network, or by libcurl from a local file, into
// g_flvStream.
#ifndef FLV_FLV_DOWNLOAD_H_
#define FLV_FLV_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

// Fetches `url` from its beginning to its end into the stream of that number, or until g_flvRunning
// is cleared. Blocks.
void DownloadFlv(const std::string& url, std::uint64_t stream);

// One download. It is used on the thread that performs the transfer.
class FlvTransfer {
 public:
  explicit FlvTransfer(std::uint64_t stream) : stream_(stream) {}

  // Takes a piece of the body and returns how many bytes it took, 0 to end the transfer. An HTML
  // page is refused.
  std::size_t Take(const char* data, std::size_t length);

 private:
  const std::uint64_t stream_;
  std::uint64_t offset_ = 0;  // of the next byte
};

#endif  // FLV_FLV_DOWNLOAD_H_
