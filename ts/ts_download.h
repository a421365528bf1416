// The download side of the TS pipeline: from the network or a local file into g_tsStreamBuffer.
#ifndef TS_TS_DOWNLOAD_H_
#define TS_TS_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/player_port.h"
#include "ts/packet_cutter.h"

// The download waits while more than this is unread, which happens only where the parser does too:
// far less than the buffer can count.
inline constexpr std::uint32_t kMostUnreadTsBytes = std::uint32_t{1} << 30;

// Fetches `url` from the offset g_tsDownloaded to its end, or until g_tsRunning is cleared, and
// reports to `player`. Blocks.
void DownloadTs(const std::string& url, const PlayerPort& player);

// Waits while `most_unread` bytes or more are staged and unread, until g_tsRunning is cleared.
void AwaitStreamRoom(std::uint32_t most_unread);

// One download. It is used on the thread that performs the transfer.
//
// g_tsDownloaded counts every byte received, also those of a packet that is not complete, so that
// the next start may resume in mid-packet; it then plays from the next packet on.
class TsTransfer {
 public:
  // `offset`: where the stream is asked for from.
  TsTransfer(const PlayerPort& player, std::uint64_t offset);

  std::uint64_t Offset() const { return offset_; }

  // Whether nothing has been received yet.
  bool IsAtStart() const { return is_at_start_; }

  // For a body that begins elsewhere than it was asked for, before its first piece. What it holds
  // is played from there, and counted as if it continued the stream: kept for compatibility.
  void BodyBeginsAt(std::uint64_t offset) { packets_ = PacketCutter(offset); }

  // Takes a piece of the body, which may be empty, and returns how many bytes it took, 0 to end the
  // transfer: after a stop, and for an HTML page. The player is notified of both.
  std::size_t Take(const char* data, std::uint32_t length);

 private:
  const PlayerPort player_;
  const std::uint64_t offset_;
  bool is_at_start_ = true;
  PacketCutter packets_;
};

#endif  // TS_TS_DOWNLOAD_H_
