// The download side of the TS pipeline: from the network or a local file into g_tsStreamBuffer.
#ifndef TS_TS_DOWNLOAD_H_
#define TS_TS_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/player_port.h"
#include "ts/packet_cutter.h"

namespace stream {

// The download waits while this many bytes or more are unread, which happens only while the parser
// waits too. The limit is far below the maximum size of the buffer.
inline constexpr std::uint32_t kMaxUnreadTsBytes = std::uint32_t{1} << 30;

// Fetches `url` from the offset g_tsDownloaded to its end, or until g_tsRunning is cleared, and
// reports to `player`. Blocks.
void DownloadTs(const std::string& url, const PlayerPort& player);

// Blocks while `max_unread` or more received bytes are unread, until g_tsRunning is cleared.
void WaitForStreamSpace(std::uint32_t max_unread);

// One download, used on the thread that performs the transfer.
//
// g_tsDownloaded counts every received byte, including those of an incomplete packet. So the next
// start may resume in mid-packet; it then plays from the next packet on.
class TsTransfer {
 public:
  // `offset`: the requested start of the body.
  TsTransfer(const PlayerPort& player, std::uint64_t offset);

  std::uint64_t Offset() const { return offset_; }

  // Returns true until the first piece is received.
  bool IsAtStart() const { return is_at_start_; }

  // Call it before the first piece if the body begins at another offset than requested.
  // Kept for compatibility: the body is played from there but counted as if it continued the
  // stream.
  void BodyBeginsAt(std::uint64_t offset) { packets_ = PacketCutter(offset); }

  // Appends a piece of the body, which may be empty. Returns the size of the piece, or 0 to end
  // the transfer: after a stop, for an HTML page, or if memory runs out. The player is notified of
  // the first two.
  std::size_t OnBytes(const char* data, std::uint32_t length);

 private:
  const PlayerPort player_;
  const std::uint64_t offset_;
  bool is_at_start_ = true;
  PacketCutter packets_;
};

}  // namespace stream

#endif  // TS_TS_DOWNLOAD_H_
