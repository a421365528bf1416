// The download side of the FLV pipeline: from the network, or by libcurl from a local file, into
// the stream buffer.
#ifndef FLV_FLV_DOWNLOAD_H_
#define FLV_FLV_DOWNLOAD_H_

#include <cstddef>
#include <string>

// Fetches `url` from its beginning to its end, or until g_flvRunning is cleared. Blocks.
void DownloadFlv(const std::string& url);

// Before a download: its first byte is the first of the stream.
void ResetFlvDownload();

// The write callback: takes the bytes and returns how many it took, 0 to end the transfer. An HTML
// page is refused. Called by libcurl on the download thread. `user` is not used.
std::size_t TakeFlvBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // FLV_FLV_DOWNLOAD_H_
