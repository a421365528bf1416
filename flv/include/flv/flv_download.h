// The download side of the FLV pipeline: fetches the stream with libcurl, from the network or from
// a local file, into g_flvStream.
#ifndef FLV_FLV_DOWNLOAD_H_
#define FLV_FLV_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/run_id.h"

namespace stream {

// Fetches `url` from its beginning into the stream of this run, until its end or until
// g_flvRunning is cleared. Blocks.
void DownloadFlv(const std::string& url, RunId run);

// One download. Used on the thread that performs the transfer.
class FlvTransfer {
 public:
  explicit FlvTransfer(RunId run) : run_(run) {}

  // Stages a piece of the body. Returns the number of accepted bytes; 0 ends the transfer. An HTML
  // page is refused.
  std::size_t OnBytes(const char* data, std::size_t length);

 private:
  const RunId run_;
  std::uint64_t offset_ = 0;  // of the next byte
};

}  // namespace stream

#endif  // FLV_FLV_DOWNLOAD_H_
