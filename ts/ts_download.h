// The download side of the TS pipeline: from the network or a local file into g_tsStreamBuffer.
#ifndef TS_TS_DOWNLOAD_H_
#define TS_TS_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

// The download waits while more than this is unread, which happens only where the parser does too:
// far less than the buffer can count.
inline constexpr std::uint32_t kMostUnreadTsBytes = std::uint32_t{1} << 30;

// Fetches `url` from the offset g_tsDownloaded to its end, or until g_tsRunning is cleared. Blocks.
void DownloadTs(const std::string& url);

// Waits while `most_unread` bytes or more are staged and unread, until g_tsRunning is cleared.
void AwaitStreamRoom(std::uint32_t most_unread);

// The write callback: takes the bytes and returns how many it took, 0 to end the transfer. Called
// by libcurl, and for local files by the reader, on the download thread. `user` is not used.
std::size_t TakeTsBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // TS_TS_DOWNLOAD_H_
